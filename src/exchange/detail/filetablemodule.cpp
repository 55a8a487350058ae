#include "filetablemodule.h"

#include "digits.h"
#include "filetable.h"
#include "sqliteapi.h"
#include "sqlitevalue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <exception>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::uint64_t mostRecords = std::numeric_limits<std::int64_t>::max();

// The conditions on rowid that a plan uses, as bits of its number. Their values come in this order.
constexpr int equalTo = 1;
constexpr int atLeast = 2;
constexpr int atMost = 4;

// The cost of a record, in units of SQLite's planner.
constexpr double costOfSeek = 10;
constexpr double shareOfRange = 0.25;

/// Shared by all tables of a connection.
struct Registry {
    VirtualTableEvents Events;
    std::vector<FileTableOptions> Prepared;
};

struct ModuleTable : sqlite3_vtab {
    ModuleTable(TableArguments arguments, const VirtualTableEvents& events)
        : sqlite3_vtab{}, File(std::move(arguments), events)
    {
        for (const TargetColumn& column : File.layout().columns()) {
            Numeric.push_back(column.Type == "numeric");
        }
    }

    FileTable File;
    std::vector<bool> Numeric;  // of the columns: a table of SQLite would make a whole number of 2.00
};

struct ModuleCursor : sqlite3_vtab_cursor {
    explicit ModuleCursor(FileTable& table) : sqlite3_vtab_cursor{}, Scan(table) {}

    FileScan Scan;
};

ModuleCursor& scanOf(sqlite3_vtab_cursor* cursor)
{
    return *static_cast<ModuleCursor*>(cursor);
}

/// Runs `work` and turns exceptions into a message and an error code, because SQLite is written in C.
template <class Work>
int guarded(char** message, Work work)
{
    std::string reason;
    try {
        work();
        return SQLITE_OK;
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    } catch (const std::exception& failure) {
        reason = failure.what();
    }
    sqlite3_free(*message);
    *message = sqlite3_mprintf("%s", reason.c_str());
    return SQLITE_ERROR;
}

TableArguments argumentsOf(const Registry& registry, int count, const char* const* texts)
{
    constexpr int first = 3;  // after the module, the database and the table
    const std::vector<std::string_view> arguments(texts + std::min(first, count), texts + count);
    std::size_t number = 0;
    if (arguments.size() == 1) {
        const char* const end = arguments[0].data() + arguments[0].size();
        const auto parsed = std::from_chars(arguments[0].data(), end, number);
        if (parsed.ec == std::errc() && parsed.ptr == end && number < registry.Prepared.size()) {
            return {registry.Prepared[number].File, registry.Prepared[number].Options};
        }
    }
    return parseTableArguments(arguments);
}

int connect(sqlite3* connection, void* registered, int count, const char* const* texts, sqlite3_vtab** to,
            char** message)
{
    int code = SQLITE_OK;
    const int failure = guarded(message, [&] {
        const Registry& registry = *static_cast<const Registry*>(registered);
        auto table = std::make_unique<ModuleTable>(argumentsOf(registry, count, texts), registry.Events);
        code = sqlite3_declare_vtab(connection, table->File.layout().createTable("t").c_str());
        if (code == SQLITE_OK) {
            *to = table.release();
        }
    });
    return failure != SQLITE_OK ? failure : code;
}

/// Must differ from `connect`; otherwise SQLite would offer the module itself as a table.
int create(sqlite3* connection, void* registered, int count, const char* const* texts, sqlite3_vtab** to,
           char** message)
{
    return connect(connection, registered, count, texts, to, message);
}

int disconnect(sqlite3_vtab* table)
{
    delete static_cast<ModuleTable*>(table);
    return SQLITE_OK;
}

/// The bit of a condition on rowid; 0: it cannot be used.
int useOf(const sqlite3_index_info::sqlite3_index_constraint& condition)
{
    if (condition.usable == 0 || condition.iColumn >= 0) {
        return 0;
    }
    switch (condition.op) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
        return equalTo;
    case SQLITE_INDEX_CONSTRAINT_GT:
    case SQLITE_INDEX_CONSTRAINT_GE:
        return atLeast;
    case SQLITE_INDEX_CONSTRAINT_LT:
    case SQLITE_INDEX_CONSTRAINT_LE:
        return atMost;
    default:
        return 0;
    }
}

void setCost(FileTable& table, sqlite3_index_info& plan)
{
    const auto all = static_cast<double>(table.estimatedRecords());
    double records = all;
    if ((plan.idxNum & equalTo) != 0) {
        records = 1;
        plan.idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
    } else {
        records *= (plan.idxNum & atLeast) != 0 ? shareOfRange : 1;
        records *= (plan.idxNum & atMost) != 0 ? shareOfRange : 1;
    }
    plan.estimatedRows = static_cast<sqlite3_int64>(records) + 1;
    plan.estimatedCost = costOfSeek + (table.hasFixedRecords() ? records : std::max(records, all / 2));
}

int bestIndex(sqlite3_vtab* table, sqlite3_index_info* plan)
{
    std::array<int, 3> found = {-1, -1, -1};
    for (int i = 0; i < plan->nConstraint; ++i) {
        const int use = useOf(plan->aConstraint[i]);
        if (use != 0) {
            found[static_cast<std::size_t>(use / 2)] = i;
            plan->idxNum |= use;
        }
    }
    int argument = 0;
    for (const int condition : found) {
        // SQLite checks the conditions too, because the values may not be whole numbers.
        if (condition >= 0) {
            plan->aConstraintUsage[condition].argvIndex = ++argument;
        }
    }
    plan->orderByConsumed = plan->nOrderBy == 1 && plan->aOrderBy[0].iColumn < 0 && plan->aOrderBy[0].desc == 0 ? 1 : 0;
    setCost(static_cast<ModuleTable*>(table)->File, *plan);
    plan->idxStr = sqlite3_mprintf("%llx", plan->colUsed);
    plan->needToFreeIdxStr = 1;
    return plan->idxStr != nullptr ? SQLITE_OK : SQLITE_NOMEM;
}

/// Narrows a range by a condition. A value that is not a number is left to SQLite.
void narrow(RecordRange& range, int use, sqlite3_value* value)
{
    const int type = sqlite3_value_numeric_type(value);
    if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) {
        return;
    }
    const double number = sqlite3_value_double(value);
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (type == SQLITE_INTEGER) {
        const std::int64_t whole = sqlite3_value_int64(value);
        low = high = whole > 0 ? static_cast<std::uint64_t>(whole) : 0;
    } else if (number >= static_cast<double>(mostRecords)) {
        low = high = mostRecords;
    } else if (number > 0) {
        low = static_cast<std::uint64_t>(number);
        high = low + 1;
    }
    if (use != atMost) {
        range.First = std::max(range.First, low);
    }
    if (use != atLeast) {
        range.Last = std::min(range.Last, high);
    }
}

int openScan(sqlite3_vtab* table, sqlite3_vtab_cursor** to)
{
    return guarded(&table->zErrMsg, [&] { *to = new ModuleCursor(static_cast<ModuleTable*>(table)->File); });
}

int closeScan(sqlite3_vtab_cursor* cursor)
{
    // Reporting the last notes may fail; the scan has ended anyway.
    return guarded(&cursor->pVtab->zErrMsg, [&] { delete static_cast<ModuleCursor*>(cursor); });
}

int filter(sqlite3_vtab_cursor* cursor, int uses, const char* columns, int, sqlite3_value** values)
{
    return guarded(&cursor->pVtab->zErrMsg, [&] {
        std::uint64_t used = 0;
        const std::string_view text(columns);
        std::from_chars(text.data(), text.data() + text.size(), used, 16);
        RecordRange range;
        range.Last = mostRecords;
        for (const int use : {equalTo, atLeast, atMost}) {
            if ((uses & use) != 0) {
                narrow(range, use, *values++);
            }
        }
        scanOf(cursor).Scan.start(range, used);
    });
}

int next(sqlite3_vtab_cursor* cursor)
{
    return guarded(&cursor->pVtab->zErrMsg, [&] { scanOf(cursor).Scan.next(); });
}

int atEnd(sqlite3_vtab_cursor* cursor)
{
    return scanOf(cursor).Scan.atEnd() ? 1 : 0;
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* to)
{
    *to = static_cast<sqlite3_int64>(scanOf(cursor).Scan.record().Number);
    return SQLITE_OK;
}

void giveText(sqlite3_context* to, std::string_view text)
{
    // SQLite may keep a value longer than the record exists.
    sqlite3_result_text64(to, text.empty() ? "" : text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void giveReal(sqlite3_context* to, double value, bool numeric)
{
    // Larger whole numbers do not occur as decimals.
    constexpr double surelyWhole = 1e15;
    if (numeric && value == std::trunc(value) && std::abs(value) < surelyWhole) {
        sqlite3_result_int64(to, static_cast<sqlite3_int64>(value));
    } else {
        sqlite3_result_double(to, value);
    }
}

void giveNumber(sqlite3_context* to, std::string_view digits, bool numeric)
{
    switch (sqliteFormOf(digits)) {
    case SqliteForm::Integer:
        sqlite3_result_int64(to, wholeOf(digits));
        break;
    case SqliteForm::Real:
        giveReal(to, realOf(digits), numeric);
        break;
    case SqliteForm::Text:
        // In a numeric column, a double still converts back to the digits, because the number is large.
        numeric ? sqlite3_result_double(to, realOf(digits)) : giveText(to, digits);
        break;
    }
}

void giveMoment(sqlite3_context* to, const Cell& cell)
{
    std::array<char, momentSize> room = {};
    giveText(to, {room.data(), writeMoment(cell.Kind, cell.Moment, room.data())});
}

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* to, int index)
{
    const Cell& cell = scanOf(cursor).Scan.record().Cells[static_cast<std::size_t>(index)];
    switch (cell.Kind) {
    case CellKind::Null:
    case CellKind::Unreadable:
        sqlite3_result_null(to);
        break;
    case CellKind::Text:
        giveText(to, cell.Text);
        break;
    case CellKind::Number:
        giveNumber(to, cell.Text, static_cast<ModuleTable*>(cursor->pVtab)->Numeric[static_cast<std::size_t>(index)]);
        break;
    case CellKind::Float:
        sqlite3_result_double(to, cell.Float);
        break;
    case CellKind::Boolean:
        sqlite3_result_int(to, cell.Boolean ? 1 : 0);
        break;
    case CellKind::Date:
    case CellKind::Time:
    case CellKind::Timestamp:
        giveMoment(to, cell);
        break;
    case CellKind::Bytes:
        sqlite3_result_blob64(to, cell.Text.empty() ? "" : cell.Text.data(), cell.Text.size(), SQLITE_TRANSIENT);
        break;
    }
    return SQLITE_OK;
}

constexpr sqlite3_module makeModule()
{
    sqlite3_module module = {};
    module.xCreate = create;
    module.xConnect = connect;
    module.xBestIndex = bestIndex;
    module.xDisconnect = disconnect;
    module.xDestroy = disconnect;
    module.xOpen = openScan;
    module.xClose = closeScan;
    module.xFilter = filter;
    module.xNext = next;
    module.xEof = atEnd;
    module.xColumn = column;
    module.xRowid = rowid;
    return module;
}

constexpr sqlite3_module fileModule = makeModule();

}  // namespace

int registerModule(sqlite3* connection, VirtualTableEvents events, std::vector<FileTableOptions> prepared)
{
    const auto forget = [](void* registry) { delete static_cast<Registry*>(registry); };
    auto registry = std::make_unique<Registry>(Registry{std::move(events), std::move(prepared)});
    // SQLite calls `forget` even if it refuses the module.
    return sqlite3_create_module_v2(connection, "kd", &fileModule, registry.release(), forget);
}

}  // namespace kd_lib::exchange::detail

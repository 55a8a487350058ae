#include "rowsender.h"

#include <kd_lib/exchange/rowtext.h>

#include <mysqld_error.h>

#include <algorithm>
#include <charconv>

namespace kd_lib::exchange::detail {

namespace {

/// A warning about replication, which does not concern the rows.
constexpr const char* unsafeStatement = "1592";

// Classes of SQLSTATE that concern a row.
constexpr std::string_view invalidData = "22";
constexpr std::string_view brokenConstraint = "23";
constexpr std::string_view raisedByTrigger = "45000";

/// The row that a message ends with: "Data too long for column 'name' at row 3".
std::optional<std::size_t> rowOf(std::string_view message)
{
    constexpr std::string_view lead = " at row ";
    const std::size_t at = message.rfind(lead);
    std::size_t row = 0;
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    std::from_chars(message.data() + at + lead.size(), message.data() + message.size(), row);
    return row == 0 ? std::nullopt : std::optional(row - 1);
}

/// The column in a message: 'name', or `database`.`table`.`name`.
std::string columnOf(std::string_view message)
{
    constexpr std::string_view lead = "olumn ";
    const std::size_t end = std::min(message.rfind(" at row "), message.size());
    const std::size_t at = std::min(message.rfind("olumn '", end), message.rfind("olumn `", end));
    if (at == std::string_view::npos || at + lead.size() >= end) {
        return {};
    }
    std::string_view name = message.substr(at + lead.size(), end - at - lead.size());
    if (name.starts_with('`')) {
        const std::size_t dot = name.rfind("`.`");
        name = dot == std::string_view::npos ? name : name.substr(dot + 2);
    }
    const std::size_t close = name.size() < 2 ? 0 : name.rfind(name.front());
    return close == 0 ? "" : std::string(name.substr(1, close - 1));
}

std::string loadStatement(const TableLayout& layout, const std::string& table, const std::vector<std::string>& columns,
                          const std::vector<std::string>& foreign)
{
    const Dialect& dialect = layout.dialect();
    std::string list;
    std::string conversions;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        list.append(i == 0 ? "" : ",");
        if (std::ranges::find(foreign, columns[i]) == foreign.end()) {
            list.append(dialect.quoteName(columns[i]));
            continue;
        }
        // LOAD DATA treats the rows as bytes; for this column they must be declared as UTF-8.
        const std::string variable = "@kd_db_" + std::to_string(i);
        list.append(variable);
        conversions.append(conversions.empty() ? " SET " : ",");
        conversions.append(dialect.quoteName(columns[i])).append(" = CONVERT(").append(variable);
        conversions.append(" USING utf8mb4)");
    }
    return "LOAD DATA LOCAL INFILE 'rows of kd_db' INTO TABLE " + dialect.quoteName(table) + " CHARACTER SET binary (" +
           list + ")" + conversions;
}

std::string insertStatement(const TableLayout& layout, const std::string& table,
                            const std::vector<std::string>& columns)
{
    std::string list;
    for (const std::string& column : columns) {
        list.append(list.empty() ? "" : ",").append(layout.dialect().quoteName(column));
    }
    return "INSERT INTO " + layout.dialect().quoteName(table) + " (" + list + ") VALUES ";
}

}  // namespace

RowSender::RowSender(MariadbSession& session, const TableLayout& layout, const std::string& table,
                     const std::vector<std::string>& columns, const std::vector<std::string>& foreign)
    : Session(session), Layout(layout)
{
    const TextRows settings = Session.rows("SELECT @@local_infile, @@max_allowed_packet");
    Inserts = settings[0][0] != "1";
    LongestStatement = std::stoull(settings[0][1]);
    Lead = Inserts ? insertStatement(layout, table, columns) : loadStatement(layout, table, columns, foreign);
    if (!Inserts) {
        mysql_set_local_infile_handler(Session.handle(), open, read, close, reasonOfFailure, this);
    }
}

void RowSender::write(const Record& record, OutputBlock& rows) const
{
    if (Inserts) {
        writeInsertRow(Layout, record, rows);
        rows.write(',');
    } else {
        writeLoadDataRow(record, rows);
    }
}

std::optional<RowRefusal> RowSender::send(const RowChunks::Chunk& chunk, std::size_t count)
{
    return Inserts ? insert(chunk, count) : load(chunk.first(count), count);
}

std::optional<RowRefusal> RowSender::load(std::string_view rows, std::size_t count)
{
    Rest = rows;
    if (!Session.send(Lead)) {
        return refusal();
    }
    const auto stored = mysql_affected_rows(Session.handle());
    // If the data come from a client, LOAD DATA continues after errors, and calls them warnings.
    for (const std::vector<std::string>& warning :
         mysql_warning_count(Session.handle()) != 0 ? Session.rows("SHOW WARNINGS") : TextRows()) {
        if (warning[1] != unsafeStatement) {
            return RowRefusal{
                kd_lib::detail::mariadbReason(warning[2].c_str(), static_cast<unsigned int>(std::stoul(warning[1]))),
                rowOf(warning[2]), columnOf(warning[2])};
        }
    }
    if (stored < count) {
        return RowRefusal{
            "the server has stored " + std::to_string(stored) + " rows of " + std::to_string(count), {}, {}};
    }
    return std::nullopt;
}

std::optional<RowRefusal> RowSender::insert(const RowChunks::Chunk& chunk, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const std::size_t from = chunk.first(done).size();
        std::size_t next = done + 1;
        while (next < count && Lead.size() + chunk.first(next + 1).size() - from < LongestStatement) {
            ++next;
        }
        const std::string_view rows = chunk.first(next).substr(from);
        if (Lead.size() + rows.size() > LongestStatement) {
            return RowRefusal{"the record takes " + std::to_string(rows.size()) +
                                  " bytes, more than the server's max_allowed_packet, " +
                                  std::to_string(LongestStatement),
                              done,
                              {}};
        }
        Statement.assign(Lead).append(rows.substr(0, rows.size() - 1));  // without the last comma
        if (!Session.send(Statement)) {
            std::optional<RowRefusal> refused = refusal();
            if (refused->Row) {
                *refused->Row += done;
            }
            return refused;
        }
        done = next;
    }
    return std::nullopt;
}

/// The last error as a refusal of a row; throws if it is another failure: a lost connection, a deadlock, a full disk.
std::optional<RowRefusal> RowSender::refusal() const
{
    const std::string_view state = mysql_sqlstate(Session.handle());
    if (!state.starts_with(invalidData) && !state.starts_with(brokenConstraint) && state != raisedByTrigger &&
        !rowOf(mysql_error(Session.handle()))) {
        Session.fail();
    }
    Session.checkStop();
    const char* const message = mysql_error(Session.handle());
    return RowRefusal{Session.reason(), rowOf(message), columnOf(message)};
}

int RowSender::open(void** state, const char*, void* self)
{
    *state = self;
    return 0;
}

int RowSender::read(void* state, char* to, unsigned int size)
{
    std::string_view& rest = static_cast<RowSender*>(state)->Rest;
    const std::size_t count = rest.copy(to, size);
    rest.remove_prefix(count);
    return static_cast<int>(count);
}

void RowSender::close(void*) {}

int RowSender::reasonOfFailure(void*, char* to, unsigned int)
{
    *to = '\0';
    return 0;
}

}  // namespace kd_lib::exchange::detail

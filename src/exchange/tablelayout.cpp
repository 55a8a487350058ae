#include <kd_lib/exchange/tablelayout.h>

#include "detail/fitcheck.h"
#include "detail/mysqlrow.h"
#include "detail/names.h"
#include "detail/targettype.h"

#include <utility>

namespace kd_lib::exchange {

namespace {

/// From this number of columns on, MySQL refuses tables whose rows may become too long for a page, unless it is set to
/// refuse the rows instead.
constexpr std::size_t manyColumns = 383;

constexpr const char* lenient = "SET SESSION innodb_strict_mode = 0";

void checkCount(const Dialect& dialect, const std::string& file, std::size_t count)
{
    if (count == 0) {
        throw Error(file, detail::noColumns);
    }
    if (count > dialect.Columns) {
        throw Error(file, std::to_string(count) + " columns; a table of " + dialect.Name + " has at most " +
                              std::to_string(dialect.Columns));
    }
}

}  // namespace

struct TableLayout::Checks {
    detail::FitChecks Of;
};

TableLayout::TableLayout(const Dialect& dialect, const std::string& file, const std::vector<Column>& columns,
                         const TableOptions& options)
    : To(&dialect), Mode(options.Mode), Session(dialect.Session.begin(), dialect.Session.end()),
      Fit(std::make_unique<Checks>())
{
    // An existing table has its key already.
    const bool hasKey = !options.Key.empty() && Mode != TableMode::Append;
    checkCount(dialect, file, columns.size() + (hasKey ? 1 : 0));
    Table = detail::tableName(file, options, dialect, NameNotes);
    if (hasKey) {
        Key = detail::keyName(options, dialect, NameNotes);
    }
    const std::vector<std::string> names = detail::columnNames(columns, options.Names, &dialect, Key, NameNotes);
    std::vector<detail::TargetType> types;
    types.reserve(columns.size());
    for (const Column& column : columns) {
        types.push_back(detail::targetType(dialect, column));
    }
    if (dialect.Is == Engine::MySql &&
        (!detail::fitMySqlRow(dialect, columns, hasKey, types) || columns.size() >= manyColumns)) {
        Session.emplace_back(lenient);
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Fit->Of.add(i, types[i].Check);
        Columns.push_back({names[i], std::move(types[i].Text)});
    }
}

TableLayout::~TableLayout() = default;
TableLayout::TableLayout(TableLayout&&) noexcept = default;
TableLayout& TableLayout::operator=(TableLayout&&) noexcept = default;

std::string TableLayout::columnList() const
{
    std::string list;
    for (const TargetColumn& column : Columns) {
        list += list.empty() ? "" : ",";
        list += To->quoteName(column.Name);
    }
    return list;
}

std::string TableLayout::createTable(std::string_view name) const
{
    std::string sql = "CREATE TABLE " + To->quoteName(name) + " (";
    const char* separator = "\n    ";
    const auto add = [&](const std::string& column, std::string_view type) {
        sql += std::exchange(separator, ",\n    ") + To->quoteName(column);
        sql += type.empty() ? "" : " ";
        sql += type;
    };
    if (!Key.empty()) {
        add(Key, To->Types.Key);
    }
    for (const TargetColumn& column : Columns) {
        add(column.Name, column.Type);
    }
    return sql + "\n)" + To->AfterTable;
}

void TableLayout::fit(Record& record)
{
    Fit->Of.apply(record);
}

Note TableLayout::textNote(const std::string& column, std::uint64_t count)
{
    return {"column " + column + ": " + std::to_string(count) + (count == 1 ? " number is" : " numbers are") +
            " kept as text, because a SQLite number cannot hold the digits"};
}

std::vector<Note> TableLayout::notes() const
{
    std::vector<Note> notes = NameNotes;
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        if (const std::uint64_t count = Fit->Of.keptAsText(i); count != 0) {
            notes.push_back(textNote(Columns[i].Name, count));
        }
    }
    return notes;
}

}  // namespace kd_lib::exchange

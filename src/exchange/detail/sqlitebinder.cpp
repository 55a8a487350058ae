#include "sqlitebinder.h"

#include "digits.h"
#include "sqlitevalue.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

/// A null pointer would be bound as NULL.
const char* textOf(std::string_view text)
{
    return text.empty() ? "" : text.data();
}

int bindText(sqlite3_stmt* statement, std::size_t column, std::string_view text)
{
    const int parameter = static_cast<int>(column) + 1;
    return sqlite3_bind_text64(statement, parameter, textOf(text), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

}  // namespace

SqliteBinder::SqliteBinder(std::vector<Affinity> columns) : Columns(std::move(columns)), Texts(Columns.size()) {}

int SqliteBinder::bind(sqlite3_stmt* statement, const Record& record)
{
    int code = SQLITE_OK;
    for (std::size_t i = 0; i < Columns.size() && code == SQLITE_OK; ++i) {
        const Cell& cell = record.Cells[i];
        const int parameter = static_cast<int>(i) + 1;
        switch (cell.Kind) {
        case CellKind::Null:
        case CellKind::Unreadable:
            code = sqlite3_bind_null(statement, parameter);
            break;
        case CellKind::Text:
            code = bindText(statement, i, cell.Text);
            break;
        case CellKind::Number:
            code = bindNumber(statement, i, cell.Text);
            break;
        case CellKind::Float:
            code = bindFloat(statement, i, cell.Float);
            break;
        case CellKind::Boolean:
            code = sqlite3_bind_int(statement, parameter, cell.Boolean ? 1 : 0);
            break;
        case CellKind::Date:
        case CellKind::Time:
        case CellKind::Timestamp:
            code = bindMoment(statement, i, cell);
            break;
        case CellKind::Bytes:
            code = sqlite3_bind_blob64(statement, parameter, textOf(cell.Text), cell.Text.size(), SQLITE_STATIC);
            break;
        }
    }
    return code;
}

int SqliteBinder::bindNumber(sqlite3_stmt* statement, std::size_t column, std::string_view digits) const
{
    const Affinity affinity = Columns[column];
    const int parameter = static_cast<int>(column) + 1;
    SqliteForm form = sqliteFormOf(digits);
    if (affinity == Affinity::Text) {
        form = SqliteForm::Text;
    } else if (affinity != Affinity::None && form == SqliteForm::Text) {
        // SQLite would convert the text to a double, and not always to the nearest one.
        form = SqliteForm::Real;
    }
    switch (form) {
    case SqliteForm::Integer:
        return sqlite3_bind_int64(statement, parameter, wholeOf(digits));
    case SqliteForm::Real:
        return sqlite3_bind_double(statement, parameter, realOf(digits));
    case SqliteForm::Text:
        break;
    }
    return bindText(statement, column, digits);
}

int SqliteBinder::bindFloat(sqlite3_stmt* statement, std::size_t column, double value)
{
    if (Columns[column] != Affinity::Text || !std::isfinite(value)) {
        return sqlite3_bind_double(statement, static_cast<int>(column) + 1, value);
    }
    // SQLite itself would write only 15 digits.
    Room& room = Texts[column];
    const char* const end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
    return bindText(statement, column, {room.data(), static_cast<std::size_t>(end - room.data())});
}

int SqliteBinder::bindMoment(sqlite3_stmt* statement, std::size_t column, const Cell& cell)
{
    Room& room = Texts[column];
    return bindText(statement, column, {room.data(), writeMoment(cell.Kind, cell.Moment, room.data())});
}

}  // namespace kd_lib::exchange::detail

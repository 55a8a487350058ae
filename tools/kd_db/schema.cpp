#include "schema.h"

#include "databases.h"
#include "inputs.h"

#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/virtualtables.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string_view>

namespace kd_tool {

namespace {

constexpr const char* columnsOfTables =
    "SELECT t.name, c.name, c.type FROM sqlite_master AS t, pragma_table_info(t.name) AS c "
    "WHERE t.type IN ('table', 'view') AND t.name NOT LIKE 'sqlite!_%' ESCAPE '!'";

bool isWord(std::string_view name)
{
    const auto fits = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x80 || c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    return !name.empty() && !(name.front() >= '0' && name.front() <= '9') && std::ranges::all_of(name, fits);
}

/// Names in the form that SQL accepts.
class SqlNames {
public:
    std::string operator()(const std::string& name)
    {
        return isWord(name) && !isReserved(name) ? name : '[' + name + ']';
    }

private:
    /// SQLite itself knows its reserved words.
    bool isReserved(const std::string& name)
    {
        if (Free.contains(name)) {
            return false;
        }
        try {
            exchange::SqliteSource(Empty.handle(), "", "SELECT 1 AS " + name);
        } catch (const exchange::SqlError&) {
            return true;
        }
        Free.insert(name);
        return false;
    }

    exchange::TableConnection Empty{{}};
    std::set<std::string> Free;
};

std::string textOf(const exchange::Value& value)
{
    return std::string(value.text().value_or(""));
}

std::vector<SchemaColumn> columnsIn(exchange::Source& rows)
{
    SqlNames inSql;
    std::vector<SchemaColumn> columns;
    for (const exchange::Record& row : rows) {
        columns.push_back({inSql(textOf(row[0])), inSql(textOf(row[1])), textOf(row[2])});
    }
    return columns;
}

bool isRegularFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

std::vector<SchemaColumn> columnsOfFiles(const std::vector<std::string>& arguments, exchange::SourceOptions options)
{
    options.Infer = false;  // names alone do not need all rows
    std::vector<exchange::FileTableOptions> tables;
    for (const std::string& file : filesOf(arguments, options)) {
        if (isRegularFile(file)) {
            tables.push_back({file, {}, options, true});
        }
    }
    const exchange::TableConnection connection(tables);
    exchange::SqliteSource rows(connection.handle(), "", columnsOfTables);
    return columnsIn(rows);
}

}  // namespace

std::vector<SchemaColumn> schemaOf(const std::vector<std::string>& arguments, const exchange::SourceOptions& options)
{
    if (arguments.empty()) {
        return {};
    }
    const std::string& place = arguments.front();
    try {
        if (arguments.size() > 1 || isFolder(place) || isTableFile(place, options)) {
            return columnsOfFiles(arguments, options);
        }
        if (isServer(place) || !isRegularFile(place)) {
            return {};
        }
        exchange::SqliteOptions atOnce;
        atOnce.Patience = {};
        exchange::SqliteSource rows(place, columnsOfTables, atOnce);
        return columnsIn(rows);
    } catch (const std::exception&) {
        return {};  // without a file that can be read there are no names
    }
}

}  // namespace kd_tool

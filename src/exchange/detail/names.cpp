#include "names.h"

#include "unicode.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

constexpr int lastOfBasicPlane = 0xFFFF;

constexpr const char* twice = "the name comes twice";
constexpr const char* nameTooLong = "the name is too long";
constexpr const char* refused = "the database does not accept such a name";

std::string inCase(std::string_view name, NameCase nameCase)
{
    return nameCase == NameCase::Lower ? lowerCase(name) : std::string(name);
}

/// `name` without the characters that the database refuses even between quotes.
std::string allowedCharacters(std::string_view name, const Dialect& dialect)
{
    std::string allowed;
    for (std::string_view rest = name; !rest.empty();) {
        // Clients other than PostgreSQL's read "\r\n" inside quotes as "\n".
        if (dialect.Is != Engine::PostgreSql && rest.starts_with("\r\n")) {
            rest.remove_prefix(1);
        }
        const int character = takeCharacter(rest);
        if (character < 0) {
            allowed += replacementCharacter;
        } else if (character == 0 || (dialect.BasicPlaneOnly && character > lastOfBasicPlane)) {
            allowed += '_';
        } else {
            appendCharacter(allowed, character);
        }
    }
    if (!dialect.BlanksAtEnd) {
        allowed.resize(allowed.find_last_not_of(" \t\n\v\f\r") + 1);
    }
    return allowed;
}

bool isOwnColumn(const std::string& name, const Dialect& dialect)
{
    return std::ranges::find(dialect.OwnColumns, dialect.Is == Engine::MySql ? lowerCase(name) : name) !=
           dialect.OwnColumns.end();
}

bool isOwnTable(const std::string& name, const Dialect& dialect)
{
    return (dialect.Is == Engine::Sqlite ? lowerCase(name) : name).starts_with(dialect.OwnTables);
}

/// Changes the name of a column to one that the database accepts. Returns the reason, or null if it accepts this one.
const char* adapt(std::string& name, const Dialect& dialect)
{
    std::string changed = allowedCharacters(name, dialect);
    if (isOwnColumn(changed, dialect)) {
        changed.insert(0, 1, '_');
    }
    const char* const reason = changed != name ? refused : nullptr;
    name = dialect.cutName(changed);
    return name != changed ? nameTooLong : reason;
}

std::string changeOf(const std::string& what, const std::string& old, const std::string& name, const char* reason)
{
    return what + ' ' + old + " becomes " + name + ": " + reason;
}

/// Chooses the names of a table's columns.
class ColumnNames {
public:
    ColumnNames(const std::vector<Column>& columns, const Dialect* dialect, std::vector<Note>& notes)
        : Columns(columns), To(dialect), Notes(notes), Names(columns.size())
    {
    }

    /// The first column of each name keeps it, so that only the others change.
    void takeFirst(NameCase nameCase, const std::string& key)
    {
        if (!key.empty()) {
            Taken.insert(caseFolded(key));
        }
        for (std::size_t i = 0; i < Columns.size(); ++i) {
            std::string wanted = inCase(Columns[i].Name, nameCase);
            const char* const reason = To != nullptr ? adapt(wanted, *To) : nullptr;
            if (wanted.empty()) {
                Left.push_back({i, "column_" + std::to_string(i + 1), reason});
            } else if (Taken.insert(caseFolded(wanted)).second) {
                choose(i, std::move(wanted), reason);
            } else {
                Left.push_back({i, std::move(wanted), reason != nullptr ? reason : twice});
            }
        }
    }

    /// Numbers the remaining names.
    void takeOthers()
    {
        for (auto& [column, wanted, reason] : Left) {
            std::string name = wanted;
            std::uint64_t& number = Numbers.try_emplace(caseFolded(wanted), 1).first->second;
            while (!Taken.insert(caseFolded(name)).second) {
                name = numbered(wanted, ++number);
            }
            choose(column, std::move(name), reason);
        }
    }

    std::vector<std::string> result() { return std::move(Names); }

private:
    struct LeftName {
        std::size_t Column;
        std::string Wanted;
        const char* Reason;  ///< null: the column has no name in the source
    };

    std::string numbered(const std::string& name, std::uint64_t number) const
    {
        const std::string suffix = '_' + std::to_string(number);
        return std::string(To != nullptr ? To->cutName(name, suffix.size()) : name) + suffix;
    }

    void choose(std::size_t column, std::string name, const char* reason)
    {
        const std::string& old = Columns[column].Name;
        if (reason != nullptr) {
            Notes.push_back({changeOf("column", old, name, reason)});
        } else if (old.empty()) {
            Notes.push_back({"column " + std::to_string(column + 1) + " has no name; it becomes " + name});
        }
        Names[column] = std::move(name);
    }

    const std::vector<Column>& Columns;
    const Dialect* To;
    std::vector<Note>& Notes;
    std::vector<std::string> Names;
    std::unordered_set<std::string> Taken;
    std::unordered_map<std::string, std::uint64_t> Numbers;
    std::vector<LeftName> Left;
};

std::string stemOf(const std::string& file)
{
    if (file == "-") {
        return "stdin";
    }
    const std::size_t end = file.find_last_not_of('/') + 1;
    const std::size_t slash = file.find_last_of('/', end);
    const std::string name = file.substr(0, end).substr(slash != std::string::npos && slash < end ? slash + 1 : 0);
    const std::size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

std::vector<std::string> columnNames(const std::vector<Column>& columns, NameCase nameCase, const Dialect* dialect,
                                     const std::string& key, std::vector<Note>& notes)
{
    ColumnNames names(columns, dialect, notes);
    names.takeFirst(nameCase, key);
    names.takeOthers();
    return names.result();
}

std::vector<std::string> columnNames(const std::string& file, const std::vector<Column>& columns, NameCase nameCase,
                                     std::vector<Note>& notes)
{
    if (columns.empty()) {
        throw Error(file, noColumns);
    }
    return columnNames(columns, nameCase, nullptr, {}, notes);
}

std::string tableName(const std::string& file, const TableOptions& options, const Dialect& dialect,
                      std::vector<Note>& notes)
{
    const bool given = !options.Table.empty();
    const std::string wanted = given ? options.Table : inCase(stemOf(file), options.Names);
    std::string name = allowedCharacters(wanted, dialect);
    // The options may name one of PostgreSQL's own tables; the server decides whether it accepts the records.
    if (isOwnTable(name, dialect) && !(given && dialect.Is == Engine::PostgreSql)) {
        name.insert(0, 1, '_');
    }
    const bool cut = dialect.cutTableName(name).size() != name.size();
    name = name.empty() ? "table_1" : std::string(dialect.cutTableName(name));
    if (name != wanted) {
        notes.push_back({changeOf("table", wanted, name, cut ? nameTooLong : refused)});
    }
    return name;
}

std::string keyName(const TableOptions& options, const Dialect& dialect, std::vector<Note>& notes)
{
    const std::string wanted = inCase(options.Key, options.Names);
    std::string name = wanted;
    if (const char* const reason = adapt(name, dialect); reason != nullptr) {
        notes.push_back({changeOf("column", wanted, name, reason)});
    }
    return name;
}

}  // namespace kd_lib::exchange::detail

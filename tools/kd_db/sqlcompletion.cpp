#include "sqlcompletion.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <array>

namespace kd_tool {

namespace {

constexpr std::array<const char*, 36> sqlWords = {
    "SELECT", "FROM", "WHERE",  "GROUP",    "ORDER", "BY",   "LIMIT", "OFFSET", "JOIN",    "LEFT", "USING", "ON",
    "AS",     "AND",  "OR",     "NOT",      "NULL",  "IS",   "IN",    "LIKE",   "BETWEEN", "CASE", "WHEN",  "THEN",
    "ELSE",   "END",  "HAVING", "DISTINCT", "UNION", "WITH", "DESC",  "count(", "sum(",    "min(", "max(",  "avg("};

bool isNameByte(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || c == '_' || c == '[' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           (c >= '0' && c <= '9');
}

/// The word that ends at `end`.
std::string_view wordBefore(std::string_view text, std::size_t end)
{
    std::size_t start = end;
    while (start > 0 && isNameByte(text[start - 1])) {
        --start;
    }
    return text.substr(start, end - start);
}

bool expectsTable(std::string_view word)
{
    const std::string lower = kd_lib::stringToLower(std::string(word));
    return lower == "from" || lower == "join" || lower == "into" || lower == "update" || lower == "table";
}

/// Keeps the candidates that begin with the unfinished word.
class Collector {
public:
    Collector(std::string_view before, std::string_view begun) : Before(before), Begun(begun) {}

    void add(const std::string& word, const std::string& description)
    {
        std::string candidate = Before + word;
        const bool known = std::ranges::any_of(Found, [&candidate](const auto& one) { return one.first == candidate; });
        const bool inBrackets = word.front() == '[' && word.compare(1, Begun.size(), Begun) == 0;
        if ((word.starts_with(Begun) || inBrackets) && !known) {
            Found.emplace_back(std::move(candidate), description);
        }
    }

    std::vector<std::pair<std::string, std::string>> Found;

private:
    std::string Before;
    std::string_view Begun;
};

void addColumns(Collector& to, const std::vector<SchemaColumn>& schema, std::string_view table)
{
    for (const SchemaColumn& column : schema) {
        if (table.empty() || column.Table == table) {
            to.add(column.Name, column.Type.empty() ? column.Table : column.Table + ", " + column.Type);
        }
    }
}

void addTables(Collector& to, const std::vector<SchemaColumn>& schema)
{
    for (const SchemaColumn& column : schema) {
        to.add(column.Table, "table");
    }
}

void addWords(Collector& to, char first)
{
    const bool lower = first >= 'a' && first <= 'z';
    for (const char* const word : sqlWords) {
        to.add(lower ? kd_lib::stringToLower(std::string(word)) : word, "SQL");
    }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> sqlCandidates(std::string_view statement,
                                                               const std::vector<SchemaColumn>& schema)
{
    if (std::ranges::count(statement, '\'') % 2 != 0) {
        return {};
    }
    const std::string_view begun = wordBefore(statement, statement.size());
    const std::string_view before = statement.substr(0, statement.size() - begun.size());
    Collector found(before, begun);
    if (before.ends_with('.')) {
        addColumns(found, schema, wordBefore(before, before.size() - 1));
        return std::move(found.Found);
    }
    const std::size_t blanks = before.find_last_not_of(' ') + 1;
    if (expectsTable(wordBefore(before, blanks))) {
        addTables(found, schema);
        return std::move(found.Found);
    }
    addColumns(found, schema, {});
    addTables(found, schema);
    if (!begun.empty()) {
        addWords(found, begun.front());
    }
    return std::move(found.Found);
}

}  // namespace kd_tool

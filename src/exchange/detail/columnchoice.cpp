#include "columnchoice.h"

#include "lettercase.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::string_view deletionMarkName = "_deleted";

template <class Same>
std::optional<std::size_t> firstNamed(const std::vector<Column>& columns, std::string_view name, Same same)
{
    const auto found = std::ranges::find_if(columns, [&](const Column& column) { return same(column.Name, name); });
    return found != columns.end() ? std::optional(static_cast<std::size_t>(found - columns.begin())) : std::nullopt;
}

std::optional<std::size_t> indexOf(const std::vector<Column>& columns, std::string_view name)
{
    const std::optional<std::size_t> exact =
        firstNamed(columns, name, [](std::string_view a, std::string_view b) { return a == b; });
    return exact ? exact : firstNamed(columns, name, equalWithoutCase);
}

[[noreturn]] void failUnknown(const std::string& file, const std::string& name)
{
    throw OptionError(file, "there is no column " + name);
}

/// The type that the options give to each column of the file.
std::vector<std::optional<ColumnType>> typesOf(const std::string& file, const std::vector<Column>& inFile,
                                               const SourceOptions& options)
{
    std::vector<std::optional<ColumnType>> types(inFile.size());
    for (const auto& [name, typeName] : options.Types) {
        const std::optional<std::size_t> index = indexOf(inFile, name);
        if (!index) {
            failUnknown(file, name);
        }
        types[*index] = typeOfName(typeName);
        if (!types[*index]) {
            throw OptionError(Place{file, 0, name, {}}, "unknown type: " + typeName);
        }
    }
    return types;
}

constexpr std::uint32_t charactersOfEscape = 4;

/// The most characters that a column's values have as text. 0: not known, because a binary number has more characters
/// than bytes.
std::uint32_t widthAsText(const Column& column)
{
    switch (column.Type) {
    case ColumnType::Text:
    case ColumnType::Number:
    case ColumnType::Boolean:
    case ColumnType::Date:
        return column.SourceLength;
    default:
        return 0;
    }
}

Column columnOf(const std::vector<Column>& inFile, const ChosenColumn& chosen)
{
    if (chosen.isDeletionMark()) {
        Column mark;
        mark.Name = deletionMarkName;
        mark.Type = ColumnType::Boolean;
        return mark;
    }
    Column column = inFile[chosen.Index];
    if (chosen.Type && *chosen.Type != column.Type) {
        column.Width = *chosen.Type == ColumnType::Text ? widthAsText(column) : 0;
        column.Decimals = 0;
        column.Type = *chosen.Type;
    }
    return column;
}

}  // namespace

std::optional<ColumnType> typeOfName(std::string_view name)
{
    constexpr std::pair<std::string_view, ColumnType> types[] = {
        {"text", ColumnType::Text},   {"integer", ColumnType::BigInteger},  {"number", ColumnType::Number},
        {"float", ColumnType::Float}, {"boolean", ColumnType::Boolean},     {"date", ColumnType::Date},
        {"time", ColumnType::Time},   {"timestamp", ColumnType::Timestamp}, {"bytes", ColumnType::Bytes}};
    const auto* const found =
        std::ranges::find_if(types, [name](const auto& type) { return equalWithoutCase(type.first, name); });
    return found != std::end(types) ? std::optional(found->second) : std::nullopt;
}

std::vector<ChosenColumn> chooseColumns(const std::string& file, const std::vector<Column>& inFile,
                                        const SourceOptions& options)
{
    const std::vector<std::optional<ColumnType>> types = typesOf(file, inFile, options);
    const bool marks = options.Deleted == DeletedRecords::Mark;
    std::vector<ChosenColumn> chosen;
    bool markChosen = false;
    for (const std::string& name : options.Select) {
        if (const std::optional<std::size_t> index = indexOf(inFile, name)) {
            chosen.push_back({*index, types[*index]});
        } else if (marks && equalWithoutCase(name, deletionMarkName)) {
            chosen.push_back({ChosenColumn::deletionMark, std::nullopt});
            markChosen = true;
        } else {
            failUnknown(file, name);
        }
    }
    for (std::size_t index = 0; options.Select.empty() && index < inFile.size(); ++index) {
        chosen.push_back({index, types[index]});
    }
    if (marks && !markChosen) {
        chosen.push_back({ChosenColumn::deletionMark, std::nullopt});
    }
    return chosen;
}

std::vector<Column> columnsOf(const std::vector<Column>& inFile, const std::vector<ChosenColumn>& chosen,
                              EncodingErrors onError)
{
    std::vector<Column> columns;
    columns.reserve(chosen.size());
    for (const ChosenColumn& one : chosen) {
        columns.push_back(columnOf(inFile, one));
        Column& column = columns.back();
        if (column.Type == ColumnType::Text && onError == EncodingErrors::Escape) {
            column.Width *= charactersOfEscape;
        }
    }
    return columns;
}

NeededColumns neededColumns(const std::vector<ChosenColumn>& chosen, const std::vector<bool>& needed)
{
    NeededColumns all;
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        if (!needed.empty() && !needed[i]) {
            continue;
        }
        if (chosen[i].isDeletionMark()) {
            all.Marks.push_back(i);
        } else {
            all.Taken.push_back({i, chosen[i].Index});
        }
    }
    return all;
}

}  // namespace kd_lib::exchange::detail

#include "tablearguments.h"

#include "lettercase.h"

#include <kd_lib/blanks.h>

#include <algorithm>
#include <set>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

/// A text in SQL's quotes, or without any.
std::string unquoted(std::string_view text)
{
    if (text.size() < 2 || (text.front() != '\'' && text.front() != '"') || text.back() != text.front()) {
        return std::string(text);
    }
    const char quote = text.front();
    std::string content;
    text = text.substr(1, text.size() - 2);
    for (std::size_t i = 0; i < text.size(); ++i) {
        content += text[i];
        i += text[i] == quote && i + 1 < text.size() && text[i + 1] == quote ? 1U : 0U;
    }
    return content;
}

/// One argument: `name=value`, or a value alone.
struct Argument {
    std::string Name;
    std::string Value;
};

Argument parse(std::string_view text)
{
    text = allTrimView(text);
    const std::size_t equals = text.find_first_of("='\"");
    if (equals == std::string_view::npos || text[equals] != '=') {
        return {{}, unquoted(text)};
    }
    return {lowered(allTrimView(text.substr(0, equals))), unquoted(allTrimView(text.substr(equals + 1)))};
}

[[noreturn]] void refuse(const Argument& argument)
{
    throw OptionError("", argument.Name + "=" + argument.Value + " makes no sense");
}

template <class Choice>
Choice chosen(const Argument& argument, std::initializer_list<std::pair<std::string_view, Choice>> choices)
{
    for (const auto& [word, choice] : choices) {
        if (equalWithoutCase(argument.Value, word)) {
            return choice;
        }
    }
    refuse(argument);
}

bool isYes(const Argument& argument)
{
    return chosen<bool>(argument, {{"1", true}, {"0", false}, {"yes", true}, {"no", false}});
}

std::vector<std::string> listOf(std::string_view text)
{
    std::vector<std::string> list;
    while (true) {
        const std::size_t comma = std::min(text.find(','), text.size());
        list.emplace_back(text.substr(0, comma));
        if (comma == text.size()) {
            return list;
        }
        text.remove_prefix(comma + 1);
    }
}

std::pair<std::string, std::string> typeOf(const Argument& argument)
{
    // A column's name may contain "=", a type does not.
    const std::size_t equals = argument.Value.rfind('=');
    if (equals == std::string::npos) {
        refuse(argument);
    }
    return {argument.Value.substr(0, equals), argument.Value.substr(equals + 1)};
}

using Setter = void (*)(TableArguments& to, const Argument& argument);

constexpr std::pair<std::string_view, Setter> setters[] = {
    {"from",
     [](TableArguments& to, const Argument& argument) {
         to.Options.Kind = chosen<SourceKind>(argument, {{"dbf", SourceKind::Dbf},
                                                         {"csv", SourceKind::Csv},
                                                         {"tsv", SourceKind::Tsv},
                                                         {"fixed", SourceKind::Fixed},
                                                         {"mem", SourceKind::Mem}});
     }},
    {"deleted",
     [](TableArguments& to, const Argument& argument) {
         to.Options.Deleted = chosen<DeletedRecords>(
             argument,
             {{"skip", DeletedRecords::Skip}, {"keep", DeletedRecords::Keep}, {"mark", DeletedRecords::Mark}});
     }},
    {"encoding_errors",
     [](TableArguments& to, const Argument& argument) {
         to.Options.OnEncodingError = chosen<EncodingErrors>(argument, {{"replace", EncodingErrors::Replace},
                                                                        {"strict", EncodingErrors::Strict},
                                                                        {"escape", EncodingErrors::Escape}});
     }},
    {"names",
     [](TableArguments& to, const Argument& argument) {
         to.Names = chosen<NameCase>(argument, {{"lower", NameCase::Lower}, {"keep", NameCase::Keep}});
     }},
    {"select", [](TableArguments& to, const Argument& argument) { to.Options.Select = listOf(argument.Value); }},
    {"encoding", [](TableArguments& to, const Argument& argument) { to.Options.Encoding = argument.Value; }},
    {"memo", [](TableArguments& to, const Argument& argument) { to.Options.MemoFile = argument.Value; }},
    {"no_memo", [](TableArguments& to, const Argument& argument) { to.Options.NoMemo = isYes(argument); }},
    {"columns", [](TableArguments& to, const Argument& argument) { to.Options.FixedColumns = argument.Value; }},
    {"delimiter", [](TableArguments& to, const Argument& argument) { to.Options.Delimiter = argument.Value; }},
    {"quote",
     [](TableArguments& to, const Argument& argument) {
         to.Options.Quote = argument.Value == "none" ? std::string() : argument.Value;
     }},
    {"header", [](TableArguments& to, const Argument& argument) { to.Options.Header = isYes(argument); }},
    {"infer", [](TableArguments& to, const Argument& argument) { to.Options.Infer = isYes(argument); }},
    {"null", [](TableArguments& to, const Argument& argument) { to.Options.Null = argument.Value; }},
    {"type", [](TableArguments& to, const Argument& argument) { to.Options.Types.push_back(typeOf(argument)); }},
};

}  // namespace

TableArguments parseTableArguments(const std::vector<std::string_view>& arguments)
{
    TableArguments table;
    std::set<std::string> met;
    for (const std::string_view text : arguments) {
        Argument argument = parse(text);
        if (argument.Name.empty() && table.File.empty()) {
            table.File = std::move(argument.Value);
            continue;
        }
        const auto* const setter =
            std::ranges::find(setters, argument.Name, &std::pair<std::string_view, Setter>::first);
        if (setter == std::end(setters)) {
            throw OptionError("", "unknown argument " + std::string(allTrimView(text)));
        }
        if (!met.insert(argument.Name).second && argument.Name != "type") {
            throw OptionError("", "argument " + argument.Name + " is given twice");
        }
        setter->second(table, argument);
    }
    if (table.File.empty()) {
        throw OptionError("", "the name of a file is missing");
    }
    return table;
}

}  // namespace kd_lib::exchange::detail

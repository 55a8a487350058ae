#include "options.h"

#include "exitstatus.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace kd_tool {

namespace {

template <class Value>
Value chosen(const std::string& text, std::initializer_list<std::pair<std::string_view, Value>> choices)
{
    std::string names;
    for (const auto& [name, value] : choices) {
        if (text == name) {
            return value;
        }
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    throw UsageError('"' + text + "\" is not one of " + names);
}

/// A whole number that is at least 1.
std::uint64_t positive(std::string_view text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number == 0) {
        throw UsageError('"' + std::string(text) + "\" is not a number above 0");
    }
    return number;
}

const std::string& notEmpty(const std::string& text)
{
    if (text.empty()) {
        throw UsageError("needs a value");
    }
    return text;
}

/// FROM-TO, FROM-, -TO, or one number.
exchange::RecordRange rangeOf(const std::string& text)
{
    exchange::RecordRange range;
    const std::size_t dash = text.find('-');
    if (dash == std::string::npos) {
        range.First = range.Last = positive(text);
        return range;
    }
    const std::string first = text.substr(0, dash);
    const std::string last = text.substr(dash + 1);
    if (first.empty() && last.empty()) {
        throw UsageError('"' + text + "\" is not a range such as 10-20, 10- or -20");
    }
    range.First = first.empty() ? range.First : positive(first);
    range.Last = last.empty() ? range.Last : positive(last);
    if (range.First > range.Last) {
        throw UsageError('"' + text + "\" ends before it begins");
    }
    return range;
}

/// Names separated by commas. A name that contains a comma or begins with a quote is in double quotes, which are
/// doubled inside.
std::vector<std::string> namesOf(const std::string& text)
{
    std::vector<std::string> names;
    std::size_t at = 0;
    do {
        std::string name;
        if (at < text.size() && text[at] == '"') {
            for (++at; at < text.size() && (text[at] != '"' || text.compare(at, 2, "\"\"") == 0); ++at) {
                at += text[at] == '"' ? 1U : 0U;
                name += text[at];
            }
            ++at;
        }
        const std::size_t comma = std::min(text.find(',', at), text.size());
        name += at < comma ? text.substr(at, comma - at) : "";
        at = comma + 1;
        names.push_back(std::move(name));
    } while (at <= text.size());
    return names;
}

std::pair<std::string, std::string> typeOf(const std::string& text)
{
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        throw UsageError('"' + text + "\" is not COLUMN=TYPE");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

/// A single byte; `\t` is a tab.
std::string characterOf(const std::string& text, const char* word)
{
    if (text == "\\t") {
        return "\t";
    }
    if (text.size() != 1 && text != word) {
        throw UsageError('"' + text + "\" is neither one character nor " + word);
    }
    return text;
}

void setMode(Options& options, exchange::TableMode mode)
{
    if (options.Table.Mode != exchange::TableMode::Create && options.Table.Mode != mode) {
        throw UsageError("--append and --replace exclude each other");
    }
    options.Table.Mode = mode;
}

When whenOf(const std::string& value)
{
    return chosen<When>(value, {{"auto", When::Auto}, {"always", When::Always}, {"never", When::Never}});
}

constexpr const char* whenValues = "auto|always|never";

}  // namespace

const OptionGroup fileOptions = {
    "Reading the file",
    {{"from", 0, "dbf|csv|tsv|fixed|mem", "The kind of file; by default by its extension",
      [](Options& o, const std::string& value) {
          using Kind = exchange::SourceKind;
          o.Source.Kind = chosen<Kind>(
              value,
              {{"dbf", Kind::Dbf}, {"csv", Kind::Csv}, {"tsv", Kind::Tsv}, {"fixed", Kind::Fixed}, {"mem", Kind::Mem}});
      }},
     {"encoding", 0, "NAME", "The code page of the file's texts, such as cp852; by default as the file states",
      [](Options& o, const std::string& value) { o.Source.Encoding = notEmpty(value); }},
     {"encoding-errors", 0, "replace|strict|escape",
      "A byte that the code page lacks becomes U+FFFD (default), makes its cell unreadable, or becomes \\xNN",
      [](Options& o, const std::string& value) {
          using Errors = exchange::EncodingErrors;
          o.Source.OnEncodingError = chosen<Errors>(
              value, {{"replace", Errors::Replace}, {"strict", Errors::Strict}, {"escape", Errors::Escape}});
      }},
     {"type", 0, "COLUMN=TYPE",
      "Reads a column as text, integer, number, float, boolean, date, time, timestamp or bytes; repeatable",
      [](Options& o, const std::string& value) { o.Source.Types.push_back(typeOf(value)); }},
     {"memo", 0, "FILE", ".dbf: the memo file; by default the one in the table's folder",
      [](Options& o, const std::string& value) { o.Source.MemoFile = notEmpty(value); }},
     {"no-memo", 0, "", ".dbf: leaves memo columns out",
      [](Options& o, const std::string&) { o.Source.NoMemo = true; }},
     {"columns", 0, "LIST", "Fixed columns: name:1-8,town:9-24 (bytes from 1), or the positions 5|12|20",
      [](Options& o, const std::string& value) { o.Source.FixedColumns = notEmpty(value); }},
     {"delimiter", 0, "C|auto", "Delimited text: the character between the cells; auto looks at the file",
      [](Options& o, const std::string& value) { o.Source.Delimiter = characterOf(value, "auto"); }},
     {"quote", 0, "C|none", "Delimited text: the character around cells; default \"",
      [](Options& o, const std::string& value) {
          o.Source.Quote = characterOf(value, "none");
          if (o.Source.Quote == "none") {
              o.Source.Quote.clear();
          }
      }},
     {"no-header", 0, "", "Delimited text: the first row is a record",
      [](Options& o, const std::string&) { o.Source.Header = false; }},
     {"infer", 0, "", "Delimited text: finds the types of the columns by reading all rows first",
      [](Options& o, const std::string&) { o.Source.Infer = true; }},
     {"null", 0, "TEXT", "Delimited text: an unquoted cell with this text is NULL",
      [](Options& o, const std::string& value) { o.Source.Null = value; }}}};

const OptionGroup recordOptions = {
    "Columns and records",
    {{"select", 0, "A,B,...", "Only these columns, in this order",
      [](Options& o, const std::string& value) { o.Source.Select = namesOf(notEmpty(value)); }},
     {"records", 0, "FROM-TO", "Only records with these numbers; either end may be left out",
      [](Options& o, const std::string& value) { o.Source.Records = rangeOf(value); }},
     {"deleted", 0, "skip|keep|mark",
      "Deleted records are left out (default), kept, or kept with a last column _deleted",
      [](Options& o, const std::string& value) {
          using Deleted = exchange::DeletedRecords;
          o.Source.Deleted =
              chosen<Deleted>(value, {{"skip", Deleted::Skip}, {"keep", Deleted::Keep}, {"mark", Deleted::Mark}});
      }}}};

const OptionGroup rejectOptions = {
    "Values that cannot be carried",
    {{"on-error", 0, "null|stop|skip",
      "An unreadable cell becomes NULL (default), ends the command, or its record is left out",
      [](Options& o, const std::string& value) {
          using exchange::OnError;
          o.OnError =
              chosen<OnError>(value, {{"null", OnError::Null}, {"stop", OnError::Stop}, {"skip", OnError::Skip}});
      }},
     {"rejects", 0, "FILE", "Writes each reject to FILE as a line of JSON",
      [](Options& o, const std::string& value) { o.Rejects = notEmpty(value); }}}};

const OptionGroup tableOptions = {
    "The table",
    {{"table", 0, "NAME", "The table's name; by default that of FILE without extension, in lower case",
      [](Options& o, const std::string& value) { o.Table.Table = notEmpty(value); }},
     {"append", 0, "", "Adds to the existing table; columns are matched by name",
      [](Options& o, const std::string&) { setMode(o, exchange::TableMode::Append); }},
     {"replace", 0, "", "Replaces an existing table, once the new one is whole",
      [](Options& o, const std::string&) { setMode(o, exchange::TableMode::Replace); }},
     {"key", 0, "COLUMN", "Adds a first column of this name, numbered by the database",
      [](Options& o, const std::string& value) { o.Table.Key = notEmpty(value); }},
     {"names", 0, "lower|keep", "Letter case of the names of table and columns; default lower",
      [](Options& o, const std::string& value) {
          using exchange::NameCase;
          o.Table.Names = chosen<NameCase>(value, {{"lower", NameCase::Lower}, {"keep", NameCase::Keep}});
      }}}};

const OptionGroup verifyOptions = {
    "The table",
    {{"table", 0, "NAME", "The table's name; by default that of FILE without extension, in lower case",
      [](Options& o, const std::string& value) { o.Table.Table = notEmpty(value); }}}};

const OptionGroup convertOptions = {
    "The result",
    {{"to", 0, "sqlite|postgresql|mysql|csv|jsonl", "An SQL script for one of the databases, CSV, or JSON lines",
      [](Options& o, const std::string& value) {
          o.To = chosen<FileFormat>(value, {{"sqlite", FileFormat::Sqlite},
                                            {"postgresql", FileFormat::PostgreSql},
                                            {"mysql", FileFormat::MySql},
                                            {"csv", FileFormat::Csv},
                                            {"jsonl", FileFormat::JsonLines}});
      }},
     {"output", 'o', "OUT", "A file, written whole or not at all; by default standard output",
      [](Options& o, const std::string& value) { o.Output = notEmpty(value); }},
     {"inserts", 0, "", "PostgreSQL: INSERT statements instead of COPY",
      [](Options& o, const std::string&) { o.Inserts = true; }}}};

const OptionGroup intoOptions = {
    "The database",
    {{"into", 0, "DATABASE", "A SQLite file, postgresql://... or mariadb://...; a SQLite file is created if missing",
      [](Options& o, const std::string& value) { o.Into = notEmpty(value); }}}};

const OptionGroup loadOptions = {"Many files",
                                 {{"jobs", 0, "N", "Loads N files at a time", [](Options& o, const std::string& value) {
                                       constexpr std::uint64_t most = 1000;
                                       o.Jobs = static_cast<unsigned>(std::min(positive(value), most));
                                   }}}};

const OptionGroup viewOptions = {
    "The result",
    {{"format", 0, "table|csv|jsonl", "An aligned table for people (default), CSV, or JSON lines",
      [](Options& o, const std::string& value) {
          o.Format = chosen<ListFormat>(
              value, {{"table", ListFormat::Table}, {"csv", ListFormat::Csv}, {"jsonl", ListFormat::JsonLines}});
      }},
     {"output", 'o', "OUT", "A file, written whole or not at all; by default standard output",
      [](Options& o, const std::string& value) { o.Output = notEmpty(value); }},
     {"no-pager", 0, "", "Prints long results without $PAGER",
      [](Options& o, const std::string&) { o.Pager = false; }}}};

const OptionGroup limitOptions = {"Number of records",
                                  {{"limit", 0, "N", "Only the first N records",
                                    [](Options& o, const std::string& value) { o.Limit = positive(value); }}}};

const OptionGroup scriptOptions = {"The script",
                                   {{"key", 0, "COLUMN", "Adds a first column of this name, numbered by the database",
                                     [](Options& o, const std::string& value) { o.Table.Key = notEmpty(value); }},
                                    {"definition-only", 0, "", "Leaves the records out",
                                     [](Options& o, const std::string&) { o.DefinitionOnly = true; }}}};

const OptionGroup progressOptions = {
    "Waiting",
    {{"progress", 0, whenValues, "A progress bar on standard error; auto: if that is a terminal",
      [](Options& o, const std::string& value) { o.Progress = whenOf(value); }}}};

const OptionGroup generalOptions = {
    "Messages",
    {{"color", 0, whenValues, "Colour; auto: on a terminal, unless NO_COLOR is set",
      [](Options& o, const std::string& value) { o.Color = whenOf(value); }},
     {"quiet", 'q', "", "No notes and no tally; errors and rejects only",
      [](Options& o, const std::string&) { o.Quiet = true; }},
     {"help", 'h', "", "Prints this help", [](Options& o, const std::string&) { o.Help = true; }}}};

}  // namespace kd_tool

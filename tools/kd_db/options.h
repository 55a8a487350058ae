/// \file
/// The options of the command line.
#pragma once

#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/exchange/transfer.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

enum class When : std::uint8_t { Auto, Always, Never };
enum class ListFormat : std::uint8_t { Table, Csv, JsonLines };
enum class FileFormat : std::uint8_t { None, Sqlite, PostgreSql, MySql, Csv, JsonLines };

/// All options of all commands with their defaults. A command uses those that its help names.
struct Options {
    std::vector<std::string> Arguments;  ///< the files, the database, the statement, in the order given

    exchange::SourceOptions Source;
    exchange::OnError OnError = exchange::OnError::Null;
    std::string Rejects;  ///< a file for the rejects; empty: none

    exchange::TableOptions Table;
    std::string Into;
    FileFormat To = FileFormat::None;
    bool Inserts = false;
    unsigned Jobs = 1;

    std::string Output = "-";  ///< "-": standard output
    ListFormat Format = ListFormat::Table;
    std::uint64_t Limit = std::numeric_limits<std::uint64_t>::max();
    bool Pager = true;

    bool DefinitionOnly = false;  ///< of `script`

    When Progress = When::Auto;
    When Color = When::Auto;
    bool Quiet = false;
    bool Help = false;
};

/// One option of the command line.
struct OptionSpec {
    const char* Name;   ///< without its dashes
    char Letter;        ///< the short form; 0: none
    const char* Value;  ///< its value, "a|b|c" for a choice; empty: none
    const char* Help;
    void (*Set)(Options& options, const std::string& value);  ///< throws a `UsageError` that lacks the option's name
};

/// Options that belong together, with their headline in the help.
struct OptionGroup {
    const char* Title;
    std::vector<OptionSpec> List;
};

/// The groups; each command has some of them.
extern const OptionGroup fileOptions;    ///< how a file is read
extern const OptionGroup recordOptions;  ///< which columns and records of it
extern const OptionGroup rejectOptions;  ///< what to do with values that cannot be carried
extern const OptionGroup tableOptions;   ///< the table to create
extern const OptionGroup verifyOptions;  ///< the table to compare
extern const OptionGroup convertOptions;
extern const OptionGroup loadOptions;
extern const OptionGroup intoOptions;
extern const OptionGroup viewOptions;  ///< how to print records
extern const OptionGroup limitOptions;
extern const OptionGroup scriptOptions;
extern const OptionGroup progressOptions;
extern const OptionGroup generalOptions;

}  // namespace kd_tool

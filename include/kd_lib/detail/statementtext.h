/// \file
/// The parameters of an SQL statement, in the form that a server accepts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::detail {

/// The syntax of quotes, comments and parameters.
enum class SqlForm {
    PostgreSql,  ///< parameters $1, $2; nested comments; $tag$ quotes; backquotes become double quotes
    MariaDb      ///< each parameter is a ?; # begins a comment too; texts are in single or double quotes
};

/// A statement with its parameters. They are numbered from 1 by first appearance; ":name" twice is one parameter,
/// each "?" of MariaDB is a separate one.
struct StatementText {
    std::string Sql;                       ///< the text for the server
    std::vector<std::string> Names;        ///< one for each parameter, ":" included; empty: it has only a number
    std::vector<std::size_t> Occurrences;  ///< MariaDB: for each "?" of `Sql`, the index of its parameter

    /// The number of the parameter of this name; 0 if there is none.
    int number(std::string_view name) const;
};

/// Finds the parameters. There are none inside quotes, comments and square brackets, nor after "::". `backslashes`:
/// inside plain single quotes (MariaDB: both kinds) a backslash escapes the next byte.
StatementText readStatement(std::string_view sql, SqlForm form, bool backslashes);

}  // namespace kd_lib::detail

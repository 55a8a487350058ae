/// \file
/// A column as SQL text: its definition and its current value.
/// Threads: all functions are free of shared state.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/tablefield.h>

#include <string>

namespace kd_lib {

/// The column definition used inside CREATE TABLE: name, one blank, type name; then "(length)" for
/// char and varchar, "(length,decimals)" for decimal, nothing for every other type.
KD_LIB_EXPORT std::string convertField2Sql(TableField field);

/// The current value as an SQL literal:
/// - boolean: 1 or 0, as `stringToBool` reads the value;
/// - decimal, float, smallint, integer, bigint: the trimmed text, unquoted and unchecked;
/// - date: quoted; a trimmed text of at most 8 characters is cut into YYYY-MM-DD. A single quote inside a date, a time
///   or a timestamp stays and ends the literal early: check values of files that you did not write;
/// - time: a trimmed text of at most 6 characters is cut into HH:MM:SS. Deliberate: there is a quote at its end
///   but none at its beginning;
/// - timestamp: the trimmed text, quoted;
/// - char, varchar, text: the text without trailing blanks, quoted; a single quote inside becomes a
///   backquote;
/// - every other type: the unchanged value, without quotes.
///
/// A value of blanks becomes NULL, except for boolean and the types of the last line.
/// A trimmed date of 1 to 5 characters and a trimmed time of 1 to 3 characters throw std::out_of_range.
KD_LIB_EXPORT std::string convertValue2Sql(TableField field);

}  // namespace kd_lib

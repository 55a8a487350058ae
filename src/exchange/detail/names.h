/// \file
/// The names of tables and columns in a target.
#pragma once

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/dialect.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/target.h>

#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

constexpr const char* noColumns = "there are no columns to carry";

/// The names of `columns` as the target accepts them: in the chosen case, none empty, none twice, none too long. If
/// `dialect` is null, any name is accepted. `key`, if not empty, is the name of a column before them. Each change,
/// except of case, becomes a note.
std::vector<std::string> columnNames(const std::vector<Column>& columns, NameCase nameCase, const Dialect* dialect,
                                     const std::string& key, std::vector<Note>& notes);

/// The names of the columns in a target that accepts any; if there are none, an `Error` names `file`.
std::vector<std::string> columnNames(const std::string& file, const std::vector<Column>& columns, NameCase nameCase,
                                     std::vector<Note>& notes);

/// The name of the table: that of the options, or the file's without folder and extension.
std::string tableName(const std::string& file, const TableOptions& options, const Dialect& dialect,
                      std::vector<Note>& notes);

/// The name of the column that the database numbers, from `options.Key`.
std::string keyName(const TableOptions& options, const Dialect& dialect, std::vector<Note>& notes);

}  // namespace kd_lib::exchange::detail

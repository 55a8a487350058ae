/// \file
/// The tables of databases and files, with their columns, as a person may type them in SQL.
#pragma once

#include <kd_lib/exchange/opensource.h>

#include <string>
#include <vector>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

/// A column and its table. A name that SQL reserves, or that is not a word, is in brackets: `[limit]`. Quotation marks
/// would end the argument in a shell.
struct SchemaColumn {
    std::string Table;
    std::string Name;
    std::string Type;  ///< as declared
};

/// The columns of all tables of `query`'s arguments: a SQLite database, or files and folders. Empty if nothing can be
/// read: it does not connect to servers, wait for locked databases or open pipes.
std::vector<SchemaColumn> schemaOf(const std::vector<std::string>& arguments, const exchange::SourceOptions& options);

}  // namespace kd_tool

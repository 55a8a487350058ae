/// \file
/// The commands of the program. Each returns when it is done and throws what failure.h declares otherwise.
#pragma once

#include "../source.h"

#include <string>

namespace kd_tool {

struct ListOptions {
    SourceOptions Source;
    bool Deleted = false;  ///< list deleted records too, marked
};

struct ScriptOptions {
    std::string File;
    std::string KeyColumn;
    bool DefinitionOnly = false;
};

struct LoadOptions {
    SourceOptions Source;
    std::string Database;
    std::string Table;  ///< empty: the file's name in lower case
};

struct ImportOptions {
    std::string Script;
    std::string Database;
};

struct QueryOptions {
    std::string Database;
    std::string Sql;
};

void show(const SourceOptions& options);
void list(const ListOptions& options);
void script(const ScriptOptions& options);
void load(const LoadOptions& options);
void import(const ImportOptions& options);
void query(const QueryOptions& options);
void memory(const std::string& file);

}  // namespace kd_tool

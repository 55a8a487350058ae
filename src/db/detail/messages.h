/// \file
/// The texts that the library reports, each defined once.
#pragma once

namespace kd_lib::detail::messages {

// Files
constexpr const char* noFileName = "No file name provided for table file";
constexpr const char* fileMissing = "File does not exist";
constexpr const char* fileNotReadable = "No permission to read file";
constexpr const char* tableNotOpen = "Table is not open";
constexpr const char* tableNotOpenResult = "Error: table is not open";

// Script import
constexpr const char* scriptMissingBefore = "SQL file ";
constexpr const char* scriptMissingAfter = " does not exist";
constexpr const char* executingScript = "Executing SQL file ";
constexpr const char* statementFailed = "Error executing statement";
constexpr const char* queryFailed = "Error executing query";

// Databases
constexpr const char* noMainDatabase = "No main database has been opened";
constexpr const char* databaseMissing = "Cannot find database";
constexpr const char* loadingNotEnabled = "Enable SQLite3 to load extensions";
constexpr const char* loadingFailed = "Enabling extension failed";

}  // namespace kd_lib::detail::messages

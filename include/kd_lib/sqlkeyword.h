/// \file
/// The reserved words of SQL, and column names that avoid them.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/tablefield.h>

#include <string>
#include <vector>

namespace kd_lib {

/// Orders byte strings by the first byte that differs, unsigned. A text comes before a longer one that
/// begins with it. Letter case counts.
template <class Text>
class vector_key {
public:
    /// True when `a` sorts before `b`.
    bool operator()(const Text& a, const Text& b) const { return a.compare(b) < 0; }
};

/// A list of 518 reserved words, and a check of column names against it.
/// Threads: one thread per object.
class KD_LIB_EXPORT SqlKeyword {
public:
    std::vector<std::string> keywords;  ///< the words in upper case, in byte order
    char quoteChar = '"';               ///< put around a reserved name; set it for other dialects

    /// Builds the list.
    SqlKeyword();

    /// Replaces `keywords` by the list.
    void createList();

    /// True when `word` is in the list, byte for byte; pass it in upper case.
    bool isReserved(const std::string& word) const;

    /// Changes every name to lower case and quotes the reserved ones with `quoteChar`. If verbosity is on,
    /// each of these is noted on standard output: "\t Field name ", the name in upper case,
    /// " is a reserved SQL keyword".
    void checkReserved(std::vector<TableField*>& fields) const;
};

}  // namespace kd_lib

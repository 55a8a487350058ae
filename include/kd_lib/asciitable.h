/// \file
/// Text tables: positional ones with comment lines, and delimited ones.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/filetable.h>

#include <string>

namespace kd_lib {

/// A positional text table that recognises comment lines. Its records are read as those of `FileTable`.
/// Threads: one thread per object.
class KD_LIB_EXPORT AsciiTable : public FileTable {
public:
    int CommentChar = 0;         ///< its low 8 bits are the comment character; 0: no ordinary line is a comment
    bool HasFieldNames = false;  ///< the first line holds the column names (used by `DelimitedTable`)

    AsciiTable();                                  ///< extension "txt", lines of at most 254 characters
    explicit AsciiTable(const std::string& name);  ///< the same, with `BaseName` and `Name` set
    explicit AsciiTable(std::string& name);        ///< the same
    ~AsciiTable() override;

    /// True when the comment character occurs anywhere in `line`.
    bool isCommentLine(const std::string& line);

    /// As `FileTable::extractContent`.
    bool extractContent(const std::string& record) override;
};

/// A text table of one record per line with a separator between the values.
///
/// | member          | default | effect                                                                  |
/// |-----------------|---------|-------------------------------------------------------------------------|
/// | `Separator`     | 124   | separates values ("\|"); its low 8 bits count; set before `getFieldList`  |
/// | `Quote`         | 0     | set by the modes, but not used: separators inside quotes count              |
/// | `HasFieldNames` | true  | `getFieldList` takes the column names from the first line                |
/// | `CommentChar`   | 0     | a first line that contains it is not read as names                         |
/// | `RecordLength`  | 255   | one more than the longest line                                           |
///
///     kd_lib::DelimitedTable people;
///     people.setCsvMode();
///     if (people.open("people") && people.getFieldList()) {
///         while (people.fetchRecord()) { use(people.Fields.getData("city")); }
///     }
///
/// Threads: one thread per object.
class KD_LIB_EXPORT DelimitedTable : public AsciiTable {
public:
    int Separator = 124;  ///< value separator
    int Quote = 0;        ///< quote character of the chosen mode

    DelimitedTable();  ///< extension "csv", separator "|"
    ~DelimitedTable() override;

    void setCsvMode();    ///< separator ",", quote "\"", lines
    void setRMode();      ///< separator tab, quote "\"", lines
    void setExcelMode();  ///< the same as `setCsvMode`

    /// Deliberate: goes to byte `RecordLength` of the file, not to its second line, when the table is
    /// open and `HasFieldNames` is true. Returns true even if the seek fails.
    /// `getFieldList` and `goRecord(2)` go to the second line.
    bool skipHeader() override;

    /// Takes the line at the current position as column names. False when `HasFieldNames` is false
    /// (nothing is read), when the line contains the comment character (the line is then consumed), or when the
    /// stream fails.
    bool readHeader() override;

    /// Stores piece i of `record` as the value of column i, verbatim even if `Trim` is set. With fewer
    /// pieces the other columns keep their values; pieces without a column are ignored.
    bool extractContent(const std::string& record) override;

    /// Appends one column per piece of `line`. Its name is the piece with its quotes, in lower case. Existing columns
    /// stay.
    virtual bool extractFieldNames(const std::string& line);
};

}  // namespace kd_lib

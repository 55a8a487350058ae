/// \file
/// Text tables for the commands: delimited and positional ones. Lines may end in CR LF, whose CR belongs
/// to no value, and have up to 1 MiB; a zero byte in a line is a failure.
#pragma once

#include "source.h"

#include <kd_lib/asciitable.h>

#include <string_view>

namespace kd_tool {

/// The lines of a text table, whose class is `Table`.
template <class Table>
class TextSource : public Source, public Table {
public:
    kd_lib::FileTable& table() override { return *this; }
    bool fetchRecord() override;

protected:
    explicit TextSource(const std::string& file);

    /// The line in `text` without the CR at its end; `where` begins the failure's reason.
    std::string_view checkedLine(std::string_view text, const std::string& where);

    /// The name of the record under way, as a reason's beginning.
    std::string recordName() const { return "record " + std::to_string(Number); }
};

extern template class TextSource<kd_lib::DelimitedTable>;
extern template class TextSource<kd_lib::FileTable>;

/// A delimited table. Every line holds as many values as the first one holds names. A byte order mark in
/// front of the first name belongs to no name.
class DelimitedSource : public TextSource<kd_lib::DelimitedTable> {
public:
    DelimitedSource(const std::string& file, bool tabs, bool unquote);

    bool hasWidths() const override { return false; }
    bool extractFieldNames(const std::string& line) override;
    bool extractContent(const std::string& record) override;

private:
    void checkPieces(std::string_view line) const;

    bool Unquote;
    std::string Line;
};

/// A positional table. Every line reaches to the end of its last column.
class PositionalSource : public TextSource<kd_lib::FileTable> {
public:
    PositionalSource(const std::string& file, const std::string& columns);

    bool extractContent(const std::string& record) override;

private:
    void defineColumns(std::string columns);

    std::size_t Width = 0;  // of the shortest line that holds all columns
};

}  // namespace kd_tool

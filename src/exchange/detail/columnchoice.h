/// \file
/// Applies the options `Select`, `Types` and `Deleted` to the columns of a file; the same for all sources.
#pragma once

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/opensource.h>

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// A column of the source.
struct ChosenColumn {
    /// The `Index` of the column `_deleted`, which is in no file.
    static constexpr std::size_t deletionMark = std::numeric_limits<std::size_t>::max();

    std::size_t Index = 0;           ///< of the file's columns
    std::optional<ColumnType> Type;  ///< the type given by the options, if any

    bool isDeletionMark() const { return Index == deletionMark; }
};

/// The columns that the options select, in the order of the source. A name means the first column that has it; if there
/// is none, the first whose name differs only in the case of ASCII letters. `_deleted` comes last, unless it is
/// selected. Throws an `OptionError` that names the column and the file for a column that the file lacks, and for an
/// unknown type.
std::vector<ChosenColumn> chooseColumns(const std::string& file, const std::vector<Column>& inFile,
                                        const SourceOptions& options);

/// The source's columns for the chosen ones. An escaped byte becomes four characters.
std::vector<Column> columnsOf(const std::vector<Column>& inFile, const std::vector<ChosenColumn>& chosen,
                              EncodingErrors onError);

/// A column of the records that comes from the file.
struct TakenColumn {
    std::size_t Column;  ///< index into the source's columns
    std::size_t Index;   ///< of the file's columns
};

/// The needed columns, separated by their origin.
struct NeededColumns {
    std::vector<TakenColumn> Taken;
    std::vector<std::size_t> Marks;  ///< columns that hold the deletion mark
};

/// `needed` is the argument of `Source::need`; empty: all columns.
NeededColumns neededColumns(const std::vector<ChosenColumn>& chosen, const std::vector<bool>& needed);

/// The type of a name that `--type` accepts; nothing for any other name.
std::optional<ColumnType> typeOfName(std::string_view name);

}  // namespace kd_lib::exchange::detail

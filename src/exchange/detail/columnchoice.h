/// \file
/// What the options `Select`, `Types` and `Deleted` make of the columns of a file; the same for all sources.
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
    std::optional<ColumnType> Type;  ///< the type that was asked for, where one was

    bool isDeletionMark() const { return Index == deletionMark; }
};

/// The columns that the options ask for, in the order of the source. A name means the first column that has it, or the
/// first that has it without regard to the case of ASCII letters. `_deleted` comes last, unless it is selected.
/// Throws an `OptionError` that names the column and the file for a column that the file lacks, and for a type that is
/// none.
std::vector<ChosenColumn> chooseColumns(const std::string& file, const std::vector<Column>& inFile,
                                        const SourceOptions& options);

/// The source's columns for those that were chosen. A byte that is escaped becomes four characters.
std::vector<Column> columnsOf(const std::vector<Column>& inFile, const std::vector<ChosenColumn>& chosen,
                              EncodingErrors onError);

/// A column of the records that comes from the file.
struct TakenColumn {
    std::size_t Column;  ///< index into the source's columns
    std::size_t Index;   ///< of the file's columns
};

/// The columns that are needed, apart from each other by where they come from.
struct NeededColumns {
    std::vector<TakenColumn> Taken;
    std::vector<std::size_t> Marks;  ///< columns that hold the deletion mark
};

/// `needed`: as `Source::need` takes it; empty: all.
NeededColumns neededColumns(const std::vector<ChosenColumn>& chosen, const std::vector<bool>& needed);

/// The type of a name as `--type` takes it; nothing for any other name.
std::optional<ColumnType> typeOfName(std::string_view name);

}  // namespace kd_lib::exchange::detail

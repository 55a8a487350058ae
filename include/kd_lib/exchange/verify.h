/// \file
/// Compares a source with the table that it was loaded into.
#pragma once

#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// The first record in which a column differs.
struct ColumnDifference {
    std::string Column;        ///< as in the source
    std::uint64_t Record = 0;  ///< number in the source
    std::string InSource;      ///< the value as text; "NULL"; texts and bytes in quotes
    std::string InTable;
};

/// The result of `verify`.
struct Verification {
    std::uint64_t Records = 0;                  ///< of the source
    std::uint64_t Rows = 0;                     ///< of the table
    std::uint64_t Rejects = 0;                  ///< of the source's cells and records
    std::vector<ColumnDifference> Differences;  ///< one for each differing column, in the order of the columns

    bool agrees() const { return Records == Rows && Differences.empty(); }
};

/// Compares `table` with the records that `source` would carry into it. `table` yields the columns of `layout`, in the
/// same order (`SqliteSource::ofTable`, or the result of a server). `layout.fit` and the policy of `options` apply to
/// the records of `source` as in a transfer, so an unreadable cell and NULL agree. Values are compared as the types of
/// `source`'s columns: numbers by value, times and booleans also in the forms in which databases return them.
///
/// The n-th record is compared with the n-th row. If any differ, both are read once more, because the database may
/// return its rows in another order: equal records and rows are paired whatever their order, and only the rest is
/// compared, again in order. For that both must be able to `seek` back; otherwise the differences are those of the
/// first comparison. If the counts differ, a record that shares less than half of its values with its counterpart
/// counts as missing on the other side. Memory: some hashes, which are moved to a temporary file when there are many.
/// Exceptions of the sources pass through.
KD_LIB_EXPORT Verification verify(Source& source, Source& table, TableLayout& layout,
                                  const TransferOptions& options = {});

}  // namespace kd_lib::exchange

/// \file
/// Carries the records of a source into a target.
#pragma once

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <stop_token>

namespace kd_lib::exchange {

/// What to do with an unreadable cell, and with a row that has too few or too many cells.
enum class OnError : std::uint8_t {
    Null,  ///< the cell becomes NULL; a short row is filled with NULLs, a long one is cut
    Stop,  ///< the transfer fails with an `Error` that names it
    Skip   ///< the record is left out
};

/// The progress of a transfer.
struct Progress {
    std::uint64_t Records = 0;          ///< read from the source
    std::uint64_t Bytes = 0;            ///< of the source's file
    std::optional<std::uint64_t> Size;  ///< of the source's file, if known
};

struct TransferOptions {
    OnError Policy = OnError::Null;
    std::uint64_t Limit = std::numeric_limits<std::uint64_t>::max();  ///< ends after this number of stored records
    std::function<void(const Reject&)> OnReject = {};      ///< called for each reject, in the order of the records
    std::function<void(const Progress&)> OnProgress = {};  ///< called about every 64 KiB, and at the end
    std::stop_token Stop = {};                             ///< when a stop is requested, the transfer throws `Stopped`
};

/// The result of a transfer.
struct Tally {
    std::uint64_t Read = 0;     ///< records of the source
    std::uint64_t LeftOut = 0;  ///< deleted records, and those left out because of a cell
    std::uint64_t Stored = 0;   ///< records that the target stored
    std::uint64_t Rejects = 0;
    bool Loss = false;  ///< there was a reject, or a note of the source or target about a loss
};

/// Carries all records of `source` into `target`, from `begin` to `finish`. After an exception of the source, the
/// target or a callback, the target is abandoned. The notes remain available from source and target.
///
///     const auto source = openSource("people.dbf");
///     SqliteTarget target("people.db", {});
///     const Tally tally = transfer(*source, target);
KD_LIB_EXPORT Tally transfer(Source& source, Target& target, const TransferOptions& options = {});

/// The policy alone, for reading without a target: turns the flaws of the source's current record into rejects. True:
/// use the record; its unreadable cells are now null. False: leave it out. Throws an `Error` if the policy is to stop.
KD_LIB_EXPORT bool applyPolicy(Source& source, OnError policy, const std::function<void(const Reject&)>& onReject,
                               Tally& tally);

}  // namespace kd_lib::exchange

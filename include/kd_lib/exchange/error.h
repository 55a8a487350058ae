/// \file
/// Failures: errors that end the work, rejects of single cells or records, and notes.
#pragma once

#include <kd_lib/export.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace kd_lib::exchange {

/// The place of an error or a reject. Members that do not apply keep their defaults.
struct Place {
    std::string File = {};                     ///< as the caller named it; "-" is standard input
    std::uint64_t Record = 0;                  ///< number from 1; 0: not a single record
    std::string Column = {};                   ///< as in the file; empty: not a single column
    std::optional<std::uint64_t> Offset = {};  ///< of the byte in the file, from 0
};

/// The work cannot be done, or cannot go on. `what()` is one line: the place and the reason.
class KD_LIB_EXPORT Error : public std::runtime_error {
public:
    Error(Place place, std::string reason);
    Error(const std::string& file, std::string reason) : Error(Place{file, 0, {}, {}}, std::move(reason)) {}

    Place Where;
    std::string Reason;  ///< without the place
};

/// An invalid option: an unknown code page, a selected column that the source lacks.
class KD_LIB_EXPORT OptionError : public Error {
public:
    using Error::Error;
};

/// The caller has stopped the work through a stop token.
class KD_LIB_EXPORT Stopped : public Error {
public:
    using Error::Error;
};

/// The treatment of a cell or record that could not be carried unchanged.
enum class RejectAction : std::uint8_t {
    Null,     ///< the cell became NULL, or the cells that a short row lacks
    Replace,  ///< bytes became U+FFFD
    Escape,   ///< bytes became \xNN
    Cut,      ///< the surplus cells of a long row were left out
    Skip,     ///< the record was left out
    Stop      ///< the work ended
};

/// One cell that could not be carried unchanged, or a whole record (`Where.Column` is empty).
struct Reject {
    Place Where;
    std::string Bytes;  ///< the cell's bytes in the file
    std::string Reason;
    RejectAction Action = RejectAction::Null;
    bool CauseIsNoted = false;  ///< a note reports the cause of all such rejects: the memo file is missing
};

/// "null", "replace", "escape", "cut", "skip" or "stop".
KD_LIB_EXPORT const char* actionName(RejectAction action);

/// A line about a whole file: names changed, the code page chosen, records deleted, damage.
struct Note {
    std::string Text;   ///< without the file's name
    bool Loss = false;  ///< something was lost or may be missing
    bool Fact = false;  ///< one of the source's facts repeats it
};

}  // namespace kd_lib::exchange

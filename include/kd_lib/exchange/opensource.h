/// \file
/// Opens a file as a source.
#pragma once

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/source.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace kd_lib::exchange {

/// The kind of a file. `Automatic`: by its extension, in any case of letters: .dbf; .csv; .tsv and .tab; .txt
/// (fixed columns); .mem.
enum class SourceKind : std::uint8_t { Automatic, Dbf, Csv, Tsv, Fixed, Mem };

/// Deleted records are left out, kept like any other, or kept with a last boolean column `_deleted`.
enum class DeletedRecords : std::uint8_t { Skip, Keep, Mark };

/// Record numbers, from 1, both inclusive.
struct RecordRange {
    std::uint64_t First = 1;
    std::uint64_t Last = std::numeric_limits<std::uint64_t>::max();
};

/// How a file is read. The defaults suit most files. An option that does not apply to the file's kind is an
/// `OptionError` if it would change what is read.
struct SourceOptions {
    SourceKind Kind = SourceKind::Automatic;
    std::vector<std::string> Select = {};  ///< only these columns, in this order; empty: all
    RecordRange Records = {};
    DeletedRecords Deleted = DeletedRecords::Skip;
    std::string Encoding = {};  ///< a name that `CodePage` knows; empty: as the file states
    EncodingErrors OnEncodingError = EncodingErrors::Replace;
    std::vector<std::pair<std::string, std::string>> Types = {};  ///< column and type: text, integer, number, float,
                                                                  ///< boolean, date, time, timestamp, bytes

    std::string MemoFile = {};  ///< of a .dbf; empty: found in its folder
    bool NoMemo = false;        ///< leaves out the memo columns of a .dbf

    std::string FixedColumns = {};  ///< `name:1-8,town:9-24`, or `5|12|20`

    std::string Delimiter = {};            ///< of delimited text: one character, or "auto"; empty: by the file's kind
    std::string Quote = "\"";              ///< one character; empty: none
    bool Header = true;                    ///< the first row holds the names of the columns
    bool Infer = false;                    ///< finds the types of the columns by reading all rows first
    std::optional<std::string> Null = {};  ///< an unquoted cell with this text is null as well

    std::stop_token Stop = {};  ///< when a stop is requested, a source that waits for a pipe throws `Stopped`
};

/// Opens a file; "-" is standard input and needs a `Kind`. Throws an `Error` if the file cannot be read as its kind,
/// and an `OptionError` for invalid options.
KD_LIB_EXPORT std::unique_ptr<Source> openSource(const std::string& file, const SourceOptions& options = {});

}  // namespace kd_lib::exchange

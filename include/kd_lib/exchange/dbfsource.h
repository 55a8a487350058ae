/// \file
/// Tables of dBase, FoxPro, Clipper and similar programs (.dbf).
#pragma once

#include <kd_lib/exchange/filesource.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/export.h>

#include <string>

namespace kd_lib::exchange {

/// A .dbf file of any kind: dBase II to IV and 7, FoxBASE, FoxPro 2, Visual FoxPro, Clipper. The code page is that of
/// the options; by default, that of a .cpg file in the table's folder; without such a file, the header's. Memo texts
/// come from the memo file in the table's folder.
///
/// The types of the columns:
///
///     C V M            text          C: without blanks and zero bytes at its end
///     N F              number
///     I + Y            integer, currency
///     B O              float         B of dBase, 10 bytes long: bytes from the memo file
///     L D T @          boolean, date, timestamp
///     G P W Q, others  bytes
///
/// Memory does not depend on the size of the file, only on that of the longest memo text.
class KD_LIB_EXPORT DbfSource : public FileSource {
public:
    /// Opens a table; "-" is standard input, which has no memo file. Throws an `Error` if the file cannot be opened or
    /// is not a table, or if the options name a memo file that cannot be read; an `OptionError` for invalid options.
    explicit DbfSource(const std::string& file, const SourceOptions& options = {});
    ~DbfSource() override;

private:
    class KD_LIB_LOCAL Reader;
};

}  // namespace kd_lib::exchange

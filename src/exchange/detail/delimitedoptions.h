/// \file
/// The options of delimited text.
#pragma once

#include "delimitedreader.h"
#include "textwindow.h"

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/opensource.h>

#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Whether the delimiter is to be found by the text itself.
bool findsDelimiter(const SourceOptions& options);

/// How the text is written: the delimiter asked for, else the usual one of the kind. Throws an `OptionError` for a
/// delimiter or a quote that cannot be one.
DelimitedForm delimitedForm(const std::string& file, const SourceOptions& options);

/// The page that a text is converted from before it is cut, because its bytes cannot be searched for the marks of
/// `form`; null where they can.
const CodePage* pageToConvert(const CodePage& page, const DelimitedForm& form);

}  // namespace kd_lib::exchange::detail

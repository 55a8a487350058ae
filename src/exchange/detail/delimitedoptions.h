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

/// Whether the options ask to find the delimiter in the text.
bool findsDelimiter(const SourceOptions& options);

/// The form of the text, with the delimiter of the options, by default the usual one of the kind. Throws an
/// `OptionError` for an invalid delimiter or quote.
DelimitedForm delimitedForm(const std::string& file, const SourceOptions& options);

/// The page that a text is converted from before it is cut, because its bytes cannot be searched for the marks of
/// `form`; null if they can.
const CodePage* pageToConvert(const CodePage& page, const DelimitedForm& form);

}  // namespace kd_lib::exchange::detail

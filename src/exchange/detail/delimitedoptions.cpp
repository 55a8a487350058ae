#include "delimitedoptions.h"

#include "lettercase.h"
#include "sourcekind.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

/// The single character of an option.
char characterOf(const std::string& file, const std::string& text, const char* what)
{
    if (text == "\\t" || equalWithoutCase(text, "tab")) {
        return '\t';
    }
    if (text.size() != 1 || isLineEnd(text[0]) || !isAscii(text)) {
        throw OptionError(file, std::string("the ") + what + " must be one ASCII character: " + text);
    }
    return text[0];
}

}  // namespace

bool findsDelimiter(const SourceOptions& options)
{
    return equalWithoutCase(options.Delimiter, "auto");
}

DelimitedForm delimitedForm(const std::string& file, const SourceOptions& options)
{
    const SourceKind kind = options.Kind == SourceKind::Automatic ? kindOfName(file) : options.Kind;
    DelimitedForm form;
    form.Delimiter = kind == SourceKind::Tsv ? '\t' : ',';
    if (!options.Delimiter.empty() && !findsDelimiter(options)) {
        form.Delimiter = characterOf(file, options.Delimiter, "delimiter");
    }
    form.HasQuotes = !options.Quote.empty();
    if (form.HasQuotes) {
        form.Quote = characterOf(file, options.Quote, "quote");
        if (form.Quote == form.Delimiter) {
            throw OptionError(file, "the delimiter and the quote are the same character");
        }
    }
    return form;
}

const CodePage* pageToConvert(const CodePage& page, const DelimitedForm& form)
{
    // The second bytes of double-byte characters begin with the digits.
    constexpr char firstSecondByte = '0';
    const bool marksAreMarks = form.Delimiter < firstSecondByte && (!form.HasQuotes || form.Quote < firstSecondByte);
    const bool direct = page.isUtf8() || (page.isAsciiBased() && (page.isSingleByte() || marksAreMarks));
    return direct ? nullptr : &page;
}

}  // namespace kd_lib::exchange::detail

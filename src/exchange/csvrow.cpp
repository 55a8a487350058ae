// Rows of comma separated values.
#include <kd_lib/exchange/rowtext.h>

#include "detail/binarytext.h"
#include "detail/cellform.h"
#include "detail/escape.h"

#include <bit>

namespace kd_lib::exchange {

namespace {

/// Quotes are doubled. All bytes are marked that make a text need quotes around it.
struct DoubledQuotes {
    static constexpr std::size_t Longest = 2;

    static detail::SixteenBytes marks(detail::SixteenBytes bytes)
    {
        return std::bit_cast<detail::SixteenBytes>((bytes == '"') | (bytes == ',') | (bytes == '\n') | (bytes == '\r'));
    }

    static char* put(char* to, char byte)
    {
        *to++ = byte;
        if (byte == '"') {
            *to++ = byte;
        }
        return to;
    }
};

struct CsvForm {
    static constexpr char Quote = '\0';
    static constexpr char Between = 'T';
    static constexpr std::string_view Null = "";
    static constexpr std::string_view True = "true";
    static constexpr std::string_view False = "false";

    static void text(std::string_view text, OutputBlock& out) { writeCsvText(text, out); }

    static void bytes(std::string_view bytes, OutputBlock& out)
    {
        if (bytes.empty()) {
            writeCsvText({}, out);
        }
        detail::writeBase64(bytes, out);
    }

    static char* real(char* to, double value) { return detail::putReal(to, value); }
};

}  // namespace

void writeCsvText(std::string_view text, OutputBlock& out)
{
    if (!text.empty() && !detail::containsAny(text, DoubledQuotes::marks)) {
        out.write(text);
        return;
    }
    out.write('"');
    detail::writeEscaped<DoubledQuotes>(text, out);
    out.write('"');
}

void writeCsvRow(const Record& record, OutputBlock& out)
{
    detail::writeLine<CsvForm>(record.Cells, ',', out);
}

}  // namespace kd_lib::exchange

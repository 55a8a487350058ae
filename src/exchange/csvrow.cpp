// Rows of comma-separated values.
#include <kd_lib/exchange/rowtext.h>

#include "detail/binarytext.h"
#include "detail/cellform.h"
#include "detail/escape.h"

#include <bit>

namespace kd_lib::exchange {

namespace {

/// Quotes are doubled. Every byte that requires quotes around the text is marked.
struct CsvEscapes {
    static constexpr std::size_t Longest = 2;

    static detail::SixteenBytes marks(detail::SixteenBytes bytes)
    {
        return std::bit_cast<detail::SixteenBytes>((bytes == '"') | (bytes == ',') | (bytes == '\n') | (bytes == '\r'));
    }

    static std::uint32_t plainMarks(const detail::Lanes& lanes) { return lanes.equal('"') | lanes.equal(','); }

    static char* put(char* to, char byte)
    {
        *to++ = byte;
        if (byte == '"') {
            *to++ = byte;
        }
        return to;
    }
};

struct CsvForm : detail::CommonForm {
    static constexpr char Quote = '\0';
    static constexpr char Between = 'T';
    static constexpr detail::ShortWord Null = "";
    static constexpr detail::ShortWord True = "true";
    static constexpr detail::ShortWord False = "false";

    static constexpr std::size_t Longest = CsvEscapes::Longest;

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        const bool unmarked =
            Plain ? detail::copyUnmarkedPlain<CsvEscapes>(to, text) : detail::copyUnmarked<CsvEscapes>(to, text);
        if (unmarked && !text.empty()) {
            return to + text.size();
        }
        *to++ = '"';
        to = detail::putEscaped<CsvEscapes>(to, text);
        *to++ = '"';
        return to;
    }

    static void longText(std::string_view text, OutputBlock& out) { writeCsvText(text, out); }

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
    if (!text.empty() && !detail::containsAny(text, CsvEscapes::marks)) {
        out.write(text);
        return;
    }
    out.write('"');
    detail::writeEscaped<CsvEscapes>(text, out);
    out.write('"');
}

void writeCsvRow(const Record& record, OutputBlock& out)
{
    detail::writeCells<CsvForm>(record, ',', '\n', out);
}

}  // namespace kd_lib::exchange

// Rows for the bulk loads of servers: PostgreSQL's COPY, MySQL's LOAD DATA.
#include <kd_lib/exchange/rowtext.h>

#include "detail/binarytext.h"
#include "detail/cellform.h"
#include "detail/escape.h"

#include <bit>

namespace kd_lib::exchange {

namespace {

/// Backslashes, line ends and tabs as two bytes that begin with a backslash; `ZeroToo`: zero bytes too.
template <bool ZeroToo>
struct BulkEscapes {
    static constexpr std::size_t Longest = 2;

    static detail::SixteenBytes marks(detail::SixteenBytes bytes)
    {
        using detail::SixteenBytes;
        const auto marked = (bytes == '\\') | (bytes == '\n') | (bytes == '\r') | (bytes == '\t');
        return std::bit_cast<SixteenBytes>(ZeroToo ? marked | (bytes == 0) : marked);
    }

    static std::uint32_t plainMarks(const detail::Lanes& lanes) { return lanes.equal('\\'); }

    static char* put(char* to, char byte)
    {
        const auto escaped = [to](char letter) {
            to[0] = '\\';
            to[1] = letter;
            return to + 2;
        };
        switch (byte) {
        case '\\':
            return escaped('\\');
        case '\n':
            return escaped('n');
        case '\r':
            return escaped('r');
        case '\t':
            return escaped('t');
        case '\0':
            if (ZeroToo) {
                return escaped('0');
            }
            [[fallthrough]];
        default:
            *to = byte;
            return to + 1;
        }
    }
};

struct CopyForm : detail::CommonForm {
    static constexpr char Quote = '\0';
    static constexpr char Between = ' ';
    static constexpr detail::ShortWord Null = "\\N";
    static constexpr detail::ShortWord True = "t";
    static constexpr detail::ShortWord False = "f";

    using Way = BulkEscapes<false>;
    static constexpr std::size_t Longest = Way::Longest;

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        return detail::putShort<Way, Plain>(to, text);
    }

    static void longText(std::string_view text, OutputBlock& out) { detail::writeEscaped<Way>(text, out); }

    static void bytes(std::string_view bytes, OutputBlock& out)
    {
        out.write("\\\\x");
        detail::writeHex(bytes, out);
    }

    static char* real(char* to, double value)
    {
        if (std::isfinite(value)) {
            return detail::putReal(to, value);
        }
        const std::string_view word = std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity";
        return kd_lib::detail::copyBytes(to, word);
    }
};

struct LoadDataForm : detail::CommonForm {
    static constexpr char Quote = '\0';
    static constexpr char Between = ' ';
    static constexpr detail::ShortWord Null = "\\N";
    static constexpr detail::ShortWord True = "1";
    static constexpr detail::ShortWord False = "0";

    using Way = BulkEscapes<true>;
    static constexpr std::size_t Longest = Way::Longest;

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        return detail::putShort<Way, Plain>(to, text);
    }

    static void longText(std::string_view text, OutputBlock& out) { detail::writeEscaped<Way>(text, out); }
    static void bytes(std::string_view bytes, OutputBlock& out) { longText(bytes, out); }
    static char* real(char* to, double value) { return detail::putReal(to, value); }
};

}  // namespace

void writeCopyRow(const Record& record, OutputBlock& out)
{
    detail::writeCells<CopyForm>(record, '\t', '\n', out);
}

void writeLoadDataRow(const Record& record, OutputBlock& out)
{
    detail::writeCells<LoadDataForm>(record, '\t', '\n', out);
}

}  // namespace kd_lib::exchange

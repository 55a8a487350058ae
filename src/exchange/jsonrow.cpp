// Rows of JSON.
#include <kd_lib/exchange/rowtext.h>

#include "detail/binarytext.h"
#include "detail/cellform.h"
#include "detail/escape.h"

#include <bit>

namespace kd_lib::exchange {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

/// Control characters, quotes and backslashes.
struct JsonEscapes {
    static constexpr std::size_t Longest = 6;

    static detail::SixteenBytes marks(detail::SixteenBytes bytes)
    {
        return std::bit_cast<detail::SixteenBytes>((bytes == '"') | (bytes == '\\') | (bytes < 0x20));
    }

    static std::uint32_t plainMarks(const detail::Lanes& lanes) { return lanes.equal('"') | lanes.equal('\\'); }

    static char* put(char* to, char byte)
    {
        switch (byte) {
        case '"':
        case '\\':
            *to++ = '\\';
            *to++ = byte;
            return to;
        case '\n':
            return kd_lib::detail::copyBytes(to, "\\n");
        case '\r':
            return kd_lib::detail::copyBytes(to, "\\r");
        case '\t':
            return kd_lib::detail::copyBytes(to, "\\t");
        default:
            break;
        }
        const auto code = static_cast<unsigned char>(byte);
        if (code >= 0x20) {
            *to++ = byte;
            return to;
        }
        to = kd_lib::detail::copyBytes(to, "\\u00");
        *to++ = hexDigits[code >> 4U];
        *to++ = hexDigits[code & 0xFU];
        return to;
    }
};

struct JsonForm : detail::CommonForm {
    static constexpr char Quote = '"';
    static constexpr char Between = 'T';
    static constexpr detail::ShortWord Null = "null";
    static constexpr detail::ShortWord True = "true";
    static constexpr detail::ShortWord False = "false";

    static constexpr std::size_t Longest = JsonEscapes::Longest;

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        *to++ = '"';
        to = detail::putShort<JsonEscapes, Plain>(to, text);
        *to++ = '"';
        return to;
    }

    static void longText(std::string_view text, OutputBlock& out) { writeJsonText(text, out); }

    static void bytes(std::string_view bytes, OutputBlock& out)
    {
        out.write('"');
        detail::writeBase64(bytes, out);
        out.write('"');
    }

    static char* real(char* to, double value) { return detail::putReal(to, value); }
};

/// A block in memory.
class TextBlock : public OutputBlock {
public:
    TextBlock() : OutputBlock(1024) {}

    std::string Text;

protected:
    void take(std::string_view piece) override { Text += piece; }
};

}  // namespace

void writeJsonText(std::string_view text, OutputBlock& out)
{
    out.write('"');
    detail::writeEscaped<JsonEscapes>(text, out);
    out.write('"');
}

JsonRow::JsonRow(const std::vector<std::string>& names)
{
    for (const std::string& name : names) {
        TextBlock lead;
        lead.write(Leads.empty() ? '{' : ',');
        writeJsonText(name, lead);
        lead.write(':');
        lead.flush();
        Leads.push_back(std::move(lead.Text));
    }
}

void JsonRow::write(const Record& record, OutputBlock& out) const
{
    for (std::size_t i = 0; i < Leads.size(); ++i) {
        out.write(Leads[i]);
        detail::writeCell<JsonForm>(record.Cells[i], out);
    }
    out.write("}\n");
}

}  // namespace kd_lib::exchange

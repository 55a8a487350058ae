#include "escape.h"

namespace kd_tool {

namespace {

/// The number of bytes that follow the first byte of a UTF-8 character. For 0xC2 this is 0: the control characters of
/// the upper half begin with it, and its other followers are not control bytes.
int followers(unsigned char lead)
{
    if (lead >= 0xC3 && lead <= 0xDF) {
        return 1;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 2;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 3 : 0;
}

}  // namespace

bool ControlEscaper::isControl(unsigned char byte)
{
    const bool follower = byte >= 0x80 && byte <= 0xBF;
    if (follower && Continuation > 0) {
        --Continuation;
        return false;
    }
    Continuation = followers(byte);
    if (KeepLines && (byte == '\n' || byte == '\t')) {
        return false;
    }
    return byte < 0x20 || (byte >= 0x7F && byte <= 0x9F);
}

void ControlEscaper::append(std::string& out, std::string_view text)
{
    static constexpr char digits[] = "0123456789abcdef";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isControl(byte)) {
            out += "\\x";
            out += digits[byte >> 4U];
            out += digits[byte & 0xFU];
        } else {
            out += c;
        }
    }
}

std::string oneLine(std::string_view text)
{
    std::string line;
    ControlEscaper(false).append(line, text);
    return line;
}

}  // namespace kd_tool

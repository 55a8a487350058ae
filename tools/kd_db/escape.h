/// \file
/// Control bytes shown as escapes, so that data cannot control a terminal.
#pragma once

#include <string>
#include <string_view>

namespace kd_tool {

/// Writes text with each control byte as `\xNN`. The control characters of the upper half (0x80 to 0x9F) count too,
/// alone or as UTF-8. Such bytes inside other UTF-8 characters stay. A text may be passed in pieces that end anywhere.
class ControlEscaper {
public:
    /// With `keepLines`, line ends and tabs are kept.
    explicit ControlEscaper(bool keepLines) : KeepLines(keepLines) {}

    void append(std::string& out, std::string_view text);

private:
    bool isControl(unsigned char byte);

    bool KeepLines;
    int Continuation = 0;  // bytes that the current UTF-8 character still needs
};

/// One line of `text`: every control byte is an escape.
std::string oneLine(std::string_view text);

}  // namespace kd_tool

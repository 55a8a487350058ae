#include "rejectsfile.h"

#include <utf8proc.h>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

void appendHex(std::string& out, unsigned char byte)
{
    out += hexDigits[byte >> 4U];
    out += hexDigits[byte & 0xFU];
}

/// A text as JSON; bytes that are not UTF-8, which file names may have, become U+FFFD.
void appendString(std::string& out, std::string_view text)
{
    out += '"';
    while (!text.empty()) {
        utf8proc_int32_t codePoint = 0;
        const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
        const utf8proc_ssize_t length = utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
        const auto taken = static_cast<std::size_t>(length > 0 ? length : 1);
        if (length <= 0) {
            out += "\xEF\xBF\xBD";
        } else if (codePoint < 0x20) {
            out += "\\u00";
            appendHex(out, static_cast<unsigned char>(codePoint));
        } else {
            out += codePoint == '"' || codePoint == '\\' ? "\\" : "";
            out += text.substr(0, taken);
        }
        text.remove_prefix(taken);
    }
    out += '"';
}

std::string number(bool present, std::uint64_t value)
{
    return present ? std::to_string(value) : "null";
}

}  // namespace

std::string rejectLine(const exchange::Reject& reject)
{
    const exchange::Place& place = reject.Where;
    std::string line = "{\"file\":";
    appendString(line, place.File);
    line += ",\"record\":" + number(place.Record != 0, place.Record);
    line += ",\"offset\":" + number(place.Offset.has_value(), place.Offset.value_or(0));
    line += ",\"column\":";
    if (place.Column.empty()) {
        line += "null";
    } else {
        appendString(line, place.Column);
    }
    line += ",\"bytes\":\"";
    for (const char c : reject.Bytes) {
        appendHex(line, static_cast<unsigned char>(c));
    }
    line += "\",\"reason\":";
    appendString(line, reject.Reason);
    return line + ",\"action\":\"" + exchange::actionName(reject.Action) + "\"}\n";
}

RejectsFile::RejectsFile(const std::string& path) : File(path) {}

void RejectsFile::write(const exchange::Reject& reject)
{
    const std::string line = rejectLine(reject);
    const std::lock_guard guard(Lock);
    File.write(line);
}

void RejectsFile::finish()
{
    File.commit();
}

}  // namespace kd_tool

/// \file
/// The language byte of .dbf files: the code page that each value means.
#pragma once

#include <cstdint>

namespace kd_lib::formats {

/// The code page of a language byte, by iconv's name or as "Kamenicky", "Mazovia" or "MacGreek"; empty if the byte
/// names none (0: not stated), or its meaning is not known (8E: a Bulgarian page).
constexpr const char* codePageOfLanguageByte(std::uint8_t byte)
{
    switch (byte) {
    case 0x01:
        return "CP437";
    case 0x02:
        return "CP850";
    case 0x03:
        return "CP1252";
    case 0x04:
        return "MACINTOSH";
    case 0x08:
    case 0x17:
    case 0x66:
        return "CP865";
    case 0x09:
    case 0x0B:
    case 0x0D:
    case 0x0F:
    case 0x11:
    case 0x15:
    case 0x18:
    case 0x19:
    case 0x1B:
    case 0x5E:
    case 0x5F:
        return "CP437";
    case 0x0A:
    case 0x0C:
    case 0x0E:
    case 0x10:
    case 0x12:
    case 0x14:
    case 0x16:
    case 0x1A:
    case 0x1D:
    case 0x25:
    case 0x37:
    case 0x60:
    case 0x9C:
        return "CP850";
    case 0x13:
    case 0x56:
    case 0x7B:
        return "CP932";
    case 0x1C:
    case 0x6C:
        return "CP863";
    case 0x1F:
    case 0x22:
    case 0x23:
    case 0x40:
    case 0x64:
    case 0x87:
        return "CP852";
    case 0x20:
    case 0x68:
        return "Kamenicky";
    case 0x24:
        return "CP860";
    case 0x26:
    case 0x65:
        return "CP866";
    case 0x4D:
    case 0x7A:
        return "CP936";
    case 0x4E:
    case 0x79:
        return "CP949";
    case 0x4F:
    case 0x78:
        return "CP950";
    case 0x50:
    case 0x7C:
        return "CP874";
    case 0x57:
    case 0x58:
    case 0x59:
    case 0x61:
    case 0x62:
        return "CP1252";
    case 0x67:
        return "CP861";
    case 0x69:
        return "Mazovia";
    case 0x6A:
    case 0x86:
        return "CP737";
    case 0x6B:
    case 0x88:
        return "CP857";
    case 0x7D:
        return "CP1255";
    case 0x7E:
        return "CP1256";
    case 0x85:
        return "CP862";
    case 0x96:
        return "MAC-CYRILLIC";
    case 0x97:
        return "MAC-CENTRALEUROPE";
    case 0x98:
        return "MacGreek";
    case 0x9B:
    case 0xC8:
        return "CP1250";
    case 0xC9:
        return "CP1251";
    case 0xCA:
        return "CP1254";
    case 0xCB:
        return "CP1253";
    case 0xCC:
        return "CP1257";
    case 0xF0:
        return "UTF-8";
    default:
        return "";
    }
}

}  // namespace kd_lib::formats

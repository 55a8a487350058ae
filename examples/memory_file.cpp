// Listing an xBase memory file.
#include <kd_lib/xbasememory.h>

#include <fstream>
#include <string>

namespace {

/// One entry: a header of 32 bytes, its name from byte 1, and then the value.
std::string entry(const std::string& name, char type, char length, const std::string& value)
{
    std::string bytes(32, '\0');
    bytes.replace(1, name.size(), name);
    bytes[11] = type;
    bytes[16] = length;
    return bytes + value;
}

}  // namespace

int main()
{
    using namespace std::string_literals;
    std::ofstream("settings.mem", std::ios::binary)
        << entry("USER", 'C', 7, "Ingrid\0"s) << entry("SINCE", 'D', 9, "20240305\0"s)
        << entry("ACTIVE", 'L', 2, "T\0"s) << entry("VISITS", 'N', 0, "42@");

    // A line per entry: name, type, length and decimals, value. Numbers show the codes of their
    // digits: 42 is 5250. At the end of the file, the last entry's header is repeated.
    kd_lib::xBaseMemory settings("settings");
    return settings.open() && settings.read() ? 0 : 1;
}

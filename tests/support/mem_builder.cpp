#include "support/mem_builder.h"

namespace kd_test {

std::string memEntry(const std::string& name, char type, unsigned char length, unsigned char decimals,
                     const std::string& value)
{
    std::string bytes(32, '\0');
    bytes.replace(1, name.size(), name);
    bytes[11] = type;
    bytes[16] = static_cast<char>(length);
    bytes[17] = static_cast<char>(decimals);
    return bytes + value;
}

}  // namespace kd_test

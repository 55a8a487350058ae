#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kd_fuzz {

/// The input of a target: the last bytes choose the settings, the others are the content.
class Options {
public:
    Options(const std::uint8_t* data, std::size_t size) : Rest(reinterpret_cast<const char*>(data), size) {}

    /// Takes the last byte; 0 when there is none left.
    unsigned int byte()
    {
        if (Rest.empty()) {
            return 0;
        }
        const auto last = static_cast<unsigned char>(Rest.back());
        Rest.remove_suffix(1);
        return last;
    }

    /// The bytes that have not been taken.
    std::string_view content() const { return Rest; }

private:
    std::string_view Rest;
};

}  // namespace kd_fuzz

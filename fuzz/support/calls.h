#pragma once

#include "support/options.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kd_fuzz {

/// Stops the process as a finding unless `holds`.
inline void require(bool holds, const char* rule)
{
    if (!holds) {
        std::fprintf(stderr, "finding: %s\n", rule);
        std::abort();
    }
}

/// A sequence of calls with their arguments, taken from the front; zeros after its end.
class Calls {
public:
    explicit Calls(std::string_view bytes) : Rest(bytes) {}

    bool more() const { return !Rest.empty(); }

    unsigned int byte()
    {
        if (Rest.empty()) {
            return 0;
        }
        const auto first = static_cast<unsigned char>(Rest.front());
        Rest.remove_prefix(1);
        return first;
    }

    unsigned int below(std::size_t limit) { return byte() % static_cast<unsigned int>(limit); }

    bool flag() { return (byte() & 1U) != 0; }

    int number() { return static_cast<int>(byte()) - 3; }

    /// Up to 40 bytes.
    std::string text()
    {
        const std::size_t size = std::min<std::size_t>(below(41), Rest.size());
        const std::string taken(Rest.substr(0, size));
        Rest.remove_prefix(size);
        return taken;
    }

    template <class Value, std::size_t count>
    const Value& oneOf(const std::array<Value, count>& values)
    {
        return values[below(count)];
    }

private:
    std::string_view Rest;
};

/// An input of the targets that call in sequence: a file's bytes, then the calls, then two bytes with the number of
/// bytes of calls.
struct FileAndCalls {
    FileAndCalls(const std::uint8_t* data, std::size_t size)
    {
        Options options(data, size);
        const std::size_t high = options.byte();
        const std::size_t wanted = high * 256 + options.byte();
        const std::string_view content = options.content();
        const std::size_t count = std::min(wanted, content.size());
        File = content.substr(0, content.size() - count);
        Sequence = content.substr(content.size() - count);
    }

    std::string_view File;
    std::string_view Sequence;
};

}  // namespace kd_fuzz

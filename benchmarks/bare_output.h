/// \file
/// Output of bare code.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kd_bench::bare {

/// Collects text and writes it in blocks.
class TextOutput {
public:
    explicit TextOutput(const std::string& path) : File(std::fopen(path.c_str(), "wb"))
    {
        if (File == nullptr) {
            throw std::runtime_error(path);
        }
        std::setvbuf(File, nullptr, _IONBF, 0);
    }
    ~TextOutput() { std::fclose(File); }
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;

    /// A place for at most `size` bytes.
    char* room(std::size_t size)
    {
        if (Used + size > Block.size()) {
            flush();
            Block.resize(std::max(Block.size(), size));
        }
        return Block.data() + Used;
    }

    void endAt(const char* end) { Used = static_cast<std::size_t>(end - Block.data()); }

    void flush()
    {
        Written += Used;
        if (std::fwrite(Block.data(), 1, Used, File) != Used) {
            throw std::runtime_error("the text cannot be written");
        }
        Used = 0;
    }

    std::uint64_t written() const { return Written; }

private:
    std::FILE* File;
    std::vector<char> Block = std::vector<char>(262144);
    std::size_t Used = 0;
    std::uint64_t Written = 0;
};

inline char* copy(char* to, std::string_view text)
{
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

}  // namespace kd_bench::bare

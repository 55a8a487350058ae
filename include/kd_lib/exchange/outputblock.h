/// \file
/// Output in blocks, written through a pointer.
#pragma once

#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace kd_lib::exchange {

/// Collects text in a block and writes the block when it is full. A derived class defines where the text goes.
///
///     char* to = block.reserve(8);
///     to = std::copy_n("NULL", 4, to);
///     block.advance(to);
class KD_LIB_EXPORT OutputBlock {
public:
    virtual ~OutputBlock();
    OutputBlock(const OutputBlock&) = delete;
    OutputBlock& operator=(const OutputBlock&) = delete;

    /// The end of the text, with room for `count` bytes after it; valid until the next call. May write the text
    /// collected before. Reserve what one value needs: the block becomes as large as the largest `count`.
    char* reserve(std::size_t count)
    {
        if (count > static_cast<std::size_t>(Limit - End)) {
            makeRoom(count);
        }
        return End;
    }

    /// The text now ends at `end`, which lies in the reserved room.
    void advance(char* end) { End = end; }

    /// Appends a text of any length; a long one is written without being copied to the block.
    void write(std::string_view text);

    void write(char c)
    {
        char* const to = reserve(1);
        *to = c;
        advance(to + 1);
    }

    /// Writes the text collected so far.
    void flush();

    /// Bytes written so far.
    std::uint64_t size() const { return HandedOn + static_cast<std::uint64_t>(End - Block.get()); }

protected:
    /// The block has `size` bytes. Nothing is allocated before the first byte.
    explicit OutputBlock(std::size_t size = defaultSize);

    /// Writes the next piece of the output. Its exceptions pass through the operation that called it; the piece is not
    /// written again.
    virtual void take(std::string_view piece) = 0;

    /// Discards the text collected so far.
    void discard() { End = Block.get(); }

private:
    static constexpr std::size_t defaultSize = 524288;

    // exported, because `reserve` is inline
    void makeRoom(std::size_t count);

    std::size_t Size;
    std::uint64_t HandedOn = 0;
    std::unique_ptr<char[]> Block;
    char* End = nullptr;
    char* Limit = nullptr;
};

}  // namespace kd_lib::exchange

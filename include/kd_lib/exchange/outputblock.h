/// \file
/// Output in blocks, written through a pointer.
#pragma once

#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace kd_lib::exchange {

/// Gathers text in a block and hands it on when the block is full. A child class says where it goes.
///
///     char* to = block.reserve(8);
///     to = std::copy_n("NULL", 4, to);
///     block.advance(to);
class KD_LIB_EXPORT OutputBlock {
public:
    virtual ~OutputBlock();
    OutputBlock(const OutputBlock&) = delete;
    OutputBlock& operator=(const OutputBlock&) = delete;

    /// The end of the text, with room for `count` bytes after it; valid until the next call. What was gathered before
    /// may be handed on. Ask for what one value needs: the block becomes as large as the largest `count`.
    char* reserve(std::size_t count)
    {
        if (count > static_cast<std::size_t>(Limit - End)) {
            makeRoom(count);
        }
        return End;
    }

    /// The text goes on up to `end`, which lies in the room reserved.
    void advance(char* end) { End = end; }

    /// Appends a text of any length; a long one passes the block by.
    void write(std::string_view text);

    void write(char c)
    {
        char* const to = reserve(1);
        *to = c;
        advance(to + 1);
    }

    /// Hands on what was gathered.
    void flush();

    /// Bytes written so far.
    std::uint64_t size() const { return HandedOn + static_cast<std::uint64_t>(End - Block.get()); }

protected:
    /// The block has `size` bytes. Nothing is allocated before the first byte.
    explicit OutputBlock(std::size_t size = defaultSize);

    /// Takes the next piece of the output. What it throws comes out of the operation that handed the piece on; the
    /// piece is not handed on again.
    virtual void take(std::string_view piece) = 0;

    /// Forgets what was gathered.
    void discard() { End = Block.get(); }

private:
    static constexpr std::size_t defaultSize = 524288;

    void makeRoom(std::size_t count);

    std::size_t Size;
    std::uint64_t HandedOn = 0;
    std::unique_ptr<char[]> Block;
    char* End = nullptr;
    char* Limit = nullptr;
};

}  // namespace kd_lib::exchange

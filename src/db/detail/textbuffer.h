/// \file
/// A growing output buffer.
#pragma once

#include <kd_lib/detail/bytes.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace kd_lib::detail {

/// Text that grows at its end and is emptied as a whole.
class TextBuffer {
public:
    /// The text so far; valid until the next change.
    std::string_view text() const { return {Bytes.get(), Size}; }

    std::size_t size() const { return Size; }

    /// Empties the text and keeps its memory.
    void clear() { Size = 0; }

    void append(std::string_view more)
    {
        copyBytes(room(more.size()), more);
        Size += more.size();
    }

private:
    friend class TextWriter;

    /// The end of the text, with room for `count` more bytes; valid until the next change.
    char* room(std::size_t count)
    {
        if (count > Capacity - Size) {
            grow(count);
        }
        return Bytes.get() + Size;
    }

    void grow(std::size_t count)
    {
        Capacity = std::max(Size + count, 2 * Size);
        auto larger = std::make_unique_for_overwrite<char[]>(Capacity);
        std::copy_n(Bytes.get(), Size, larger.get());
        Bytes = std::move(larger);
    }

    std::unique_ptr<char[]> Bytes;
    std::size_t Size = 0;
    std::size_t Capacity = 0;
};

/// Appends pieces to a buffer without checking the room for each: the constructor reserves `count` bytes, `reserve`
/// reserves more. The pieces become part of the buffer's text when the writer is destroyed; until then the buffer must
/// not change.
class TextWriter {
public:
    TextWriter(TextBuffer& buffer, std::size_t count)
        : Buffer(buffer), End(buffer.room(count)), Limit(buffer.Bytes.get() + buffer.Capacity)
    {
    }
    ~TextWriter() { Buffer.Size = static_cast<std::size_t>(End - Buffer.Bytes.get()); }
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    /// Reserves room for `count` bytes after what has been put.
    void reserve(std::size_t count)
    {
        if (count > static_cast<std::size_t>(Limit - End)) {
            grow(count);
        }
    }

    void put(char c) { *End++ = c; }
    void put(std::string_view text) { End = copyBytes(End, text); }

    /// Appends the bytes that `copy` writes: it is called with the place to write to and `text`, and returns the end.
    template <class Copy>
    void put(std::string_view text, Copy copy)
    {
        End = copy(End, text);
    }

    /// Removes the last byte, which this writer put.
    void dropLast() { --End; }

private:
    void grow(std::size_t count)
    {
        Buffer.Size = static_cast<std::size_t>(End - Buffer.Bytes.get());
        End = Buffer.room(count);
        Limit = Buffer.Bytes.get() + Buffer.Capacity;
    }

    TextBuffer& Buffer;
    char* End;
    char* Limit;
};

}  // namespace kd_lib::detail

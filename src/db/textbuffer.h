/// \file
/// A growing output buffer.
#pragma once

#include "bytes.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace kd_lib {

/// Text that grows at its end and is emptied as a whole. Room is made first and then written through a
/// pointer, so that the pieces of a literal need no checks of their own.
class TextBuffer {
public:
    /// The text so far; valid until the next change.
    std::string_view text() const { return {Bytes.get(), Size}; }

    std::size_t size() const { return Size; }

    /// Empties the text and keeps its memory.
    void clear() { Size = 0; }

    /// The end of the text, with room for `count` bytes behind it; valid until the next change.
    char* room(std::size_t count) { return roomFrom(Bytes.get() + Size, count); }

    /// The same behind `end`, up to which the room asked for before has been written.
    char* roomFrom(char* end, std::size_t count)
    {
        if (count > static_cast<std::size_t>(Bytes.get() + Room - end)) {
            endAt(end);
            grow(count);
            end = Bytes.get() + Size;
        }
        return end;
    }

    /// The text goes on up to `end`, which lies in the room asked for.
    void endAt(const char* end) { Size = static_cast<std::size_t>(end - Bytes.get()); }

    void append(std::string_view more) { endAt(copyBytes(room(more.size()), more)); }

private:
    void grow(std::size_t count)
    {
        const std::size_t room = std::max(Size + count, 2 * Room);
        auto larger = std::make_unique_for_overwrite<char[]>(room);
        std::copy_n(Bytes.get(), Size, larger.get());
        Bytes = std::move(larger);
        Room = room;
    }

    std::unique_ptr<char[]> Bytes;
    std::size_t Size = 0;
    std::size_t Room = 0;
};

}  // namespace kd_lib

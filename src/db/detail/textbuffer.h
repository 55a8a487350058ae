/// \file
/// A growing output buffer.
#pragma once

#include "bytes.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace kd_lib::detail {

/// Text that grows at its end and is emptied as a whole. Room is made first and then written through a
/// pointer, so that the pieces of a literal need no checks of their own.
class TextBuffer {
public:
    /// The text so far; valid until the next change.
    std::string_view text() const { return {Bytes.get(), size()}; }

    std::size_t size() const { return static_cast<std::size_t>(End - Bytes.get()); }

    /// Empties the text and keeps its memory.
    void clear() { End = Bytes.get(); }

    /// The end of the text, with room for `count` bytes behind it; valid until the next change.
    char* room(std::size_t count) { return roomFrom(End, count); }

    /// The same behind `end`, up to which the room asked for before has been written.
    char* roomFrom(char* end, std::size_t count)
    {
        if (count > static_cast<std::size_t>(Limit - end)) {
            endAt(end);
            grow(count);
            end = End;
        }
        return end;
    }

    /// The text goes on up to `end`, which lies in the room asked for.
    void endAt(char* end) { End = end; }

    void append(std::string_view more) { endAt(copyBytes(room(more.size()), more)); }

private:
    void grow(std::size_t count)
    {
        const std::size_t old = size();
        const std::size_t room = std::max(old + count, 2 * old);
        auto larger = std::make_unique_for_overwrite<char[]>(room);
        std::copy_n(Bytes.get(), old, larger.get());
        Bytes = std::move(larger);
        End = Bytes.get() + old;
        Limit = Bytes.get() + room;
    }

    std::unique_ptr<char[]> Bytes;
    char* End = nullptr;
    char* Limit = nullptr;
};

}  // namespace kd_lib::detail

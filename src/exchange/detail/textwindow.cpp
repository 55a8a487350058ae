#include "textwindow.h"

#include <algorithm>
#include <cstring>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t usualCapacity = 262144;
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

}  // namespace

TextWindow::TextWindow(const std::string& path, const CodePage* encoding) : File(path), Encoding(encoding)
{
    Capacity = usualCapacity;
    Buffer = std::make_unique_for_overwrite<char[]>(Capacity + blockSize);
    open();
}

void TextWindow::open()
{
    if (Encoding != nullptr) {
        Converted = std::make_unique<ConvertedInput>(File, *Encoding);
    }
    Begin = End = Buffer.get();
    Offset = 0;
    AtEnd = false;
    fill(utf8Mark.size());
    if (std::string_view(Begin, static_cast<std::size_t>(End - Begin)).starts_with(utf8Mark)) {
        Begin += utf8Mark.size();
    }
}

void TextWindow::restart()
{
    File.seek(0);
    open();
}

/// Moves the bytes from `from` on to the beginning of a buffer that has room for `size` bytes.
void TextWindow::reserve(std::size_t size, const char* from)
{
    const auto kept = static_cast<std::size_t>(End - from);
    Offset = offsetOf(from);
    if (size > Capacity) {
        auto larger = std::make_unique_for_overwrite<char[]>(size + blockSize);
        std::memcpy(larger.get(), from, kept);
        Buffer = std::move(larger);
        Capacity = size;
    } else {
        std::memmove(Buffer.get(), from, kept);
    }
    Begin = Buffer.get();
    End = Begin + kept;
}

std::size_t TextWindow::readSome()
{
    char* const to = Buffer.get() + (End - Buffer.get());
    const std::size_t room = Capacity - static_cast<std::size_t>(End - Buffer.get());
    const std::size_t got = Converted ? Converted->readSome(to, room) : File.readSome(to, room);
    End += got;
    AtEnd = got == 0;
    std::memset(to + got, 0, blockSize);
    return got;
}

void TextWindow::more(const char* from)
{
    const auto kept = static_cast<std::size_t>(End - from);
    reserve(std::max(usualCapacity, 2 * kept + blockSize), from);  // so there is always room to convert into
    std::size_t got = readSome();
    while (got < kept && !AtEnd) {
        got += readSome();
    }
}

void TextWindow::fill(std::size_t size)
{
    while (static_cast<std::size_t>(End - Begin) < size && !AtEnd) {
        readSome();
    }
}

}  // namespace kd_lib::exchange::detail

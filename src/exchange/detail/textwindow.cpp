#include "textwindow.h"

#include "utf8.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t usualCapacity = 262144;

/// Whether every other byte of the beginning is zero, as in UTF-16 of Latin letters.
bool alternatesWithZeros(std::string_view text, std::size_t first)
{
    constexpr std::size_t looked = 16;
    text = text.substr(0, std::min(looked, text.size() / 2 * 2));
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] == '\0') != (i % 2 == first)) {
            return false;
        }
    }
    return text.size() >= 4;
}

}  // namespace

TextWindow::TextWindow(const std::string& path, const CodePage* encoding, std::stop_token stop)
    : File(path, std::move(stop)), Encoding(encoding)
{
    allocate(usualCapacity);
    open();
}

void TextWindow::allocate(std::size_t size)
{
    Buffer = std::make_unique_for_overwrite<char[]>(size + 2 * blockSize);
    std::memset(Buffer.get(), 0, blockSize);
    Capacity = size;
}

void TextWindow::open()
{
    if (Encoding != nullptr) {
        Converted = std::make_unique<ConvertedInput>(File, *Encoding);
    }
    Begin = End = first();
    Offset = 0;
    AtEnd = false;
    fill(blockSize);  // bytes that reveal the encoding
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
        const std::unique_ptr<char[]> smaller = std::move(Buffer);
        allocate(size);
        std::memcpy(first(), from, kept);
    } else {
        std::memmove(first(), from, kept);
    }
    Begin = first();
    End = Begin + kept;
}

std::size_t TextWindow::readSome()
{
    const auto used = static_cast<std::size_t>(End - first());
    char* const to = first() + used;
    const std::size_t room = Capacity - used;
    const std::size_t got = Converted ? Converted->readSome(to, room) : File.readSome(to, room);
    End += got;
    AtEnd = got == 0;
    std::memset(to + got, 0, blockSize);
    return got;
}

void TextWindow::more(const char* from)
{
    const auto kept = static_cast<std::size_t>(End - from);
    reserve(std::max(usualCapacity, 2 * kept + blockSize), from);  // so that there is always room for the conversion
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

const char* wideEncoding(const TextWindow& window)
{
    const std::string_view text(window.begin(), static_cast<std::size_t>(window.end() - window.begin()));
    if (text.starts_with(std::string_view("\xFF\xFE\0\0", 4)) ||
        text.starts_with(std::string_view("\0\0\xFE\xFF", 4))) {
        return "UTF-32";
    }
    const bool sixteen = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") || alternatesWithZeros(text, 1) ||
                         alternatesWithZeros(text, 0);
    return sixteen ? "UTF-16" : nullptr;
}

}  // namespace kd_lib::exchange::detail

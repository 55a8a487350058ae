#include "detail/textbuffer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using kd_lib::detail::TextBuffer;
using kd_lib::detail::TextWriter;

TEST(TextBuffer, IsEmptyAtFirst)
{
    const TextBuffer buffer;
    EXPECT_EQ(buffer.text(), "");
    EXPECT_EQ(buffer.size(), 0U);
}

TEST(TextBuffer, GrowsAndKeepsItsText)
{
    TextBuffer buffer;
    std::string expected;
    for (std::size_t size = 0; size < 300; ++size) {
        const std::string piece(size, static_cast<char>('a' + size % 26));
        buffer.append(piece);
        expected += piece;
        ASSERT_EQ(buffer.text(), expected);
    }
}

TEST(TextBuffer, ClearKeepsTheMemory)
{
    TextBuffer buffer;
    buffer.append(std::string(1000, 'x'));
    const char* const before = buffer.text().data();
    buffer.clear();
    EXPECT_EQ(buffer.text(), "");
    buffer.append(std::string(1000, 'y'));
    EXPECT_EQ(buffer.text().data(), before);
    EXPECT_EQ(buffer.text(), std::string(1000, 'y'));
}

TEST(TextWriter, ItsPiecesFollowTheText)
{
    TextBuffer buffer;
    buffer.append("start ");
    {
        TextWriter writer(buffer, 10);
        writer.put('1');
        writer.put("23,");
        writer.put("abc", [](char* to, std::string_view text) {
            for (const char c : text) {
                *to++ = static_cast<char>(c - 'a' + 'A');
            }
            return to;
        });
        writer.put(',');
        writer.dropLast();
    }
    EXPECT_EQ(buffer.text(), "start 123,ABC");
}

TEST(TextWriter, TextWrittenBeforeAnExceptionStays)
{
    TextBuffer buffer;
    try {
        TextWriter writer(buffer, 4);
        writer.put("ab");
        throw std::runtime_error("stop");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(buffer.text(), "ab");
    }
}

TEST(TextWriter, ReservesMoreWhileItWrites)
{
    TextBuffer buffer;
    std::string expected;
    {
        TextWriter writer(buffer, 0);
        for (std::size_t size = 0; size < 300; ++size) {
            const std::string piece(size, static_cast<char>('a' + size % 26));
            writer.reserve(size);
            writer.put(piece);
            expected += piece;
        }
    }
    EXPECT_EQ(buffer.text(), expected);
}

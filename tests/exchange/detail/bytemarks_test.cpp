#include "detail/bytemarks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>

using namespace kd_lib::exchange::detail;

namespace {

constexpr MarkBytes marks = {{',', '"', '\n', '\r'}};

std::uint64_t expectedMarks(const std::string& block)
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
        bits |= std::uint64_t{std::string(",\"\n\r").find(block[i]) != std::string::npos} << i;
    }
    return bits;
}

template <class Finder>
void expectAllFound()
{
    const Finder find(marks);
    std::srand(1);
    for (int round = 0; round < 2000; ++round) {
        std::string block(blockSize, 'a');
        bool high = false;
        for (char& c : block) {
            // Operations on whole words could be wrong for bytes close to the marks and above 127.
            c = round % 4 == 0 ? static_cast<char>(std::rand() % 256)
                               : std::string_view(",\"\n\r-!\x0B\x0C#+\xAC\xA2\x8A\x8D\0\x01",
                                                  16)[static_cast<std::size_t>(std::rand() % 16)];
            high = high || static_cast<unsigned char>(c) >= 128;
        }
        const BlockMarks found = find(block.data());
        ASSERT_EQ(found.Marks, expectedMarks(block)) << round;
        ASSERT_EQ(found.High != 0, high) << round;
    }
}

TEST(ByteMarks, PortableFinder)
{
    expectAllFound<PortableMarks>();
}

TEST(ByteMarks, FinderOfThisProcessor)
{
    expectAllFound<Marks>();
}

TEST(ByteMarks, HighBytesAtEveryPlace)
{
    for (std::size_t at = 0; at < blockSize; ++at) {
        std::string block(blockSize, '\x7F');
        block[at] = '\x80';
        EXPECT_NE(PortableMarks(marks)(block.data()).High, 0U);
        EXPECT_NE(Marks(marks)(block.data()).High, 0U);
    }
}

TEST(ByteMarks, AFinderKeepsToItsOwnMemory)
{
    struct Room {
        alignas(Marks) unsigned char Finder[sizeof(Marks)];
        unsigned char After[64];
    } room = {};
    new (room.Finder) Marks(marks);
    EXPECT_EQ(std::ranges::count(room.After, 0), 64);
}

}  // namespace

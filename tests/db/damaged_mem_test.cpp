// Memory files with one kind of damage per test: the listing always ends, and shows no bytes except those of the file
// and of the two zeroed buffers.
#include "support/mem_builder.h"
#include "support/memory_listing.h"
#include "support/special_file_builder.h"
#include "support/table_builder.h"

#include <kd_lib/xbasememory.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

using kd_lib::xBaseMemory;
using kd_test::listing;
using kd_test::listingOf;
using kd_test::memEntry;
using kd_test::Opened;
using kd_test::ScopedDirectory;

namespace {

/// Text, number and date: 38, 36 and 40 bytes.
const std::string validMemory = memEntry("TEXT", 'C', 6, 1, std::string("abcde\0", 6)) +
                                memEntry("NUM", 'N', 8, 2, "1.5@") + memEntry("DAY", 'D', 8, 0, "20240305");

const std::string textLine = "TEXT C 6.1  abcde|\n";
const std::string numberLine = "NUM N 8.2 4953|\n";
const std::string dayLine = "DAY D 8.0  20240305|\n";

/// `under`, with its first `count` bytes replaced by those of `over`.
std::string laidOver(const std::string& over, std::size_t count, std::string under)
{
    return under.replace(0, count, over, 0, count);
}

/// The line of a header without its value: name, type, length and decimals.
std::string lead(const std::string& header)
{
    return std::string(header.substr(1, 10).c_str()) + ' ' + header[11] + ' ' +
           std::to_string(static_cast<unsigned char>(header[16])) + '.' +
           std::to_string(static_cast<unsigned char>(header[17])) + ' ';
}

std::string header(std::size_t position)
{
    return validMemory.substr(position, 32);
}

}  // namespace

TEST(DamagedMem, UndamagedFileIsListedWithItsLastLineRepeated)
{
    EXPECT_EQ(114U, validMemory.size());
    EXPECT_EQ(textLine + numberLine + dayLine + dayLine, listingOf(validMemory));
}

TEST(DamagedMem, CutAtEveryByteOfTheFirstHeader)
{
    for (std::size_t size = 0; size < 32; ++size) {
        const std::string padded = laidOver(validMemory, size, std::string(32, '\0'));
        const std::string value = padded[11] == 'C' ? " " : "";
        EXPECT_EQ(lead(padded) + value + "|\n", listingOf(validMemory.substr(0, size))) << size;
    }
}

TEST(DamagedMem, CutAtEveryByteOfATextValue)
{
    for (std::size_t size = 32; size < 38; ++size) {
        EXPECT_EQ("TEXT C 6.1  " + std::string("abcde").substr(0, size - 32) + "|\n",
                  listingOf(validMemory.substr(0, size)))
            << size;
    }
}

TEST(DamagedMem, CutAtEveryByteOfTheSecondHeaderMixesItWithTheFirst)
{
    for (std::size_t size = 38; size < 70; ++size) {
        const std::string mixed = laidOver(header(38), size - 38, header(0));
        const std::string value = mixed[11] == 'C' ? " abcde" : "";
        EXPECT_EQ(textLine + lead(mixed) + value + "|\n", listingOf(validMemory.substr(0, size))) << size;
    }
}

TEST(DamagedMem, CutAtEveryByteOfANumber)
{
    const char* const digits[] = {"", "49", "49", "4953"};
    for (std::size_t size = 70; size < 74; ++size) {
        EXPECT_EQ(textLine + "NUM N 8.2 " + digits[size - 70] + "|\n", listingOf(validMemory.substr(0, size))) << size;
    }
    EXPECT_EQ(textLine + numberLine + "NUM N 8.2 |\n", listingOf(validMemory.substr(0, 74)));
}

TEST(DamagedMem, CutAtEveryByteOfTheThirdHeaderMixesItWithTheSecond)
{
    for (std::size_t size = 74; size < 106; ++size) {
        const std::string mixed = laidOver(header(74), size - 74, header(38));
        const std::string value = mixed[11] == 'D' ? " abcde" : "";
        EXPECT_EQ(textLine + numberLine + lead(mixed) + value + "|\n", listingOf(validMemory.substr(0, size))) << size;
    }
}

TEST(DamagedMem, CutAtEveryByteOfADateShowsTheRestOfTheText)
{
    for (std::size_t size = 106; size < 114; ++size) {
        const std::string buffer = laidOver("20240305", size - 106, std::string("abcde\0\0\0", 8));
        EXPECT_EQ(textLine + numberLine + "DAY D 8.0  " + std::string(buffer.c_str()) + "|\n",
                  listingOf(validMemory.substr(0, size)))
            << size;
    }
}

TEST(DamagedMem, FileOfOneByteIsOneLineOfAnEntryOfZeroBytes)
{
    const std::string zeroEntry(" \0 0.0 |\n", 9);
    EXPECT_EQ(zeroEntry, listingOf("\x1A"));
    EXPECT_EQ(zeroEntry, listingOf("A"));
}

TEST(DamagedMem, EndMarkAfterTheEntriesIsTheFirstByteOfTheLastLinesEntry)
{
    EXPECT_EQ(textLine + numberLine + dayLine + dayLine, listingOf(validMemory + "\x1A"));
}

TEST(DamagedMem, LengthBeyondTheFileShowsTheExistingBytes)
{
    EXPECT_EQ("A C 255.0  abc|\n", listingOf(memEntry("A", 'C', 255, 0, "abc")));
}

TEST(DamagedMem, LengthTooSmallTakesTheRestOfAValueAsAnEntry)
{
    const std::string bytes = memEntry("A", 'C', 2, 0, "abXYZ");
    EXPECT_EQ("A C 2.0  ab|\n" + lead(laidOver("XYZ", 3, memEntry("A", 'C', 2, 0, ""))) + " ab|\n", listingOf(bytes));
}

TEST(DamagedMem, LengthTooLargeTakesTheNextEntryAsAValue)
{
    EXPECT_EQ("TEXT C 255.1  abcde|\n", listingOf(kd_test::withByte(validMemory, 16, 255)));
}

TEST(DamagedMem, EveryTypeByteEndsItsListing)
{
    Opened<xBaseMemory> file("");
    for (unsigned int byte = 0; byte < 256; ++byte) {
        file.reopen(kd_test::withByte(validMemory, 11, byte));
        const std::string list = listing(file.table);
        SCOPED_TRACE(byte);
        EXPECT_EQ(0U, list.find(std::string("TEXT ") + static_cast<char>(byte) + " 6.1 "));
        EXPECT_EQ("|\n", list.substr(list.size() - 2));
    }
}

TEST(DamagedMem, EveryByteInANameButZeroIsShown)
{
    Opened<xBaseMemory> file("");
    for (unsigned int byte = 1; byte < 256; ++byte) {
        file.reopen(kd_test::withByte(validMemory, 2, byte));
        const std::string name = std::string("T").append(1, static_cast<char>(byte)).append("XT");
        EXPECT_EQ(name + " C 6.1  abcde|\n" + numberLine + dayLine + dayLine, listing(file.table)) << byte;
    }
    file.reopen(kd_test::withByte(validMemory, 2, 0));
    EXPECT_EQ("T C 6.1  abcde|\n" + numberLine + dayLine + dayLine, listing(file.table));
}

TEST(DamagedMem, EveryByteInATextIsShownUpToAZero)
{
    Opened<xBaseMemory> file("");
    for (unsigned int byte = 0; byte < 256; ++byte) {
        file.reopen(kd_test::withByte(validMemory, 34, byte));
        const std::string text = byte == 0 ? "ab" : std::string("ab").append(1, static_cast<char>(byte)).append("de");
        EXPECT_EQ("TEXT C 6.1  " + text + "|\n" + numberLine + dayLine + dayLine, listing(file.table)) << byte;
    }
}

TEST(DamagedMem, LongestTextsFullOfAnyByteStayInTheirBuffer)
{
    Opened<xBaseMemory> file("");
    for (unsigned int byte = 1; byte < 256; ++byte) {
        const std::string text(255, static_cast<char>(byte));
        file.reopen(memEntry("A", 'C', 255, 0, text));
        EXPECT_EQ("A C 255.0  " + text + "|\nA C 255.0  " + text + "|\n", listing(file.table)) << byte;
    }
}

TEST(DamagedMem, FileOfZeroBytesIsALinePerHeader)
{
    const std::string zeroEntry(" \0 0.0 |\n", 9);
    EXPECT_EQ(zeroEntry + zeroEntry + zeroEntry, listingOf(std::string(64, '\0')));
    EXPECT_EQ(zeroEntry + zeroEntry, listingOf(std::string(63, '\0')));
}

TEST(DamagedMem, NumberWithoutAnEndTakesAMegabyte)
{
    const std::string list = listingOf(memEntry("N", 'N', 8, 0, std::string(1000000, 'x') + "7"));
    EXPECT_EQ("N N 8.0 55|\n", list);
}

// Files that are not memory files

TEST(DamagedMem, DirectoryGivesOneLineOfAnEntryOfZeroBytes)
{
    const ScopedDirectory directory;
    kd_test::makeDirectory(directory, "sample.mem");
    xBaseMemory memory;
    ASSERT_TRUE(kd_test::openQuietly(memory, directory));
    EXPECT_EQ(std::string(" \0 0.0 |\n", 9), listing(memory));
}

TEST(DamagedMem, PipeThatCannotBeRewoundPrintsNothing)
{
    const ScopedDirectory directory;
    kd_test::Fifo pipe(directory, "sample.mem", validMemory);
    xBaseMemory memory;
    ASSERT_TRUE(kd_test::openQuietly(memory, directory));
    pipe.end();
    EXPECT_EQ("", listing(memory));
    EXPECT_TRUE(memory.File.fail());
}

TEST(DamagedMem, EndlessZeroBytesAreListedAsLongAsAnyoneReads)
{
    const ScopedDirectory directory;
    kd_test::makeEndless(directory, "sample.mem");
    int out[2];
    ASSERT_EQ(0, ::pipe(out));
    // Otherwise the child would write buffered text a second time.
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t child = ::fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
        ::signal(SIGPIPE, SIG_DFL);
        ::dup2(out[1], STDOUT_FILENO);
        ::close(out[0]);
        ::close(out[1]);
        xBaseMemory memory;
        memory.Path = directory.path();
        memory.open("sample");
        memory.read();
        ::_exit(0);
    }
    ::close(out[1]);
    std::string printed;
    char piece[4096];
    while (printed.size() < 100000) {
        const ssize_t got = ::read(out[0], piece, sizeof piece);
        ASSERT_GT(got, 0);
        printed.append(piece, static_cast<std::size_t>(got));
    }
    // The closed pipe ends the listing.
    ::close(out[0]);
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(SIGPIPE, WTERMSIG(status));
    std::string expected = "Table: " + directory.file("sample.mem") + "\n";
    while (expected.size() < 100000) {
        expected += std::string(" \0 0.0 |\n", 9);
    }
    EXPECT_TRUE(expected.substr(0, 100000) == printed.substr(0, 100000));
}

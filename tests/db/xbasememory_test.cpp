#include "support/mem_builder.h"
#include "support/memory_listing.h"
#include "support/table_builder.h"

#include <kd_lib/xbasememory.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using kd_lib::xBaseMemory;
using kd_test::captured;
using kd_test::Console;
using kd_test::listing;
using kd_test::listingOf;
using kd_test::memEntry;
using kd_test::Opened;

namespace {

const std::string oneText = memEntry("NAME", 'C', 6, 0, std::string("ABCDE\0", 6));

}  // namespace

TEST(xBaseMemory, DefaultsOfTheConstructorWithoutAName)
{
    const xBaseMemory memory;
    EXPECT_EQ("", memory.Name);
    EXPECT_EQ("mem", memory.Extension);
    EXPECT_TRUE(memory.Binary);
    EXPECT_EQ(0, memory.RecordEnd);
    EXPECT_EQ(0U, memory.RecordLength);
    EXPECT_EQ(0U, memory.HeaderLength);
    EXPECT_EQ(0U, memory.RecordCount);
}

TEST(xBaseMemory, NameConstructorSetsTheNameAndTheSameDefaults)
{
    const xBaseMemory memory("settings");
    EXPECT_EQ("settings", memory.Name);
    EXPECT_EQ("mem", memory.Extension);
    EXPECT_TRUE(memory.Binary);
    EXPECT_EQ(0, memory.RecordEnd);
}

TEST(xBaseMemory, ReadAndWriteAreNotVirtual)
{
    EXPECT_EQ(0U, kd_test::slotOf(&xBaseMemory::read));
    EXPECT_EQ(0U, kd_test::slotOf(&xBaseMemory::write));
    static_assert(std::is_base_of_v<kd_lib::xBaseTable, xBaseMemory>);
    static_assert(sizeof(xBaseMemory) == sizeof(kd_lib::xBaseTable));
}

TEST(xBaseMemory, OpenAppendsTheExtensionMem)
{
    const kd_test::ScopedDirectory directory;
    directory.write("settings.mem", "");
    xBaseMemory memory("settings");
    memory.Path = directory.path();
    bool opened = false;
    const Console console = captured([&] { opened = memory.open(); });
    EXPECT_TRUE(opened);
    EXPECT_EQ("Table: " + directory.path() + "/settings.mem\n", console.out);
}

TEST(xBaseMemoryRead, ClosedFileReturnsFalseAndPrintsNothing)
{
    xBaseMemory memory;
    bool read = true;
    const Console console = captured([&] { read = memory.read(); });
    EXPECT_FALSE(read);
    EXPECT_EQ("", console.out + console.err);
}

TEST(xBaseMemoryRead, OneTextEntryGivesItsLineAndALastLineThatRepeatsIt)
{
    EXPECT_EQ("NAME C 6.0  ABCDE|\n"
              "NAME C 6.0  ABCDE|\n",
              listingOf(oneText));
}

TEST(xBaseMemoryRead, TextOfFiveIsShownWholeBecauseTheBufferStartsAsZeroBytes)
{
    EXPECT_EQ("NAME C 5.0  ABCDE|\n"
              "NAME C 5.0  ABCDE|\n",
              listingOf(memEntry("NAME", 'C', 5, 0, "ABCDE")));
}

TEST(xBaseMemoryRead, DigitsOfANumberAreShownAsTheirCodes)
{
    EXPECT_EQ("TOTAL N 8.2 4950|\n"
              "TOTAL N 8.2 |\n",
              listingOf(memEntry("TOTAL", 'N', 8, 2, "12@")));
}

TEST(xBaseMemoryRead, EveryDigitHasItsCodeAndNothingElseIsShown)
{
    std::string value;
    for (unsigned int byte = 0; byte < 256; ++byte) {
        if (byte != '@') {
            value += static_cast<char>(byte);
        }
    }
    EXPECT_EQ("N N 0.0 48495051525354555657|\n"
              "N N 0.0 |\n",
              listingOf(memEntry("N", 'N', 0, 0, value + "@")));
}

TEST(xBaseMemoryRead, NumberEndsAtTheFirstAtSignWhateverItsLength)
{
    EXPECT_EQ("A N 1.0 4950|\n"
              "NAME C 6.0  ABCDE|\n"
              "NAME C 6.0  ABCDE|\n",
              listingOf(memEntry("A", 'N', 1, 0, "1x2@") + oneText));
}

TEST(xBaseMemoryRead, NumberWithoutAnAtSignTakesTheRestOfTheFile)
{
    EXPECT_EQ("A N 3.0 495051|\n", listingOf(memEntry("A", 'N', 3, 0, "123")));
}

TEST(xBaseMemoryRead, WritesToStandardOutputDirectly)
{
    Opened<xBaseMemory> file(oneText);
    const Console console = captured([&] { EXPECT_TRUE(file.table.read()); });
    EXPECT_EQ("NAME C 6.0  ABCDE|\nNAME C 6.0  ABCDE|\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(xBaseMemoryRead, DatesAndLogicalValuesAreReadAsTexts)
{
    EXPECT_EQ("BORN D 8.0  20240305|\n"
              "FLAG L 2.0  T|\n"
              "FLAG L 2.0  T|\n",
              listingOf(memEntry("BORN", 'D', 8, 0, "20240305") + memEntry("FLAG", 'L', 2, 0, std::string("T\0", 2))));
}

TEST(xBaseMemoryRead, TextWithoutAZeroByteIsFollowedByTheRestOfALongerOne)
{
    EXPECT_EQ("A C 8.0  abcdefgh|\n"
              "B C 3.0  XYZdefgh|\n"
              "B C 3.0  XYZdefgh|\n",
              listingOf(memEntry("A", 'C', 8, 0, "abcdefgh") + memEntry("B", 'C', 3, 0, "XYZ")));
}

TEST(xBaseMemoryRead, TextEndsAtItsFirstZeroByte)
{
    EXPECT_EQ("A C 5.0  ab|\n"
              "A C 5.0  ab|\n",
              listingOf(memEntry("A", 'C', 5, 0, std::string("ab\0cd", 5))));
}

TEST(xBaseMemoryRead, TextOf255BytesIsShownWhole)
{
    const std::string text = kd_test::lettersOf(255);
    EXPECT_EQ("A C 255.255  " + text + "|\nB C 255.0  " + text + "|\nB C 255.0  " + text + "|\n",
              listingOf(memEntry("A", 'C', 255, 255, text) + memEntry("B", 'C', 255, 0, text)));
}

TEST(xBaseMemoryRead, TextOfLengthZeroShowsTheBuffer)
{
    EXPECT_EQ("A C 0.0  |\n"
              "NAME C 6.0  ABCDE|\n"
              "B C 0.0  ABCDE|\n"
              "B C 0.0  ABCDE|\n",
              listingOf(memEntry("A", 'C', 0, 0, "") + oneText + memEntry("B", 'C', 0, 0, "")));
}

TEST(xBaseMemoryRead, EveryOtherTypeByteHasNoValue)
{
    Opened<xBaseMemory> file("");
    const std::string known = "CDLN";
    for (unsigned int type = 0; type < 256; ++type) {
        const char letter = static_cast<char>(type);
        if (known.find(letter) != std::string::npos) {
            continue;
        }
        const std::string lead = std::string("A ") + letter + " 6.1 |\n";
        file.reopen(memEntry("A", letter, 6, 1, "") + oneText);
        EXPECT_EQ(lead + "NAME C 6.0  ABCDE|\nNAME C 6.0  ABCDE|\n", listing(file.table)) << type;
    }
}

TEST(xBaseMemoryRead, TypeLetterIsWrittenAsOneRawByte)
{
    const std::string line = listingOf(memEntry("A", '\xC3', 1, 0, ""));
    EXPECT_EQ("A \xC3 1.0 |\nA \xC3 1.0 |\n", line);
}

TEST(xBaseMemoryRead, FirstByteOfAnEntryIsNotShown)
{
    EXPECT_EQ("NAME C 6.0  ABCDE|\n"
              "NAME C 6.0  ABCDE|\n",
              listingOf(kd_test::withByte(oneText, 0, 'x')));
}

TEST(xBaseMemoryRead, UnreadHeaderBytesDoNotMatter)
{
    std::string bytes = oneText;
    bytes.replace(12, 4, "abcd");
    bytes.replace(18, 14, "efghijklmnopqr");
    EXPECT_EQ(listingOf(oneText), listingOf(bytes));
}

TEST(xBaseMemoryRead, EmptyFileGivesOneLineOfAnEntryOfZeroBytes)
{
    EXPECT_EQ(std::string(" \0 0.0 |\n", 9), listingOf(""));
}

TEST(xBaseMemoryRead, EmptyNameGivesALineThatBeginsWithItsBlank)
{
    EXPECT_EQ(" X 0.0 |\n X 0.0 |\n", listingOf(memEntry("", 'X', 0, 0, "")));
}

TEST(xBaseMemoryRead, NameOfTenBytesWithoutAZeroByteEndsBeforeTheType)
{
    EXPECT_EQ("ABCDEFGHIJ X 7.0 |\n"
              "ABCDEFGHIJ X 7.0 |\n",
              listingOf(memEntry("ABCDEFGHIJ", 'X', 7, 0, "")));
}

TEST(xBaseMemoryRead, SecondReadListsTheFileAgain)
{
    Opened<xBaseMemory> file(oneText);
    const std::string first = listing(file.table);
    EXPECT_EQ(first, listing(file.table));
    EXPECT_EQ("NAME C 6.0  ABCDE|\nNAME C 6.0  ABCDE|\n", first);
}

TEST(xBaseMemoryRead, ClearsTheFieldList)
{
    Opened<xBaseMemory> file(oneText);
    kd_test::addColumn(file.table, "left", 0, 1);
    listing(file.table);
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(xBaseMemoryRead, LeavesTheFileOpen)
{
    Opened<xBaseMemory> file(oneText);
    listing(file.table);
    EXPECT_TRUE(file.table.is_open());
}

TEST(xBaseMemoryWrite, OfAClosedFileDoesNothingAndReturnsTrue)
{
    xBaseMemory memory("settings");
    bool written = false;
    const Console console = captured([&] { written = memory.write(); });
    EXPECT_TRUE(written);
    EXPECT_EQ("", console.out + console.err);
    EXPECT_EQ("settings", memory.Name);
}

TEST(xBaseMemoryWrite, OfAnOpenFileDoesNothingAndReturnsTrue)
{
    Opened<xBaseMemory> file(oneText);
    file.table.File.seekg(7);
    EXPECT_TRUE(file.table.write());
    EXPECT_EQ(7, static_cast<int>(file.table.File.tellg()));
    file.table.close();
    EXPECT_EQ(oneText, kd_test::readFile(file.directory() + "/sample.mem"));
}

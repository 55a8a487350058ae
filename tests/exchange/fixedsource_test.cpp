#include "support/scoped_directory.h"
#include "support/shown.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/fixedsource.h>

#include <gtest/gtest.h>

#include <string>

using kd_lib::exchange::DeletedRecords;
using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::Error;
using kd_lib::exchange::FixedSource;
using kd_lib::exchange::OptionError;
using kd_lib::exchange::SourceOptions;
using kd_test::errorOf;
using kd_test::ScopedDirectory;
using kd_test::shown;
using kd_test::shownColumns;
using kd_test::shownNotes;
using kd_test::shownRecords;

namespace {

const std::string replacement = "\xEF\xBF\xBD";
const std::string twoColumns = "name:1-4,town:6-9";

class Text {
public:
    explicit Text(const std::string& bytes, const SourceOptions& options)
        : File(Folder.write("t.txt", bytes)), source(File, options)
    {
    }

    ScopedDirectory Folder;
    std::string File;
    FixedSource source;
};

std::string recordsOf(const std::string& bytes, const SourceOptions& options)
{
    Text text(bytes, options);
    return shownRecords(text.source);
}

std::string notesOf(const std::string& bytes, const SourceOptions& options)
{
    Text text(bytes, options);
    shownRecords(text.source);
    return shownNotes(text.source);
}

/// The error without the file's folder.
std::string failureOf(const std::string& columns, const std::string& bytes = "x\n")
{
    const std::string line = errorOf([&] { recordsOf(bytes, {.FixedColumns = columns}); });
    return line.empty() ? line : line.substr(line.find("t.txt"));
}

TEST(FixedSource, RangesOfBytes)
{
    Text text("Ann  Rome\nBob  Oslo\n", {.FixedColumns = twoColumns});
    EXPECT_EQ(shownColumns(text.source), "name:text town:text");
    EXPECT_EQ(text.source.columns()[1].Width, 4U);
    EXPECT_EQ(shownRecords(text.source), "1 <Ann> <Rome>\n2 <Bob> <Oslo>\n");
    EXPECT_EQ(text.source.recordsRead(), 2U);
    EXPECT_EQ(shownNotes(text.source), "");
    EXPECT_EQ(recordsOf("abcdef\n", {.FixedColumns = " b : 2 - 3 ,flag:6, all:1-6"}), "1 <bc> <f> <abcdef>\n");
}

TEST(FixedSource, TheClassicList)
{
    Text text("0001  oslo  -3.5  nw 4\n", {.FixedColumns = "6|12;18"});
    EXPECT_EQ(shownColumns(text.source), "field#0:text field#1:text field#2:text");
    EXPECT_EQ(shownRecords(text.source), "1 <oslo> <-3.5> <nw 4>\n");
    EXPECT_EQ(text.source.columns()[2].Width, 6U);
    EXPECT_EQ(recordsOf("0001  oslo  -3.5\n", {.FixedColumns = "6:12"}), "1 <oslo> <-3.5>\n");
}

TEST(FixedSource, InvalidLists)
{
    EXPECT_EQ(failureOf(""), "t.txt: text in fixed columns needs a list of its columns, such as name:1-8,town:9-24");
    for (const char* list :
         {"name", "name:", "name:0-3", "name:5-3", "name:1-", "name:-3", "name:a-b", "name:1-99999999999", ":x"}) {
        EXPECT_EQ(failureOf(list), std::string("t.txt: not a column with its bytes, such as name:1-8: ") + list)
            << list;
    }
    EXPECT_EQ(failureOf("name:1-3,town"), "t.txt: not a column with its bytes, such as name:1-8: town");
    EXPECT_EQ(failureOf("a:1-3,b:x"), "t.txt: not a column with its bytes, such as name:1-8: b:x");
    for (const char* list : {"5|5", "12|5", "0|5", "|", "5||7", "99999999999"}) {
        EXPECT_EQ(failureOf(list), std::string("t.txt: not a list of increasing positions, such as 5|12|20: ") + list)
            << list;
    }
}

TEST(FixedSource, BlanksAtTheEndAreRemovedTheOthersStay)
{
    EXPECT_EQ(recordsOf("  a  b  x\n         \n", {.FixedColumns = twoColumns}), "1 <  a> <b  x>\n2 <> <>\n");
    EXPECT_EQ(recordsOf(std::string("a\0 \0 b\0\0\0\n", 10), {.FixedColumns = twoColumns}), "1 <a> <b>\n");
}

TEST(FixedSource, ShortLinesGiveShortCellsOrNull)
{
    EXPECT_EQ(recordsOf("Ann  Ro\nAnn  \nAnn\nA\n", {.FixedColumns = twoColumns}),
              "1 <Ann> <Ro>\n2 <Ann> NULL\n3 <Ann> NULL\n4 <A> NULL\n");
}

TEST(FixedSource, EmptyLines)
{
    EXPECT_EQ(recordsOf("\nAnn  Rome\n\r\n\nBob\n\n", {.FixedColumns = twoColumns}), "1 <Ann> <Rome>\n2 <Bob> NULL\n");
    EXPECT_EQ(recordsOf("a\n\nb", {.FixedColumns = "x:1-3"}), "1 <a>\n2 NULL\n3 <b>\n");
    EXPECT_EQ(recordsOf("", {.FixedColumns = twoColumns}), "");
}

TEST(FixedSource, AllLineEnds)
{
    const std::string expected = "1 <Ann> <Rome>\n2 <Bob> <Oslo>\n";
    EXPECT_EQ(recordsOf("Ann  Rome\r\nBob  Oslo\r\n", {.FixedColumns = twoColumns}), expected);
    EXPECT_EQ(recordsOf("Ann  Rome\rBob  Oslo\r", {.FixedColumns = twoColumns}), expected);
    EXPECT_EQ(recordsOf("Ann  Rome\nBob  Oslo", {.FixedColumns = twoColumns}), expected);
    EXPECT_EQ(recordsOf("Ann  Rome\r", {.FixedColumns = twoColumns}), "1 <Ann> <Rome>\n");
    EXPECT_EQ(recordsOf("Ann  Rome\nBob\rx\n", {.FixedColumns = "a:1-9"}), "1 <Ann  Rome>\n2 <Bob\rx>\n");
    EXPECT_EQ(recordsOf("Ann  Rome\r\n\x1A", {.FixedColumns = twoColumns}), "1 <Ann> <Rome>\n");
}

TEST(FixedSource, Notes)
{
    EXPECT_EQ(notesOf("Ann  Rome1\nBob  Oslo  \nEve  Bonn  x\n", {.FixedColumns = twoColumns}),
              "2 lines have text after byte 9, where the last column ends\n");
    EXPECT_EQ(notesOf("Ann  Rome1\n", {.FixedColumns = twoColumns}),
              "1 line has text after byte 9, where the last column ends\n");
    EXPECT_EQ(notesOf("\xC3\xA9\n\x1A", {.FixedColumns = "a:1-4"}),
              "code page UTF-8: that of text files\nthe byte 1A at the end, the end mark of DOS, is left out\n");
}

TEST(FixedSource, Encodings)
{
    const std::string bytes = "\xC3\xA9"
                              "a\xE9z\n";
    const SourceOptions options = {.FixedColumns = "a:1-3,b:4-5,c:2-3"};
    EXPECT_EQ(recordsOf(bytes, options), "1 <\xC3\xA9"
                                         "a> <" +
                                             replacement + "z> <" + replacement +
                                             "a> !byte 0xE9 is not UTF-8 !byte 0xA9 is not UTF-8\n");
    EXPECT_EQ(recordsOf("\xE9x\n", {.Encoding = "latin1", .FixedColumns = "a:1-2"}), "1 <\xC3\xA9x>\n");
    EXPECT_EQ(recordsOf("\x83|x\n", {.Encoding = "cp932", .FixedColumns = "a:1-2,b:1-1"}),
              "1 <\xE3\x83\x9D> <" + replacement + "> !byte 0x83 is not in code page CP932\n");
    EXPECT_EQ(failureOf("a:1-2", "\xFF\xFEx"), "t.txt: the text is UTF-16: convert the file to UTF-8 first");
    EXPECT_THROW(recordsOf("x", {.Encoding = "utf-16", .FixedColumns = "a:1-2"}), OptionError);
    EXPECT_EQ(recordsOf("\xEF\xBB\xBFxy\n", {.FixedColumns = "a:1-2"}), "1 <xy>\n");
}

TEST(FixedSource, TheOriginOfACell)
{
    Text text("Ann  Rome\nBob  Os\xFF"
              "o\nEve\n",
              {.FixedColumns = twoColumns});
    ASSERT_TRUE(text.source.next());
    ASSERT_TRUE(text.source.next());
    EXPECT_EQ(text.source.record().Offset, 10U);
    EXPECT_EQ(text.source.origin(1).Offset, 15U);
    EXPECT_EQ(text.source.origin(1).Bytes, "Os\xFF"
                                           "o");
    ASSERT_TRUE(text.source.next());
    EXPECT_FALSE(text.source.origin(1).Offset);
}

TEST(FixedSource, TypesSelectionRangesSeeks)
{
    const std::string bytes = " 007 20240229\n  x  20230229\n     \n";
    const SourceOptions typed = {.Types = {{"n", "integer"}, {"d", "date"}}, .FixedColumns = "n:1-4,d:6-13"};
    EXPECT_EQ(recordsOf(bytes, typed),
              "1 7 2024-02-29\n2 UNREADABLE UNREADABLE !not a number !not a date\n3 NULL NULL\n");
    EXPECT_EQ(
        recordsOf(
            "abc\ndef\nghi\n",
            {.Select = {"C", "a"}, .Records = {2, 2}, .Deleted = DeletedRecords::Mark, .FixedColumns = "a:1,c:3"}),
        "2 <f> <d> false\n");
    Text text("a\nb\nc\n", {.FixedColumns = "x:1"});
    text.source.seek(3);
    EXPECT_EQ(shownRecords(text.source), "3 <c>\n");
    text.source.seek(2);
    EXPECT_EQ(shownRecords(text.source), "2 <b>\n3 <c>\n");
    text.source.seek(1);
    text.source.need({false});
    EXPECT_EQ(shownRecords(text.source), "1 NULL\n2 NULL\n3 NULL\n");
    EXPECT_THROW(recordsOf("a", {.FixedColumns = "a:1", .Delimiter = ","}), OptionError);
}

TEST(FixedSource, Facts)
{
    const Text text("Ann  Rome\n", {.Encoding = "852", .FixedColumns = twoColumns});
    std::string all;
    for (const auto& fact : text.source.facts()) {
        all += fact.Label + ": " + fact.Value + '\n';
    }
    EXPECT_EQ(all, "kind: text in fixed columns\ncode page: CP852 (as requested)\n");
}

TEST(FixedSource, LinesAcrossTheEndsOfBlocks)
{
    std::string bytes;
    std::string expected;
    for (int i = 1; i <= 100000; ++i) {
        const std::string number = std::to_string(i);
        bytes += number + std::string(8 - number.size(), ' ') + "text " + number + '\n';
        expected += number + " <" + number + "> <text " + number + ">\n";
    }
    EXPECT_TRUE(recordsOf(bytes, {.FixedColumns = "n:1-8,t:9-24"}) == expected);
    EXPECT_TRUE(recordsOf(std::string(2000000, 'x'), {.FixedColumns = "n:1999999-3000000"}) == "1 <xx>\n");
}

}  // namespace

#include "support/scoped_directory.h"
#include "support/shown.h"
#include "support/source_file.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/fixedsource.h>

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <thread>

using kd_lib::exchange::DeletedRecords;
using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::Error;
using kd_lib::exchange::FixedSource;
using kd_lib::exchange::OptionError;
using kd_lib::exchange::SourceOptions;
using kd_test::errorOf;
using kd_test::replacement;
using kd_test::ScopedDirectory;
using kd_test::shown;
using kd_test::shownColumns;
using kd_test::shownNotes;
using kd_test::shownRecords;
using kd_test::SourceFile;

namespace {

const std::string nameAndTown = "name:1-4,town:6-9";

class FixedText : public SourceFile<FixedSource> {
public:
    explicit FixedText(const std::string& bytes, const SourceOptions& options) : SourceFile("t.txt", bytes, options) {}
};

std::string fixedRecords(const std::string& bytes, const SourceOptions& options)
{
    return kd_test::recordsIn<FixedSource>("t.txt", bytes, options);
}

std::string fixedNotes(const std::string& bytes, const SourceOptions& options)
{
    return kd_test::notesIn<FixedSource>("t.txt", bytes, options);
}

std::string fixedFailure(const std::string& columns, const std::string& bytes = "x\n")
{
    return kd_test::failureIn<FixedSource>("t.txt", bytes, {.FixedColumns = columns});
}

TEST(FixedSource, RangesOfBytes)
{
    FixedText text("Ann  Rome\nBob  Oslo\n", {.FixedColumns = nameAndTown});
    EXPECT_EQ(shownColumns(text.source), "name:text town:text");
    EXPECT_EQ(text.source.columns()[1].Width, 4U);
    EXPECT_EQ(shownRecords(text.source), "1 <Ann> <Rome>\n2 <Bob> <Oslo>\n");
    EXPECT_EQ(text.source.recordsRead(), 2U);
    EXPECT_EQ(shownNotes(text.source), "");
    EXPECT_EQ(fixedRecords("abcdef\n", {.FixedColumns = " b : 2 - 3 ,flag:6, all:1-6"}), "1 <bc> <f> <abcdef>\n");
}

TEST(FixedSource, TheClassicList)
{
    FixedText text("0001  oslo  -3.5  nw 4\n", {.FixedColumns = "6|12;18"});
    EXPECT_EQ(shownColumns(text.source), "field#0:text field#1:text field#2:text");
    EXPECT_EQ(shownRecords(text.source), "1 <oslo> <-3.5> <nw 4>\n");
    EXPECT_EQ(text.source.columns()[2].Width, 6U);
    EXPECT_EQ(fixedRecords("0001  oslo  -3.5\n", {.FixedColumns = "6:12"}), "1 <oslo> <-3.5>\n");
}

TEST(FixedSource, InvalidLists)
{
    EXPECT_EQ(fixedFailure(""), "t.txt: text in fixed columns needs a list of its columns, such as name:1-8,town:9-24");
    for (const char* list :
         {"name", "name:", "name:0-3", "name:5-3", "name:1-", "name:-3", "name:a-b", "name:1-99999999999", ":x"}) {
        EXPECT_EQ(fixedFailure(list), std::string("t.txt: not a column with its bytes, such as name:1-8: ") + list)
            << list;
    }
    EXPECT_EQ(fixedFailure("name:1-3,town"), "t.txt: not a column with its bytes, such as name:1-8: town");
    EXPECT_EQ(fixedFailure("a:1-3,b:x"), "t.txt: not a column with its bytes, such as name:1-8: b:x");
    for (const char* list : {"5|5", "12|5", "0|5", "|", "5||7", "99999999999"}) {
        EXPECT_EQ(fixedFailure(list),
                  std::string("t.txt: not a list of increasing positions, such as 5|12|20: ") + list)
            << list;
    }
}

TEST(FixedSource, BlanksAtTheEndAreRemovedTheOthersStay)
{
    EXPECT_EQ(fixedRecords("  a  b  x\n         \n", {.FixedColumns = nameAndTown}), "1 <  a> <b  x>\n2 <> <>\n");
    EXPECT_EQ(fixedRecords(std::string("a\0 \0 b\0\0\0\n", 10), {.FixedColumns = nameAndTown}), "1 <a> <b>\n");
}

TEST(FixedSource, ShortLinesGiveShortCellsOrNull)
{
    EXPECT_EQ(fixedRecords("Ann  Ro\nAnn  \nAnn\nA\n", {.FixedColumns = nameAndTown}),
              "1 <Ann> <Ro>\n2 <Ann> NULL\n3 <Ann> NULL\n4 <A> NULL\n");
}

TEST(FixedSource, EmptyLines)
{
    EXPECT_EQ(fixedRecords("\nAnn  Rome\n\r\n\nBob\n\n", {.FixedColumns = nameAndTown}),
              "1 <Ann> <Rome>\n2 <Bob> NULL\n");
    EXPECT_EQ(fixedRecords("a\n\nb", {.FixedColumns = "x:1-3"}), "1 <a>\n2 NULL\n3 <b>\n");
    EXPECT_EQ(fixedRecords("", {.FixedColumns = nameAndTown}), "");
}

TEST(FixedSource, AllLineEnds)
{
    const std::string expected = "1 <Ann> <Rome>\n2 <Bob> <Oslo>\n";
    EXPECT_EQ(fixedRecords("Ann  Rome\r\nBob  Oslo\r\n", {.FixedColumns = nameAndTown}), expected);
    EXPECT_EQ(fixedRecords("Ann  Rome\rBob  Oslo\r", {.FixedColumns = nameAndTown}), expected);
    EXPECT_EQ(fixedRecords("Ann  Rome\nBob  Oslo", {.FixedColumns = nameAndTown}), expected);
    EXPECT_EQ(fixedRecords("Ann  Rome\r", {.FixedColumns = nameAndTown}), "1 <Ann> <Rome>\n");
    EXPECT_EQ(fixedRecords("Ann  Rome\nBob\rx\n", {.FixedColumns = "a:1-9"}), "1 <Ann  Rome>\n2 <Bob\rx>\n");
    EXPECT_EQ(fixedRecords("Ann  Rome\r\n\x1A", {.FixedColumns = nameAndTown}), "1 <Ann> <Rome>\n");
}

TEST(FixedSource, Notes)
{
    EXPECT_EQ(fixedNotes("Ann  Rome1\nBob  Oslo  \nEve  Bonn  x\n", {.FixedColumns = nameAndTown}),
              "2 lines have text after byte 9, where the last column ends\n");
    EXPECT_EQ(fixedNotes("Ann  Rome1\n", {.FixedColumns = nameAndTown}),
              "1 line has text after byte 9, where the last column ends\n");
    EXPECT_EQ(fixedNotes("\xC3\xA9\n\x1A", {.FixedColumns = "a:1-4"}),
              "code page UTF-8: that of text files\nthe byte 1A at the end, the end mark of DOS, is left out\n");
}

TEST(FixedSource, Encodings)
{
    const std::string bytes = "\xC3\xA9"
                              "a\xE9z\n";
    const SourceOptions options = {.FixedColumns = "a:1-3,b:4-5,c:2-3"};
    EXPECT_EQ(fixedRecords(bytes, options), "1 <\xC3\xA9"
                                            "a> <" +
                                                replacement + "z> <" + replacement +
                                                "a> !byte 0xE9 is not UTF-8 !byte 0xA9 is not UTF-8\n");
    EXPECT_EQ(fixedRecords("\xE9x\n", {.Encoding = "latin1", .FixedColumns = "a:1-2"}), "1 <\xC3\xA9x>\n");
    EXPECT_EQ(fixedRecords("\x83|x\n", {.Encoding = "cp932", .FixedColumns = "a:1-2,b:1-1"}),
              "1 <\xE3\x83\x9D> <" + replacement + "> !byte 0x83 is not in code page CP932\n");
    EXPECT_EQ(fixedFailure("a:1-2", "\xFF\xFEx"), "t.txt: the text is UTF-16: convert the file to UTF-8 first");
    EXPECT_THROW(fixedRecords("x", {.Encoding = "utf-16", .FixedColumns = "a:1-2"}), OptionError);
    EXPECT_EQ(fixedRecords("\xEF\xBB\xBFxy\n", {.FixedColumns = "a:1-2"}), "1 <xy>\n");
}

TEST(FixedSource, TheOriginOfACell)
{
    FixedText text("Ann  Rome\nBob  Os\xFF"
                   "o\nEve\n",
                   {.FixedColumns = nameAndTown});
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
    EXPECT_EQ(fixedRecords(bytes, typed),
              "1 7 2024-02-29\n2 UNREADABLE UNREADABLE !not a number !not a date\n3 NULL NULL\n");
    EXPECT_EQ(
        fixedRecords(
            "abc\ndef\nghi\n",
            {.Select = {"C", "a"}, .Records = {2, 2}, .Deleted = DeletedRecords::Mark, .FixedColumns = "a:1,c:3"}),
        "2 <f> <d> false\n");
    FixedText text("a\nb\nc\n", {.FixedColumns = "x:1"});
    text.source.seek(3);
    EXPECT_EQ(shownRecords(text.source), "3 <c>\n");
    text.source.seek(2);
    EXPECT_EQ(shownRecords(text.source), "2 <b>\n3 <c>\n");
    text.source.seek(1);
    text.source.need({false});
    EXPECT_EQ(shownRecords(text.source), "1 NULL\n2 NULL\n3 NULL\n");
    EXPECT_THROW(fixedRecords("a", {.FixedColumns = "a:1", .Delimiter = ","}), OptionError);
}

TEST(FixedSource, APipeIsReadOnce)
{
    const ScopedDirectory folder;
    const std::string pipe = folder.file("pipe.txt");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::jthread writer([&] { folder.write("pipe.txt", "a\nb\n"); });
    FixedSource source(pipe, {.FixedColumns = "x:1"});
    EXPECT_EQ(shownRecords(source), "1 <a>\n2 <b>\n");
    EXPECT_EQ(errorOf([&] { source.seek(1); }), pipe + ": it can be read only once");
}

TEST(FixedSource, Facts)
{
    const FixedText text("Ann  Rome\n", {.Encoding = "852", .FixedColumns = nameAndTown});
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
    EXPECT_TRUE(fixedRecords(bytes, {.FixedColumns = "n:1-8,t:9-24"}) == expected);
    EXPECT_TRUE(fixedRecords(std::string(2000000, 'x'), {.FixedColumns = "n:1999999-3000000"}) == "1 <xx>\n");
}

}  // namespace

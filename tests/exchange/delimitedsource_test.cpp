#include "support/scoped_directory.h"
#include "support/shown.h"
#include "support/source_file.h"

#include <kd_lib/exchange/delimitedsource.h>
#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stop_token>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using kd_lib::exchange::DeletedRecords;
using kd_lib::exchange::DelimitedSource;
using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::Error;
using kd_lib::exchange::FlawKind;
using kd_lib::exchange::OptionError;
using kd_lib::exchange::SourceKind;
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

/// A text in a file, and its source.
class Text : public SourceFile<DelimitedSource> {
public:
    explicit Text(const std::string& bytes, const SourceOptions& options = {}, const std::string& name = "t.csv")
        : SourceFile(name, bytes, options)
    {
    }
};

std::string recordsOf(const std::string& bytes, const SourceOptions& options = {})
{
    return kd_test::recordsIn<DelimitedSource>("t.csv", bytes, options);
}

std::string notesOf(const std::string& bytes, const SourceOptions& options = {})
{
    return kd_test::notesIn<DelimitedSource>("t.csv", bytes, options);
}

std::string failureOf(const std::string& bytes, const SourceOptions& options = {})
{
    return kd_test::failureIn<DelimitedSource>("t.csv", bytes, options);
}

/// The size of such files is 0, whatever they contain.
TEST(DelimitedSource, FilesOfTheKernelAreReadToTheirEnd)
{
    DelimitedSource source("/proc/self/comm", {});
    ASSERT_EQ(source.columns().size(), 1U);
    const std::string first15 = std::string(program_invocation_short_name).substr(0, 15);
    EXPECT_EQ(source.columns()[0].Name, first15) << "of the process's name";
}

TEST(DelimitedSource, HeaderAndRecords)
{
    Text text("id,name\n1,Ann\n2,Bob\n");
    EXPECT_EQ(shownColumns(text.source), "id:text name:text");
    EXPECT_EQ(shownRecords(text.source), "1 <1> <Ann>\n2 <2> <Bob>\n");
    EXPECT_EQ(text.source.recordsRead(), 2U);
    EXPECT_EQ(text.source.recordsLeftOut(), 0U);
    EXPECT_EQ(text.source.position(), text.source.size());
    EXPECT_FALSE(text.source.next());
    EXPECT_EQ(shownNotes(text.source), "");
}

TEST(DelimitedSource, AllLineEnds)
{
    const std::string expected = "1 <1> <2>\n2 <3> <4>\n";
    EXPECT_EQ(recordsOf("a,b\n1,2\n3,4\n"), expected);
    EXPECT_EQ(recordsOf("a,b\r\n1,2\r\n3,4\r\n"), expected);
    EXPECT_EQ(recordsOf("a,b\r1,2\r3,4\r"), expected);
    EXPECT_EQ(recordsOf("a,b\r\n1,2\r3,4"), expected);
    EXPECT_EQ(recordsOf("\"a\",\"b\"\r\n\"1\",\"2\"\r\n\"3\",\"4\""), expected);
    EXPECT_EQ(recordsOf("\"a\",\"b\"\r\"1\",\"2\"\r\"3\",\"4\"\r"), expected);
}

TEST(DelimitedSource, QuotedCells)
{
    EXPECT_EQ(recordsOf("a,b\n\"x,y\",\"x\ny\"\n"), "1 <x,y> <x\ny>\n");
    EXPECT_EQ(recordsOf("a,b\n\"say \"\"hi\"\"\",\"\"\"\"\n"), "1 <say \"hi\"> <\">\n");
    EXPECT_EQ(recordsOf("a,b\n\"x\r\ny\",\"\r\"\n"), "1 <x\r\ny> <\r>\n");
    EXPECT_EQ(recordsOf("a,b\n5\" disk,x\"\"y\n"), "1 <5\" disk> <x\"\"y>\n");
    EXPECT_EQ(recordsOf("a,b\n \"x\",\"\"\"\"\"\"\n"), "1 < \"x\"> <\"\">\n");
}

TEST(DelimitedSource, NullAndTheEmptyText)
{
    EXPECT_EQ(recordsOf("a,b,c\n,\"\", \n"), "1 NULL <> < >\n");
    EXPECT_EQ(recordsOf("a,b,c\n,,\n"), "1 NULL NULL NULL\n");
    EXPECT_EQ(recordsOf("a,b,c\nNA,\"NA\",NAN\n", {.Null = "NA"}), "1 NULL <NA> <NAN>\n");
    EXPECT_EQ(recordsOf("a,b\n,x\n", {.Null = "x"}), "1 NULL NULL\n");
    EXPECT_EQ(recordsOf("a,b\n\xE9,x\n", {.Encoding = "latin1", .Null = "\xC3\xA9"}), "1 NULL <x>\n");
}

TEST(DelimitedSource, EmptyLines)
{
    EXPECT_EQ(recordsOf("\n\na,b\n\n1,2\n\r\n\r3,4\n\n"), "1 <1> <2>\n2 <3> <4>\n");
    EXPECT_EQ(recordsOf("a\n1\n\n2\n"), "1 <1>\n2 NULL\n3 <2>\n");
    EXPECT_EQ(recordsOf("a\r\n1\r\n\r\n2\r\n"), "1 <1>\n2 NULL\n3 <2>\n");
    EXPECT_EQ(recordsOf("a,b\n \n"), "1 < > NULL !line 2: 1 cell instead of 2\n");
    EXPECT_EQ(recordsOf("a,b\n\"\"\n"), "1 <> NULL !line 2: 1 cell instead of 2\n");
}

TEST(DelimitedSource, RaggedRowsAreFlawsWithTheirLine)
{
    Text text("a,b\n\"1\n1\",2\n3\n4,5,6\n7,8\n");
    EXPECT_EQ(shownRecords(text.source), "1 <1\n1> <2>\n2 <3> NULL !line 4: 1 cell instead of 2\n"
                                         "3 <4> <5> !line 5: 3 cells instead of 2\n4 <7> <8>\n");
    Text again("a,b\n3\n4,5,6\n");
    ASSERT_TRUE(again.source.next());
    EXPECT_EQ(again.source.record().Flaws[0].Kind, FlawKind::RowTooShort);
    EXPECT_EQ(again.source.record().Offset, 4U);
    EXPECT_FALSE(again.source.origin(1).Offset);
    ASSERT_TRUE(again.source.next());
    EXPECT_EQ(again.source.record().Flaws[0].Kind, FlawKind::RowTooLong);
}

TEST(DelimitedSource, AQuoteThatDoesNotEndCorrectly)
{
    EXPECT_EQ(failureOf("a,b\n1,2\n\"3\n\"x,4\n"), "t.csv: record 2, byte 8: line 4: text after a closing quote");
    EXPECT_EQ(failureOf("a,b\n\"1\" ,2\n"), "t.csv: record 1, byte 4: line 2: text after a closing quote");
    EXPECT_EQ(failureOf("a,b\n1,\"2\n3,4\n"), "t.csv: record 1, byte 4: line 2: a quote is opened and never closed");
    EXPECT_EQ(failureOf("\"a,b\n"), "t.csv: record 1, byte 0: line 1: a quote is opened and never closed");
    EXPECT_EQ(failureOf("a\n\"\"\""), "t.csv: record 1, byte 2: line 2: a quote is opened and never closed");
}

TEST(DelimitedSource, TheMarkOfUtf8IsNotPartOfTheFirstName)
{
    Text text("\xEF\xBB\xBF\"a\",b\n1,2\n");
    EXPECT_EQ(shownColumns(text.source), "a:text b:text");
    ASSERT_TRUE(text.source.next());
    EXPECT_EQ(text.source.record().Offset, 9U);
}

TEST(DelimitedSource, FilesWithoutRecordsOrRows)
{
    EXPECT_EQ(recordsOf("a,b"), "");
    EXPECT_EQ(recordsOf("a,b\n"), "");
    EXPECT_EQ(failureOf(""), "t.csv: there is no row");
    EXPECT_EQ(failureOf("\n\r\n"), "t.csv: there is no row");
    EXPECT_EQ(failureOf("\xEF\xBB\xBF"), "t.csv: there is no row");
    EXPECT_EQ(failureOf("", {.Header = false}), "t.csv: there is no row");
}

TEST(DelimitedSource, TheEndMarkOfDosIsNotARecord)
{
    EXPECT_EQ(recordsOf("a,b\r\n1,2\r\n\x1A"), "1 <1> <2>\n");
    EXPECT_EQ(notesOf("a,b\r\n1,2\r\n\x1A"), "the byte 1A at the end, the end mark of DOS, is left out\n");
    EXPECT_EQ(recordsOf("a\n\x1A\n"), "1 <\x1A>\n");
}

TEST(DelimitedSource, WithoutAHeader)
{
    Text text("1,2\n3,4\n", {.Header = false});
    EXPECT_EQ(shownColumns(text.source), "column_1:text column_2:text");
    EXPECT_EQ(shownRecords(text.source), "1 <1> <2>\n2 <3> <4>\n");
    text.source.seek(1);
    EXPECT_EQ(shownRecords(text.source), "1 <1> <2>\n2 <3> <4>\n");
}

TEST(DelimitedSource, DelimitersAndQuotesOfOtherKinds)
{
    EXPECT_EQ(recordsOf("a;b\n1,5;'x;y'\n", {.Delimiter = ";", .Quote = "'"}), "1 <1,5> <x;y>\n");
    EXPECT_EQ(recordsOf("a\tb\n1\t\"2\n", {.Delimiter = "\\t", .Quote = ""}), "1 <1> <\"2>\n");
    EXPECT_EQ(recordsOf("a\tb\n1\t2\n", {.Kind = SourceKind::Tsv}), "1 <1> <2>\n");
    Text tab("a\tb\n1\t2\n", {}, "t.TAB");
    EXPECT_EQ(shownRecords(tab.source), "1 <1> <2>\n");
    EXPECT_EQ(failureOf("a\n", {.Delimiter = ",,"}), "t.csv: the delimiter must be one ASCII character: ,,");
    EXPECT_EQ(failureOf("a\n", {.Quote = "\xC2\xAB"}), "t.csv: the quote must be one ASCII character: \xC2\xAB");
    EXPECT_THROW(recordsOf("a\n", {.Delimiter = "\n"}), OptionError);
    EXPECT_THROW(recordsOf("a\n", {.Delimiter = "\""}), OptionError);
}

TEST(DelimitedSource, OptionsOfOtherKindsAreRefused)
{
    EXPECT_EQ(failureOf("a\n", {.MemoFile = "x"}), "t.csv: a memo file does not fit delimited text");
    EXPECT_EQ(failureOf("a\n", {.FixedColumns = "1|2"}), "t.csv: a list of fixed columns does not fit delimited text");
    EXPECT_THROW(recordsOf("a\n", {.Encoding = "klingon"}), OptionError);
    EXPECT_THROW(recordsOf("a\n", {.Select = {"b"}}), OptionError);
}

TEST(DelimitedSource, TheDelimiterByTheText)
{
    EXPECT_EQ(recordsOf("a;b;c\n1,5;2;3\n\"x;y\";5;6\n", {.Delimiter = "auto"}), "1 <1,5> <2> <3>\n2 <x;y> <5> <6>\n");
    EXPECT_EQ(notesOf("a;b;c\n1,5;2;3\n4,5;5;6\n", {.Delimiter = "auto"}),
              "the delimiter is ';': it cuts 3 of the first 3 rows into 3 columns\n");
    EXPECT_EQ(notesOf("a\tb\n1\t2\n", {.Delimiter = "AUTO"}),
              "the delimiter is tab: it cuts 2 of the first 2 rows into 2 columns\n");
    EXPECT_EQ(notesOf("a|b\n1|2\n3", {.Delimiter = "auto"}),
              "the delimiter is '|': it cuts 2 of the first 3 rows into 2 columns\n");
    EXPECT_EQ(notesOf("at,what\n10:15,x\n10:16,y\n", {.Delimiter = "auto"}),
              "the delimiter is ',': it cuts 3 of the first 3 rows into 2 columns\n");
    EXPECT_EQ(notesOf("word\none\n", {.Delimiter = "auto"}),
              "the delimiter is assumed to be ',': none splits the first row into columns\n");
}

TEST(DelimitedSource, AHintIfTheDelimiterIsAnotherOne)
{
    EXPECT_EQ(notesOf("a;b\n1;2\n"), "there is one column, a;b: the delimiter may be ';' instead of ','\n");
    EXPECT_EQ(notesOf("a,b\n1,2\n", {.Kind = SourceKind::Tsv}),
              "there is one column, a,b: the delimiter may be ',' instead of tab\n");
    EXPECT_EQ(notesOf("a;b\n1;2\n", {.Delimiter = ","}), "");
    EXPECT_EQ(notesOf("a b\n1;2\n"), "");
}

TEST(DelimitedSource, AWrongDelimiterThatCausesAnErrorIsNamed)
{
    EXPECT_EQ(failureOf("a;b\n\"x;y\";2\n"),
              "t.csv: record 1, byte 4: line 2: text after a closing quote; the delimiter may be ';' instead of ','");
}

TEST(DelimitedSource, NamesWithBytesThatAreNotUtf8)
{
    Text text("a,\xE9\n1,2\n");
    EXPECT_EQ(text.source.columns()[1].Name, replacement);
    EXPECT_EQ(shownNotes(text.source), "name of column 2: byte 0xE9 is not UTF-8; U+FFFD in its place (loss)\n");
}

TEST(DelimitedSource, ACharacterCutByTheEndOfItsCell)
{
    EXPECT_EQ(recordsOf("a,b\n\xC3,\xA9\n\xC3\xA9,\xE2\x82\xAC\n"),
              "1 <" + replacement + "> <" + replacement +
                  "> !byte 0xC3 is not UTF-8 !byte 0xA9 is not UTF-8\n"
                  "2 <\xC3\xA9> <\xE2\x82\xAC>\n");
}

TEST(DelimitedSource, BytesThatAreNotUtf8)
{
    const std::string bytes = "a,b\n1,\xE9t\xE9\n\xC3\xA9,2\n";
    EXPECT_EQ(recordsOf(bytes),
              "1 <1> <" + replacement + "t" + replacement + "> !byte 0xE9 is not UTF-8\n2 <\xC3\xA9> <2>\n");
    EXPECT_EQ(recordsOf(bytes, {.OnEncodingError = EncodingErrors::Escape}),
              "1 <1> <\\xE9t\\xE9> !byte 0xE9 is not UTF-8\n2 <\xC3\xA9> <2>\n");
    EXPECT_EQ(recordsOf(bytes, {.OnEncodingError = EncodingErrors::Strict}),
              "1 <1> UNREADABLE !byte 0xE9 is not UTF-8\n2 <\xC3\xA9> <2>\n");
    EXPECT_EQ(recordsOf(bytes, {.Encoding = "latin1"}), "1 <1> <\xC3\xA9t\xC3\xA9>\n2 <\xC3\x83\xC2\xA9> <2>\n");
    EXPECT_EQ(notesOf(bytes), "code page UTF-8: that of text files\n");
    EXPECT_EQ(notesOf(bytes, {.Encoding = "1252"}), "code page CP1252: as requested\n");
}

TEST(DelimitedSource, TheOriginOfACellWithItsQuotes)
{
    Text text("a,b\n1,\"x\xE9\"\n");
    ASSERT_TRUE(text.source.next());
    EXPECT_EQ(text.source.origin(1).Offset, 6U);
    EXPECT_EQ(text.source.origin(1).Bytes, "\"x\xE9\"");
    EXPECT_EQ(text.source.origin(0).Bytes, "1");
}

TEST(DelimitedSource, DoubleByteCharactersWhoseSecondByteIsTheDelimiter)
{
    // In CP932 the second bytes of these characters are 7C, the bar, and 5C.
    EXPECT_EQ(recordsOf("a|b\n\x83|\x83\\|x\n", {.Encoding = "cp932", .Delimiter = "|"}),
              "1 <\xE3\x83\x9D\xE3\x82\xBD> <x>\n");
    EXPECT_EQ(recordsOf("a,b\n\x83|,\x83\\\n", {.Encoding = "cp932"}), "1 <\xE3\x83\x9D> <\xE3\x82\xBD>\n");
}

std::string utf16(std::string_view ascii)
{
    std::string text;
    for (const char c : ascii) {
        text += c;
        text += '\0';
    }
    return text;
}

TEST(DelimitedSource, Utf16NeedsItsName)
{
    const std::string line = "t.csv: the text is UTF-16: name it as the encoding";
    EXPECT_EQ(failureOf("\xFF\xFE" + utf16("a,b\n1,2\n")), line);
    EXPECT_EQ(failureOf(std::string("a\0b\0\0", 5)), line) << "half a character at the end";
    EXPECT_EQ(failureOf(utf16("a,b\n1,2\n")), line);
    EXPECT_EQ(failureOf('\0' + utf16("a,b\n1,2\n")), line);
    const std::string otherLetter("\0\1", 2);  // U+0100
    EXPECT_EQ(failureOf(utf16("a,b,c,d\n") + otherLetter), line) << "eight characters show it";
    EXPECT_EQ(failureOf(std::string("\xFF\xFE\0\0a\0\0\0", 8)), "t.csv: the text is UTF-32: name it as the encoding");
    EXPECT_EQ(recordsOf("\xFF\xFE" + utf16("a,b\n1,\"\"\n,\"x,\"\"y\"\n"), {.Encoding = "UTF-16"}),
              "1 <1> <>\n2 NULL <x,\"y>\n");
    EXPECT_EQ(recordsOf(utf16("a,b\n1,2\n"), {.Encoding = "utf-16le"}), "1 <1> <2>\n");
    EXPECT_EQ(recordsOf(std::string("\xFE\xFF\0a\0\n\0x\0\n", 10), {.Encoding = "utf-16"}), "1 <x>\n");
}

TEST(DelimitedSource, BrokenUtf16IsTheFlawOfItsCell)
{
    const std::string half("\0\xD8", 2);
    const std::string bytes = "\xFF\xFE" + utf16("a,b\n1,x") + half + utf16("\n");
    const std::string reason = "> !byte 0x00 is not in code page UTF-16\n";
    EXPECT_EQ(recordsOf(bytes, {.Encoding = "utf-16"}), "1 <1> <x" + replacement + reason);
    EXPECT_EQ(recordsOf(bytes, {.Encoding = "utf-16", .OnEncodingError = EncodingErrors::Escape}),
              "1 <1> <x\\x00\\xD8" + reason);
    Text text(bytes, {.Encoding = "utf-16", .OnEncodingError = EncodingErrors::Strict});
    ASSERT_TRUE(text.source.next());
    EXPECT_EQ(shown(text.source.record()), "1 <1> UNREADABLE !byte 0x00 is not in code page UTF-16");
    EXPECT_EQ(text.source.record().Offset, 10U);
    EXPECT_EQ(text.source.origin(1).Offset, 14U);
    EXPECT_EQ(text.source.origin(1).Bytes, utf16("x") + half);
    // Cut within a character
    EXPECT_EQ(recordsOf(utf16("a\nx") + "y", {.Encoding = "utf-16le"}),
              "1 <x" + replacement + "> !byte 0x79 is not in code page UTF-16LE\n");
}

TEST(DelimitedSource, ZeroBytesAreCharacters)
{
    EXPECT_EQ(recordsOf(std::string("a,b\nx\0y,\0\n", 10)), std::string("1 <x\0y> <\0>\n", 12));
}

TEST(DelimitedSource, TypesThatTheOptionsGive)
{
    const std::string bytes = "n,d,b,t\n 007 ,2024-02-29,yes,x\n,\"\",,\nx,2023-02-29,maybe,y\n";
    const SourceOptions options = {.Types = {{"n", "number"}, {"d", "date"}, {"b", "boolean"}}};
    EXPECT_EQ(recordsOf(bytes, options),
              "1 7 2024-02-29 true <x>\n2 NULL NULL NULL NULL\n"
              "3 UNREADABLE UNREADABLE UNREADABLE <y> !not a number !not a date !not a boolean\n");
    EXPECT_EQ(recordsOf("a\n \xFF \n", {.Types = {{"a", "bytes"}}}), "1 [ \xFF ]\n");
}

TEST(DelimitedSource, TypesByTheValues)
{
    const std::string bytes = "i,n,d,z,e,none,q,big,t\n"
                              "1,1.50,2024-02-29,007,1e5,,\"5\",9223372036854775808,x\n"
                              "-2,10,1999-12-31,1,2,,6,1,\"\"\n"
                              ",,,,,,,,\n"
                              "0,-0.5,0001-01-01,2,3,,7,2,y\n";
    Text text(bytes, {.Infer = true});
    EXPECT_EQ(shownColumns(text.source),
              "i:integer n:number d:date z:text e:text none:text q:integer big:number t:text");
    EXPECT_EQ(text.source.columns()[1].Width, 5U);
    EXPECT_EQ(text.source.columns()[1].Decimals, 2U);
    EXPECT_EQ(text.source.columns()[7].Width, 19U);
    EXPECT_EQ(shownNotes(text.source),
              "types found in 4 records: i integer, n number with 2 decimals, d date, z text because of record 1, "
              "e text because of record 1, none text without a value, q integer, big number with 0 decimals, "
              "t text because of record 1\n");
    EXPECT_EQ(shownRecords(text.source), "1 1 1.50 2024-02-29 <007> <1e5> NULL 5 9223372036854775808 <x>\n"
                                         "2 -2 10 1999-12-31 <1> <2> NULL 6 1 <>\n"
                                         "3 NULL NULL NULL NULL NULL NULL NULL NULL NULL\n"
                                         "4 0 -0.5 0001-01-01 <2> <3> NULL 7 2 <y>\n");
}

TEST(DelimitedSource, TheSearchForTypesCanBeStopped)
{
    std::string bytes = "a,b\n";
    for (int i = 0; i < 2000; ++i) {
        bytes += "1,2\n";
    }
    std::stop_source stop;
    SourceOptions options = {.Infer = true};
    options.Stop = stop.get_token();
    EXPECT_EQ(recordsOf("a,b\n1,2\n", options), "1 1 2\n");
    stop.request_stop();
    EXPECT_THROW(recordsOf(bytes, options), kd_lib::exchange::Stopped);
}

TEST(DelimitedSource, ValuesThatGetNoType)
{
    for (const char* value :
         {"+1", "-0", "1.", ".5", " 1", "1e3", "1,5", "\"\"", "NaN", "2023-02-29", "2024-2-1", "00"}) {
        Text text(std::string("a;b\n") + value + ";1\n2;2\n", {.Delimiter = ";", .Infer = true});
        EXPECT_EQ(shownColumns(text.source), "a:text b:integer") << value;
    }
    Text mixed("a\n1\n2024-01-01\n", {.Infer = true});
    EXPECT_EQ(shownColumns(mixed.source), "a:text");
    Text null("a\nNA\n1\n", {.Infer = true, .Null = "NA"});
    EXPECT_EQ(shownColumns(null.source), "a:integer");
    Text asked("a,b\n1,2\n", {.Types = {{"b", "text"}}, .Infer = true});
    EXPECT_EQ(shownColumns(asked.source), "a:integer b:text");
}

TEST(DelimitedSource, Facts)
{
    const auto factsOf = [](const SourceOptions& options) {
        Text text("a\n", options);
        std::string all;
        for (const auto& fact : text.source.facts()) {
            all += fact.Label + ": " + fact.Value + '\n';
        }
        return all;
    };
    EXPECT_EQ(factsOf({}), "kind: delimited text\ncode page: UTF-8 (that of text files)\ndelimiter: ','\nquote: '\"'\n"
                           "header: the first row\n");
    EXPECT_EQ(factsOf({.Encoding = "852", .Delimiter = "\\t", .Quote = "", .Header = false}),
              "kind: delimited text\ncode page: CP852 (as requested)\ndelimiter: tab\nquote: none\nheader: none\n");
}

TEST(DelimitedSource, SelectedColumnsRangesAndNeeds)
{
    const std::string bytes = "a,b,c\n1,2,3\n4,5,6\n7,8,9\n";
    EXPECT_EQ(recordsOf(bytes, {.Select = {"C", "a"}}), "1 <3> <1>\n2 <6> <4>\n3 <9> <7>\n");
    Text text(bytes, {.Records = {2, 2}});
    EXPECT_EQ(shownRecords(text.source), "2 <4> <5> <6>\n");
    EXPECT_EQ(text.source.recordsRead(), 1U);
    EXPECT_EQ(recordsOf(bytes, {.Select = {"a"}, .Deleted = DeletedRecords::Mark}),
              "1 <1> false\n2 <4> false\n3 <7> false\n");
    Text needs(bytes);
    needs.source.need({false, true, false});
    EXPECT_EQ(shownRecords(needs.source), "1 NULL <2> NULL\n2 NULL <5> NULL\n3 NULL <8> NULL\n");
}

TEST(DelimitedSource, Seeks)
{
    Text text("a,b\n1,\"x\ny\"\n\n2,\n3,z\n");
    text.source.seek(3);
    EXPECT_EQ(shownRecords(text.source), "3 <3> <z>\n");
    text.source.seek(2);
    ASSERT_TRUE(text.source.next());
    EXPECT_EQ(shown(text.source.record()), "2 <2> NULL");
    text.source.seek(1);
    EXPECT_EQ(shownRecords(text.source), "1 <1> <x\ny>\n2 <2> NULL\n3 <3> <z>\n");
    text.source.seek(4);
    EXPECT_FALSE(text.source.next());
}

TEST(DelimitedSource, AFileThatIsMissing)
{
    EXPECT_EQ(errorOf([] { DelimitedSource("/nonexistent/a.csv"); }), "/nonexistent/a.csv: No such file or directory");
}

/// A pipe that a thread fills, piece by piece.
class Pipe {
public:
    Pipe(std::string bytes, std::size_t piece) : Path(Folder.file("pipe.csv"))
    {
        EXPECT_EQ(::mkfifo(Path.c_str(), 0600), 0);
        Writer = std::thread([path = Path, text = std::move(bytes), piece] {
            std::FILE* file = std::fopen(path.c_str(), "wb");
            for (std::size_t at = 0; at < text.size(); at += piece) {
                std::fwrite(text.data() + at, 1, std::min(piece, text.size() - at), file);
                std::fflush(file);
            }
            std::fclose(file);
        });
    }
    ~Pipe() { Writer.join(); }

    ScopedDirectory Folder;
    std::string Path;

private:
    std::thread Writer;
};

TEST(DelimitedSource, APipeIsReadOnce)
{
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 1000U}) {
        const Pipe pipe("\xEF\xBB\xBF"
                        "a,b\r\n\"x\r\ny\",1\r\n\r\n,\"\"\r\n",
                        piece);
        DelimitedSource source(pipe.Path);
        EXPECT_EQ(shownRecords(source), "1 <x\r\ny> <1>\n2 NULL <>\n") << piece;
        EXPECT_FALSE(source.size());
        EXPECT_EQ(errorOf([&] { source.seek(1); }), pipe.Path + ": it can be read only once");
    }
    const Pipe pipe("a,b\n1,2\n", 100);
    EXPECT_EQ(errorOf([&] { DelimitedSource(pipe.Path, {.Infer = true}); }),
              pipe.Path + ": the types of columns cannot be found in a text that can be read only once");
}

/// Random text of rows, and the expected cells by the simplest rules.
struct RandomRows {
    std::string Text;
    std::string Expected;
};

RandomRows randomRows(unsigned seed, std::size_t size)
{
    std::srand(seed);
    const char* pieces[] = {"x", "longer piece of text ", "\xC3\xA9", "7", "'", " "};
    const char* quotedPieces[] = {",", "\n", "\"\"", "\r\n", "y"};
    RandomRows rows = {"a,b,c\n", ""};
    for (int number = 1; rows.Text.size() < size; ++number) {
        rows.Expected += std::to_string(number);
        for (int column = 0; column < 3; ++column) {
            const bool quoted = std::rand() % 3 == 0;
            std::string value;
            std::string written;
            for (int count = std::rand() % 40; count > 0; --count) {
                const std::string piece =
                    quoted && std::rand() % 4 == 0 ? quotedPieces[std::rand() % 5] : pieces[std::rand() % 6];
                written += piece;
                value += piece == "\"\"" ? "\"" : piece;
            }
            rows.Text += (column > 0 ? "," : "") + (quoted ? '"' + written + '"' : written);
            rows.Expected += value.empty() && !quoted ? " NULL" : " <" + value + '>';
        }
        rows.Text += std::rand() % 2 == 0 ? "\n" : "\r\n";
        rows.Expected += '\n';
    }
    return rows;
}

TEST(DelimitedSource, RowsAcrossTheEndsOfBlocks)
{
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const RandomRows rows = randomRows(seed, 1500000);
        Text text(rows.Text);
        EXPECT_TRUE(shownRecords(text.source) == rows.Expected) << seed;
        const Pipe pipe(rows.Text, 4099);
        DelimitedSource source(pipe.Path);
        EXPECT_TRUE(shownRecords(source) == rows.Expected) << seed;
    }
}

TEST(DelimitedSource, ALineEndAcrossTheEndsOfBlocksIsOne)
{
    constexpr std::uint64_t count = 200000;
    std::string rows;
    for (std::uint64_t i = 0; i < count; ++i) {
        rows += "1\r\n";
    }
    for (const std::string header : {"a\r\n", "aa\r\n", "aaa\r\n"}) {
        Text text(header + rows);
        std::uint64_t found = 0;
        while (text.source.next()) {
            ++found;
        }
        EXPECT_EQ(found, count) << "an empty line would be a record";
    }
}

TEST(DelimitedSource, ACellOfManyBlocks)
{
    std::string longText(3000000, 'x');
    longText[1500000] = '\n';
    EXPECT_TRUE(recordsOf("a,b\n\"" + longText + "\",1\n2,3\n") == "1 <" + longText + "> <1>\n2 <2> <3>\n");
}

}  // namespace

#include "support/reading.h"
#include "support/xbase_file.h"

#include <kd_lib/exchange/dbfsource.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace kd_lib::exchange;
using kd_test::little;
using kd_test::Reading;
using kd_test::XbaseFile;
using Rows = std::vector<std::vector<std::string>>;
using Texts = std::vector<std::string>;
using Numbers = std::vector<std::uint64_t>;

class DbfSourceTest : public testing::Test {
protected:
    /// Records r1 to r9; those of even numbers are deleted.
    static XbaseFile nine()
    {
        XbaseFile file(3, {{"NAME", 'C', 6}, {"QTY", 'N', 4}});
        for (int i = 1; i <= 9; ++i) {
            file.record({"r" + std::to_string(i), std::to_string(i * 11)}, i % 2 == 0 ? '*' : ' ');
        }
        return file;
    }

    std::string write(const XbaseFile& file, const std::string& name = "t.dbf")
    {
        return kd_test::rewrite(Folder, name, file.bytes());
    }

    Reading read(const XbaseFile& file, const SourceOptions& options = {})
    {
        return kd_test::readFileAs(write(file), options);
    }

    kd_test::ScopedDirectory Folder;
};

/// Standard input is a file, or the end of a pipe, for the time of a test.
class StandardInput {
public:
    explicit StandardInput(int descriptor) : Saved(::dup(STDIN_FILENO))
    {
        ::dup2(descriptor, STDIN_FILENO);
        ::close(descriptor);
    }
    ~StandardInput()
    {
        ::dup2(Saved, STDIN_FILENO);
        ::close(Saved);
    }
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

private:
    int Saved;
};

TEST_F(DbfSourceTest, DeletedRecordsAreLeftOutKeptOrMarked)
{
    SourceOptions options;
    Reading reading = read(nine(), options);
    EXPECT_EQ(reading.Numbers, (Numbers{1, 3, 5, 7, 9}));
    EXPECT_EQ(reading.Read, 9U);
    EXPECT_EQ(reading.LeftOut, 4U);
    EXPECT_EQ(reading.Notes, (Texts{"4 deleted records left out"}));

    options.Deleted = DeletedRecords::Keep;
    reading = read(nine(), options);
    EXPECT_EQ(reading.Numbers, (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(reading.LeftOut, 0U);
    EXPECT_EQ(reading.Notes, (Texts{"4 deleted records kept"}));

    options.Deleted = DeletedRecords::Mark;
    options.Records = {2, 3};
    reading = read(nine(), options);
    EXPECT_EQ(reading.Names, (Texts{"NAME", "QTY", "_deleted"}));
    EXPECT_EQ(reading.Rows, (Rows{{"'r2'", "22", "true"}, {"'r3'", "33", "false"}}));
    EXPECT_EQ(reading.Notes, Texts{});
}

TEST_F(DbfSourceTest, RecordsHaveNumberPlaceAndDeletion)
{
    SourceOptions options;
    options.Deleted = DeletedRecords::Keep;
    options.Records.First = 4;
    const auto source = openSource(write(nine()), options);
    ASSERT_TRUE(source->next());
    EXPECT_EQ(source->record().Number, 4U);
    EXPECT_EQ(source->record().Offset, 97U + 3 * 11);
    EXPECT_TRUE(source->record().Deleted);
    EXPECT_EQ(source->record()["QTY"].integer(), 44);
}

TEST_F(DbfSourceTest, RangesOfRecords)
{
    const auto numbers = [this](std::uint64_t first, std::uint64_t last) {
        SourceOptions options;
        options.Records = {first, last};
        return read(nine(), options).Numbers;
    };
    constexpr std::uint64_t end = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(numbers(1, end), (Numbers{1, 3, 5, 7, 9}));
    EXPECT_EQ(numbers(0, 1), (Numbers{1}));
    EXPECT_EQ(numbers(3, 6), (Numbers{3, 5}));
    EXPECT_EQ(numbers(4, 4), (Numbers{}));
    EXPECT_EQ(numbers(9, 9), (Numbers{9}));
    EXPECT_EQ(numbers(9, 10), (Numbers{9}));
    EXPECT_EQ(numbers(10, 20), (Numbers{}));
    EXPECT_EQ(numbers(end, end), (Numbers{}));
    EXPECT_EQ(numbers(5, 4), (Numbers{}));
}

TEST_F(DbfSourceTest, SlicesTogetherAreTheWholeTable)
{
    XbaseFile file(3, {{"N", 'N', 5}});
    for (int i = 1; i <= 20000; ++i) {
        file.record({std::to_string(i)}, i % 7 == 0 ? '*' : ' ');
    }
    const std::string path = write(file);
    const Numbers whole = kd_test::readFileAs(path).Numbers;
    Numbers together;
    std::uint64_t read = 0;
    for (const auto& [first, last] : {std::pair{1, 5000}, {5001, 5001}, {5002, 19999}, {20000, 99999}}) {
        SourceOptions options;
        options.Records = {static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(last)};
        const Reading slice = kd_test::readFileAs(path, options);
        together.insert(together.end(), slice.Numbers.begin(), slice.Numbers.end());
        read += slice.Read;
    }
    EXPECT_EQ(together, whole);
    EXPECT_EQ(read, 20000U);
}

TEST_F(DbfSourceTest, SeekGoesForwardAndBack)
{
    const auto source = openSource(write(nine()));
    const auto recordAfterSeek = [&source](std::uint64_t number) {
        source->seek(number);
        return source->next() ? source->record().Number : 0;
    };
    EXPECT_EQ(recordAfterSeek(5), 5U);
    EXPECT_EQ(recordAfterSeek(6), 7U) << "6 is deleted";
    EXPECT_EQ(recordAfterSeek(1), 1U);
    EXPECT_EQ(recordAfterSeek(0), 1U);
    EXPECT_EQ(recordAfterSeek(9), 9U);
    EXPECT_EQ(recordAfterSeek(10), 0U);
    EXPECT_EQ(recordAfterSeek(1000000), 0U);
    EXPECT_EQ(recordAfterSeek(3), 3U);
    ASSERT_TRUE(source->next());
    EXPECT_EQ(source->record().Number, 5U);
}

TEST_F(DbfSourceTest, SeekStaysInTheRange)
{
    SourceOptions options;
    options.Records = {3, 7};
    const auto source = openSource(write(nine()), options);
    source->seek(1);
    ASSERT_TRUE(source->next());
    EXPECT_EQ(source->record().Number, 3U);
    source->seek(8);
    EXPECT_FALSE(source->next());
}

TEST_F(DbfSourceTest, SeekInALargeFile)
{
    XbaseFile file(3, {{"N", 'N', 7}, {"FILL", 'C', 100}});
    for (int i = 1; i <= 5000; ++i) {
        file.record({std::to_string(i), ""});
    }
    const auto source = openSource(write(file));
    for (std::uint64_t i = 1, number = 1; i < 2000; ++i, number = number * 7919 % 5000 + 1) {
        source->seek(number);
        ASSERT_TRUE(source->next());
        ASSERT_EQ(source->record().Number, number);
        ASSERT_EQ(source->record()[0].integer(), static_cast<std::int64_t>(number));
    }
}

TEST_F(DbfSourceTest, OnlyNeededColumnsAreRead)
{
    XbaseFile file(3, {{"A", 'N', 3}, {"B", 'N', 3}, {"C", 'N', 3}});
    file.record({"1", "xx", "3"}).record({"4", "yy", "6"});
    SourceOptions options;
    options.Deleted = DeletedRecords::Mark;
    const auto source = openSource(write(file), options);
    source->need({false, false, true, false});
    ASSERT_TRUE(source->next());
    EXPECT_TRUE(source->record().Flaws.empty());
    EXPECT_EQ(kd_test::cellText(source->record().Cells[0]), "null");
    EXPECT_EQ(kd_test::cellText(source->record().Cells[1]), "null");
    EXPECT_EQ(kd_test::cellText(source->record().Cells[2]), "3");
    EXPECT_EQ(kd_test::cellText(source->record().Cells[3]), "null");
    source->need({true, true, false, true});
    ASSERT_TRUE(source->next());
    EXPECT_EQ(source->record().Flaws.size(), 1U);
    EXPECT_EQ(kd_test::cellText(source->record().Cells[0]), "4");
    EXPECT_EQ(kd_test::cellText(source->record().Cells[2]), "null");
    EXPECT_EQ(kd_test::cellText(source->record().Cells[3]), "false");
}

TEST_F(DbfSourceTest, ChosenColumnsInTheirOrder)
{
    SourceOptions options;
    options.Select = {"qty", "NAME", "QTY"};
    options.Records = {3, 3};
    const Reading reading = read(nine(), options);
    EXPECT_EQ(reading.Names, (Texts{"QTY", "NAME", "QTY"}));
    EXPECT_EQ(reading.Rows, (Rows{{"33", "'r3'", "33"}}));
    options.Select = {"nobody"};
    EXPECT_THROW(read(nine(), options), OptionError);
    options.Select = {"_deleted", "QTY"};
    options.Deleted = DeletedRecords::Mark;
    EXPECT_EQ(read(nine(), options).Rows, (Rows{{"false", "33"}}));
}

TEST_F(DbfSourceTest, OriginIsThePlaceOfTheCellInTheFile)
{
    XbaseFile file(3, {{"NAME", 'C', 6}, {"QTY", 'N', 4}});
    file.record({"one", "  1"}).record({"two", "x"});
    SourceOptions options;
    options.Deleted = DeletedRecords::Mark;
    options.Select = {"QTY", "NAME"};
    const auto source = openSource(write(file), options);
    ASSERT_TRUE(source->next());
    ASSERT_TRUE(source->next());
    ASSERT_EQ(source->record().Flaws.size(), 1U);
    EXPECT_EQ(source->origin(0).Offset, 97U + 11 + 7);
    EXPECT_EQ(source->origin(0).Bytes, "x   ");
    EXPECT_EQ(source->origin(1).Offset, 97U + 11 + 1);
    EXPECT_EQ(source->origin(1).Bytes, "two   ");
    EXPECT_EQ(source->origin(2).Offset, 97U + 11);
    EXPECT_EQ(source->origin(2).Bytes, " ");
}

TEST_F(DbfSourceTest, PositionAndSize)
{
    const std::string bytes = nine().bytes();
    const auto source = openSource(write(nine()));
    EXPECT_EQ(source->size(), bytes.size());
    EXPECT_EQ(source->position(), 97U);
    while (source->next()) {
    }
    EXPECT_EQ(source->position(), bytes.size());
}

TEST_F(DbfSourceTest, StandardInputOnce)
{
    const StandardInput input(::open(write(nine()).c_str(), O_RDONLY));
    SourceOptions options;
    options.Kind = SourceKind::Dbf;
    options.Records = {3, 7};
    const auto source = openSource("-", options);
    EXPECT_FALSE(source->size());
    const Reading reading = kd_test::readAll(*source);
    EXPECT_EQ(reading.Numbers, (Numbers{3, 5, 7}));
    EXPECT_EQ(reading.Read, 5U);
    EXPECT_THROW(source->seek(3), Error);
}

TEST_F(DbfSourceTest, StandardInputInSmallPieces)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string bytes = nine().bytes();
    const pid_t child = ::fork();
    if (child == 0) {
        for (const char byte : bytes) {
            if (::write(ends[1], &byte, 1) != 1) {
                ::_exit(1);
            }
        }
        ::_exit(0);
    }
    ::close(ends[1]);
    const StandardInput input(ends[0]);
    SourceOptions options;
    options.Kind = SourceKind::Dbf;
    const Reading reading = kd_test::readFileAs("-", options);
    EXPECT_EQ(reading.Numbers, (Numbers{1, 3, 5, 7, 9}));
    EXPECT_EQ(reading.Notes, (Texts{"4 deleted records left out"}));
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST_F(DbfSourceTest, StandardInputHasNoMemoFile)
{
    XbaseFile file(0x83, {{"N", 'M', 10}});
    file.record({"         1"});
    const StandardInput input(::open(write(file).c_str(), O_RDONLY));
    SourceOptions options;
    options.Kind = SourceKind::Dbf;
    const Reading reading = kd_test::readFileAs("-", options);
    EXPECT_EQ(reading.Notes, (Texts{"loss: memo file: none for standard input; its values cannot be read"}));
}

TEST_F(DbfSourceTest, DamageOfStandardInputIsReportedToo)
{
    XbaseFile file = nine();
    file.Count = 12;
    file.End = "\x1Ajunk";
    const StandardInput input(::open(write(file).c_str(), O_RDONLY));
    SourceOptions options;
    options.Kind = SourceKind::Dbf;
    const Reading reading = kd_test::readFileAs("-", options);
    EXPECT_EQ(reading.Read, 9U);
    EXPECT_EQ(reading.Notes, (Texts{"loss: the header counts 12 records, the file holds 9",
                                    "not read: bytes after the end mark", "4 deleted records left out"}));
}

TEST_F(DbfSourceTest, FilesThatAreNotTables)
{
    EXPECT_EQ(kd_test::failureOf(Folder.file("none.dbf")), "No such file or directory");
    EXPECT_EQ(kd_test::failureOf(Folder.write("e.dbf", "")), "the file is empty");
    std::filesystem::create_directory(Folder.file("d.dbf"));
    EXPECT_EQ(kd_test::failureOf(Folder.file("d.dbf")), "Is a directory");
}

TEST_F(DbfSourceTest, OptionsOfTextFilesAreRefused)
{
    const std::string path = write(nine());
    const auto refused = [&path](auto set) {
        SourceOptions options;
        set(options);
        EXPECT_THROW(openSource(path, options), OptionError);
    };
    refused([](SourceOptions& options) { options.FixedColumns = "a:1-2"; });
    refused([](SourceOptions& options) { options.Delimiter = ";"; });
    refused([](SourceOptions& options) { options.Quote = "'"; });
    refused([](SourceOptions& options) { options.Header = false; });
    refused([](SourceOptions& options) { options.Infer = true; });
    refused([](SourceOptions& options) { options.Null = "NA"; });
    refused([](SourceOptions& options) { options.Encoding = "no such page"; });
    refused([](SourceOptions& options) { options.Types = {{"QTY", "colour"}}; });
}

TEST_F(DbfSourceTest, ValuesLiveUntilTheNextRecord)
{
    XbaseFile file(3, {{"A", 'C', 8}, {"B", 'C', 8}, {"C", 'N', 8, 2}, {"D", 'N', 8, 2}});
    file.Language = 3;
    file.record({"\xE9"
                 "a",
                 "\xE8"
                 "b",
                 "+1.50", "-.5"});
    const Reading reading = read(file);
    EXPECT_EQ(reading.Rows, (Rows{{"'\xC3\xA9"
                                   "a'",
                                   "'\xC3\xA8"
                                   "b'",
                                   "1.50", "-0.5"}}));
}

TEST_F(DbfSourceTest, RecordsOfPrintableAsciiArePlain)
{
    using namespace std::string_literals;
    const auto plain = [this](const std::string& text, const std::string& number) {
        XbaseFile file(3, {{"A", 'C', 20}, {"N", 'N', 5}});
        const auto source = openSource(write(file.record({text, number})));
        EXPECT_TRUE(source->next());
        return source->record().Plain;
    };
    EXPECT_TRUE(plain("abc ~", "12.5"));
    EXPECT_TRUE(plain("", ""));
    EXPECT_FALSE(plain("a\0c"s, "1"));
    EXPECT_FALSE(plain("a\tc", "1"));
    EXPECT_FALSE(plain("sixteen bytes and\n", "1"));
    EXPECT_FALSE(plain("\xE4", "1"));
    EXPECT_FALSE(plain("abc", "1E3")) << "its digits are not in the record";
}

TEST_F(DbfSourceTest, DBase2)
{
    XbaseFile file(2, {{"ZIP:CODE", 'C', 5}, {"QTY", 'N', 4}, {"OK", 'L', 1}});
    file.record({"01234", "17", "T"}).record({"x", "", "F"}, '*').record({"", "-1", "?"});
    const Reading reading = read(file);
    EXPECT_EQ(reading.Names, (Texts{"ZIP:CODE", "QTY", "OK"}));
    EXPECT_EQ(reading.Rows, (Rows{{"'01234'", "17", "true"}, {"''", "-1", "null"}}));
}

TEST_F(DbfSourceTest, DBase2WithAllFieldsUsed)
{
    std::vector<XbaseFile::Field> fields;
    std::vector<std::string> values;
    std::vector<std::string> expected;
    for (int i = 0; i < 32; ++i) {
        fields.push_back({"F" + std::to_string(i), 'N', 2});
        values.push_back(std::to_string(i));
        expected.push_back(std::to_string(i));
    }
    EXPECT_EQ(read(XbaseFile(2, fields).record(values)).Rows, (Rows{expected}));
}

TEST_F(DbfSourceTest, DBase7WithLongNamesAndFieldProperties)
{
    XbaseFile file(4, {{"A name of thirty-one characters!", 'C', 5}, {"Second", 'N', 4}});
    file.Mark += std::string(512, 'p');
    file.HeaderLength += 512;
    file.record({"01234", "17"});
    const Reading reading = read(file);
    EXPECT_EQ(reading.Names, (Texts{"A name of thirty-one characters!", "Second"}));
    EXPECT_EQ(reading.Rows, (Rows{{"'01234'", "17"}}));
}

TEST_F(DbfSourceTest, NamesEndWithAZeroByte)
{
    XbaseFile file(3, {{"ABCDEFGHIJK", 'C', 1}, {std::string("AB\0CD", 5), 'C', 1}, {"", 'C', 1}});
    file.record({"x", "y", "z"});
    EXPECT_EQ(read(file).Names, (Texts{"ABCDEFGHIJK", "AB", ""}));
}

TEST_F(DbfSourceTest, RecordsOf65535Bytes)
{
    std::vector<XbaseFile::Field> fields(257, {"F", 'C', 254});
    fields.push_back({"L", 'C', 256});
    XbaseFile file(3, fields);
    ASSERT_EQ(file.RecordLength, 65535U);
    std::vector<std::string> values(258, "x");
    values.back() = std::string(256, 'z');
    file.record(values).record(values);
    const Reading reading = read(file);
    ASSERT_EQ(reading.Rows.size(), 2U);
    EXPECT_EQ(reading.Rows[1][257], "'" + std::string(256, 'z') + "'");
}

TEST_F(DbfSourceTest, RangeForGivesEachRecord)
{
    const auto source = openSource(write(nine()));
    std::int64_t sum = 0;
    for (const Record& record : *source) {
        sum += record["QTY"].integer().value_or(0);
    }
    EXPECT_EQ(sum, 11 * (1 + 3 + 5 + 7 + 9));
}

TEST_F(DbfSourceTest, FactsOfATable)
{
    XbaseFile file(0x30, {{"A", 'C', 2}, {"M", 'M', 4}});
    file.Language = 3;
    file.TableFlags = 3;
    file.BackLink = "shop.dbc";
    const auto source = openSource(write(file));
    Texts facts;
    for (const Fact& fact : source->facts()) {
        facts.push_back(fact.Label + ": " + fact.Value);
    }
    EXPECT_EQ(facts,
              (Texts{"kind: Visual FoxPro (version byte 30)", "last change: 2024-02-29",
                     "code page: CP1252 (language byte 03)", "memo file: " + Folder.file("t.fpt") + " is missing",
                     "record length: 7", "header length: 360", "database: shop.dbc", "state: with an index file"}));
}

}  // namespace

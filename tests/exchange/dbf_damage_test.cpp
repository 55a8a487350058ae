// Damaged .dbf files: every length and count wrong in both directions, and the results.

#include "support/reading.h"
#include "support/xbase_file.h"

#include <gtest/gtest.h>

namespace {

using namespace kd_lib::exchange;
using kd_test::Reading;
using kd_test::XbaseFile;
using Rows = std::vector<std::vector<std::string>>;
using Texts = std::vector<std::string>;
using Numbers = std::vector<std::uint64_t>;

/// Three records of 11 bytes after a header of 97.
class DamagedDbf : public testing::Test {
protected:
    static XbaseFile three()
    {
        XbaseFile file(3, {{"ID", 'N', 4}, {"TOWN", 'C', 6}});
        file.record({"1", "Rome"}).record({"2", "Oslo"}).record({"3", "Bern"});
        return file;
    }

    static Rows whole() { return {{"1", "'Rome'"}, {"2", "'Oslo'"}, {"3", "'Bern'"}}; }

    Reading read(const XbaseFile& file) { return readBytes(file.bytes()); }
    Reading readBytes(const std::string& bytes)
    {
        return kd_test::readFileAs(kd_test::rewrite(Folder, "t.dbf", bytes));
    }
    std::string failure(const XbaseFile& file)
    {
        return kd_test::failureOf(kd_test::rewrite(Folder, "t.dbf", file.bytes()));
    }

    kd_test::ScopedDirectory Folder;
};

TEST_F(DamagedDbf, SoundFileHasNoNotes)
{
    const Reading reading = read(three());
    EXPECT_EQ(reading.Rows, whole());
    EXPECT_EQ(reading.Notes, Texts{});
    EXPECT_EQ(reading.Flaws, Texts{});
}

TEST_F(DamagedDbf, NoEndMarkOfTheRecords)
{
    XbaseFile file = three();
    file.End.clear();
    const Reading reading = read(file);
    EXPECT_EQ(reading.Rows, whole());
    EXPECT_EQ(reading.Notes, Texts{});
}

TEST_F(DamagedDbf, CountTooHigh)
{
    XbaseFile file = three();
    for (const std::uint64_t count : {4U, 200U, 0xFFFFFFFFU}) {
        file.Count = count;
        const Reading reading = read(file);
        EXPECT_EQ(reading.Rows, whole());
        EXPECT_EQ(reading.Notes,
                  (Texts{"loss: the header counts " + std::to_string(count) + " records, the file holds 3"}));
    }
}

TEST_F(DamagedDbf, CountTooHighWithoutEndMark)
{
    XbaseFile file = three();
    file.Count = 5;
    file.End.clear();
    const Reading reading = read(file);
    EXPECT_EQ(reading.Rows, whole());
    EXPECT_EQ(reading.Notes, (Texts{"loss: the header counts 5 records, the file holds 3"}));
}

TEST_F(DamagedDbf, CountTooHighWithBytesAfterTheEndMark)
{
    XbaseFile file = three();
    file.Count = 6;
    file.End = "\x1A" + std::string(60, 'j');
    const Reading reading = read(file);
    EXPECT_EQ(reading.Rows, whole());
    EXPECT_EQ(reading.Notes,
              (Texts{"loss: the header counts 6 records, the file holds 3", "not read: 60 bytes after the end mark"}));
}

TEST_F(DamagedDbf, CountTooLow)
{
    XbaseFile file = three();
    for (const std::uint64_t count : {0U, 1U, 2U}) {
        file.Count = count;
        const Reading reading = read(file);
        EXPECT_EQ(reading.Rows, whole());
        ASSERT_EQ(reading.Notes.size(), 1U);
        EXPECT_EQ(reading.Notes[0], "loss: the header counts " + std::to_string(count) + " record" +
                                        (count == 1 ? "" : "s") + ", the file holds 3");
    }
}

TEST_F(DamagedDbf, RangesAndSeeksFindTheRealEnd)
{
    for (const std::uint64_t count : {0U, 2U, 3U, 4U, 9U}) {
        XbaseFile file = three();
        file.Count = count;
        file.End = "\x1A" + std::string(100, ' ');
        const std::string path = kd_test::rewrite(Folder, "t.dbf", file.bytes());
        SourceOptions options;
        options.Records = {3, 50};
        EXPECT_EQ(kd_test::readFileAs(path, options).Numbers, (Numbers{3})) << count;
        options.Records = {4, 50};
        EXPECT_EQ(kd_test::readFileAs(path, options).Numbers, (Numbers{})) << count;
        const auto source = openSource(path);
        for (const std::uint64_t number : {5U, 3U, 4U, 1U}) {
            source->seek(number);
            EXPECT_EQ(source->next(), number <= 3) << count << ' ' << number;
        }
    }
}

TEST_F(DamagedDbf, RangeBeforeTheDamageDoesNotReportIt)
{
    XbaseFile file = three();
    file.Count = 9;
    SourceOptions options;
    options.Records = {1, 2};
    const Reading reading = kd_test::readFileAs(kd_test::rewrite(Folder, "t.dbf", file.bytes()), options);
    EXPECT_EQ(reading.Numbers, (Numbers{1, 2}));
    EXPECT_EQ(reading.Notes, Texts{});
}

TEST_F(DamagedDbf, LastRecordCutAtEveryByte)
{
    XbaseFile file = three();
    file.End.clear();
    const std::string bytes = file.bytes();
    for (std::size_t kept = 1; kept < 11; ++kept) {
        const Reading reading = readBytes(bytes.substr(0, bytes.size() - 11 + kept));
        EXPECT_EQ(reading.Numbers, (Numbers{1, 2}));
        EXPECT_EQ(reading.Flaws,
                  (Texts{"3: the file ends within the record, after " + std::to_string(kept) + " of 11 bytes"}));
        EXPECT_EQ(reading.Notes, Texts{});
        EXPECT_EQ(reading.Read, 3U);
    }
}

TEST_F(DamagedDbf, CutRecordAmongOthersThatAreMissing)
{
    XbaseFile file = three();
    file.Count = 7;
    file.End.clear();
    const std::string bytes = file.bytes();
    const Reading reading = readBytes(bytes.substr(0, bytes.size() - 5));
    EXPECT_EQ(reading.Flaws.size(), 1U);
    EXPECT_EQ(reading.Notes, (Texts{"loss: the header counts 7 records, the file holds 2 whole ones"}));
}

TEST_F(DamagedDbf, CutRecordOutsideTheRangeIsNotReported)
{
    const std::string bytes = three().bytes();
    const std::string path = kd_test::rewrite(Folder, "t.dbf", bytes.substr(0, bytes.size() - 5));
    SourceOptions options;
    options.Records = {1, 2};
    EXPECT_EQ(kd_test::readFileAs(path, options).Flaws, Texts{});
    options.Records = {4, 9};
    EXPECT_EQ(kd_test::readFileAs(path, options).Flaws, Texts{});
    options.Records = {3, 9};
    EXPECT_EQ(kd_test::readFileAs(path, options).Flaws.size(), 1U);
}

TEST_F(DamagedDbf, PolicyDecidesAboutTheCutRecord)
{
    const std::string bytes = three().bytes();
    const auto source = openSource(kd_test::rewrite(Folder, "t.dbf", bytes.substr(0, bytes.size() - 5)));
    Tally tally;
    std::vector<Reject> rejects;
    const auto keep = [&rejects](const Reject& reject) { rejects.push_back(reject); };
    ASSERT_TRUE(source->next());
    ASSERT_TRUE(source->next());
    ASSERT_TRUE(source->next());
    EXPECT_FALSE(applyPolicy(*source, OnError::Null, keep, tally)) << "a record that is not whole is never used";
    ASSERT_EQ(rejects.size(), 1U);
    EXPECT_EQ(rejects[0].Where.Record, 3U);
    EXPECT_EQ(rejects[0].Where.Offset, 97U + 22);
    EXPECT_EQ(rejects[0].Action, RejectAction::Skip);
    EXPECT_EQ(tally.LeftOut, 1U);
    EXPECT_TRUE(tally.Loss);
    EXPECT_THROW(applyPolicy(*source, OnError::Stop, keep, tally), Error);
    EXPECT_THROW(source->record()["TOWN"].text(), Error) << "no value of it can be taken for one";
}

TEST_F(DamagedDbf, DeletedRecordThatIsCutIsReported)
{
    XbaseFile file = three();
    file.record({"4", "Riga"}, '*');
    const std::string bytes = file.bytes();
    EXPECT_EQ(readBytes(bytes.substr(0, bytes.size() - 4)).Flaws.size(), 1U);
}

TEST_F(DamagedDbf, BytesAfterTheEndMark)
{
    XbaseFile file = three();
    file.End = "\x1Ax";
    EXPECT_EQ(read(file).Notes, (Texts{"not read: 1 byte after the end mark"}));
    file.End = "\x1A" + std::string(500, '\0');
    EXPECT_EQ(read(file).Notes, (Texts{"not read: 500 bytes after the end mark"}));
    EXPECT_EQ(read(file).Rows, whole());
}

TEST_F(DamagedDbf, BytesAfterTheLastRecord)
{
    XbaseFile file = three();
    file.End = std::string(500, '\0');
    EXPECT_EQ(read(file).Notes, (Texts{"not read: 500 bytes after the last record"}));
    file.End = "xyz";
    EXPECT_EQ(read(file).Notes, (Texts{"not read: 3 bytes after the last record"}));
    file.End = "x   4Riga  ";
    EXPECT_EQ(read(file).Notes, (Texts{"loss: not read: 11 bytes after the last record"})) << "it may be a record";
    file.End = "x" + std::string(10, '\0');
    EXPECT_EQ(read(file).Notes, (Texts{"loss: not read: 11 bytes after the last record"}));
    file.End = std::string(10, '\0') + "x";
    EXPECT_EQ(read(file).Notes, (Texts{"loss: not read: 11 bytes after the last record"}));
    EXPECT_EQ(read(file).Rows, whole());
}

TEST_F(DamagedDbf, OtherDeletionMarksAreKept)
{
    for (const char mark : {'x', '\0', 'D', '\xFF'}) {
        XbaseFile file(3, {{"ID", 'N', 4}});
        file.record({"1"}).record({"2"}, mark).record({"3"}, mark).record({"4"}, '*');
        const Reading reading = read(file);
        EXPECT_EQ(reading.Numbers, (Numbers{1, 2, 3}));
        ASSERT_EQ(reading.Notes.size(), 2U);
        EXPECT_TRUE(reading.Notes[0].starts_with("record 2 has the deletion mark ")) << reading.Notes[0];
    }
}

TEST_F(DamagedDbf, EndMarkInPlaceOfADeletionMark)
{
    XbaseFile file(3, {{"ID", 'N', 4}});
    file.record({"1"}).record({"2"}, '\x1A').record({"3"}).record({"4"}, '\x1A');
    EXPECT_EQ(read(file).Numbers, (Numbers{1, 2, 3, 4})) << "the records of the count are all there";
    file.End.clear();
    EXPECT_EQ(read(file).Numbers, (Numbers{1, 2, 3, 4}));
}

TEST_F(DamagedDbf, RangesReachRecordsAfterABlankOneWithTheEndMarkIfTheCountIsRight)
{
    XbaseFile file(3, {{"ID", 'N', 4}});
    file.record({"1"}).record({""}, '\x1A').record({"3"});
    EXPECT_EQ(read(file).Numbers, (Numbers{1})) << "a blank record does not show that its mark is damaged";
    SourceOptions options;
    options.Records = {3, 50};
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf"), options).Numbers, (Numbers{3}));
    const auto source = openSource(Folder.file("t.dbf"));
    source->seek(3);
    EXPECT_TRUE(source->next());
    EXPECT_EQ(source->record().Number, 3U);
}

TEST_F(DamagedDbf, UnknownVersionByteIsReadAsDBase3)
{
    for (const int version : {0x00, 0x77, 0xFF, 0x1A}) {
        XbaseFile file = three();
        file.Version = version;
        const Reading reading = read(file);
        EXPECT_EQ(reading.Rows, whole());
        ASSERT_EQ(reading.Notes.size(), 1U);
        EXPECT_TRUE(reading.Notes[0].ends_with("is not known; read as dBase III")) << reading.Notes[0];
    }
}

TEST_F(DamagedDbf, RecordLongerThanItsFields)
{
    XbaseFile file = three();
    file.Fields.push_back({"X", 'C', 3});
    file.Records.clear();
    file.Count = 0;
    file.RecordLength = 14;
    file.record({"1", "Rome", "zzz"}).record({"2", "Oslo", "zzz"}).record({"3", "Bern", "zzz"});
    file.Fields.pop_back();
    const Reading reading = read(file);
    EXPECT_EQ(reading.Rows, whole());
    EXPECT_EQ(reading.Notes, (Texts{"a record has 14 bytes, its columns 11; the last 3 bytes of each are not read"}));
}

TEST_F(DamagedDbf, RecordShorterThanItsFields)
{
    XbaseFile file = three();
    for (const std::uint64_t length : {1U, 5U, 10U}) {
        file.RecordLength = length;
        EXPECT_EQ(failure(file),
                  "the header gives a record length of " + std::to_string(length) + ", but the columns need 11 bytes");
    }
}

TEST_F(DamagedDbf, RecordLengthOf0)
{
    XbaseFile file = three();
    file.RecordLength = 0;
    EXPECT_EQ(failure(file), "the header gives a record length of 0");
}

TEST_F(DamagedDbf, NoColumns)
{
    XbaseFile file(3, {});
    EXPECT_EQ(failure(file), "the header describes no columns");
    EXPECT_EQ(failure(XbaseFile(2, {})), "the header describes no columns");
    EXPECT_EQ(failure(XbaseFile(4, {})), "the header describes no columns");
    EXPECT_EQ(failure(XbaseFile(0x30, {{"_NullFlags", '0', 1, 0, 5}})), "there are only memo columns and null flags");
}

TEST_F(DamagedDbf, HeaderLengthWrong)
{
    XbaseFile file = three();
    for (const std::uint64_t length : {0U, 1U, 31U, 32U}) {
        file.HeaderLength = length;
        EXPECT_EQ(failure(file), "the header gives its own length as " + std::to_string(length) +
                                     ", which leaves no room for columns");
    }
    for (const std::uint64_t length : {132U, 1000U, 65535U}) {
        file.HeaderLength = length;
        EXPECT_EQ(failure(file),
                  "the file ends at byte 131, within the header of " + std::to_string(length) + " bytes");
    }
    file.HeaderLength = 95;
    EXPECT_EQ(read(file).Names, (Texts{"ID"})) << "the columns end where the header ends";
}

TEST_F(DamagedDbf, FileCutWithinTheHeader)
{
    const std::string bytes = three().bytes();
    for (std::size_t kept = 0; kept < 97; ++kept) {
        const std::string reason = kd_test::failureOf(kd_test::rewrite(Folder, "t.dbf", bytes.substr(0, kept)));
        EXPECT_EQ(reason, kept == 0 ? "the file is empty"
                          : kept < 32
                              ? "the file ends within the header, at byte " + std::to_string(kept)
                              : "the file ends at byte " + std::to_string(kept) + ", within the header of 97 bytes");
    }
    const Reading reading = readBytes(bytes.substr(0, 97));
    EXPECT_EQ(reading.Rows, Rows{});
    EXPECT_EQ(reading.Notes, (Texts{"loss: the header counts 3 records, the file holds 0"}));
}

TEST_F(DamagedDbf, FilesOfOtherHeadersCutEverywhere)
{
    for (const int version : {0x02, 0x04, 0x30}) {
        XbaseFile file(version, {{"ID", 'N', 4}, {"TOWN", 'C', 6}});
        file.record({"1", "Rome"}).record({"2", "Oslo"});
        const std::string bytes = file.bytes();
        for (std::size_t kept = 0; kept < bytes.size(); ++kept) {
            const std::string path = kd_test::rewrite(Folder, "t.dbf", bytes.substr(0, kept));
            const std::string reason = kd_test::failureOf(path);
            ASSERT_EQ(reason.empty(), kept >= file.HeaderLength) << version << ' ' << kept << ' ' << reason;
        }
    }
}

TEST_F(DamagedDbf, NoEndMarkOfTheDescriptors)
{
    for (const std::string& mark : {std::string(1, '\0'), std::string("\x0A"), std::string(" ")}) {
        XbaseFile file = three();
        file.Mark = mark;
        const Reading reading = read(file);
        EXPECT_EQ(reading.Rows, whole());
        EXPECT_EQ(reading.Notes, Texts{});
    }
    XbaseFile file = three();
    file.Mark.clear();
    file.HeaderLength = 96;
    EXPECT_EQ(read(file).Rows, whole()) << "the header ends with the last descriptor";
    file.Mark = std::string(264, '\0');
    file.HeaderLength = 96 + 264;
    EXPECT_EQ(read(file).Rows, whole()) << "zero bytes are not descriptors";
}

TEST_F(DamagedDbf, HeaderLongerThanItsDescriptors)
{
    XbaseFile file = three();
    file.Mark += "\x0D";
    file.HeaderLength += 1;
    EXPECT_EQ(read(file).Rows, whole());
    file.Mark += std::string(1000, 'q');
    file.HeaderLength += 1000;
    EXPECT_EQ(read(file).Rows, whole()) << "the bytes after the end mark are not a descriptor";
}

TEST_F(DamagedDbf, LengthsOfFieldsWrong)
{
    for (const std::size_t field : {0U, 1U}) {
        for (const int by : {-3, -1, 1, 3}) {
            std::string bytes = three().bytes();
            char& length = bytes[32 + 32 * field + 16];
            length = static_cast<char>(length + by);
            const std::string path = kd_test::rewrite(Folder, "t.dbf", bytes);
            if (by > 0) {
                EXPECT_EQ(kd_test::failureOf(path), "the header gives a record length of 11, but the columns need " +
                                                        std::to_string(11 + by) + " bytes");
            } else {
                const Reading reading = kd_test::readFileAs(path);
                EXPECT_EQ(reading.Read, 3U);
                ASSERT_FALSE(reading.Notes.empty());
                EXPECT_TRUE(reading.Notes[0].starts_with("a record has 11 bytes, its columns "));
            }
        }
    }
}

TEST_F(DamagedDbf, EncryptedTablesAreReported)
{
    XbaseFile file = three();
    file.Version = 0x8B;
    std::string bytes = file.bytes();
    bytes[15] = 1;
    EXPECT_EQ(readBytes(bytes).Notes, (Texts{"the header marks the records as encrypted; they are read as they are"}));
}

TEST_F(DamagedDbf, EveryByteOfTheHeaderWrong)
{
    // No byte of a header makes the reader fail other than by an Error.
    XbaseFile file(0x30, {{"A", 'C', 4}, {"B", 'V', 5, 0, 2}, {"C", 'M', 4}, {"_NullFlags", '0', 1, 0, 5}});
    file.record({"abcd", "xy\0\0\x02", std::string(4, '\0'), "\x01"});
    const std::string bytes = file.bytes();
    for (std::size_t at = 0; at < 162; ++at) {
        for (const int value : {0x00, 0x01, 0x0D, 0x1A, 0x20, 0x7F, 0x80, 0xFF}) {
            std::string damaged = bytes;
            damaged[at] = static_cast<char>(value);
            const std::string path = kd_test::rewrite(Folder, "t.dbf", damaged);
            EXPECT_NO_THROW(kd_test::failureOf(path)) << at << ' ' << value;
        }
    }
}

}  // namespace

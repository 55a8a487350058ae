// The code page of a .dbf file, and the note about it.

#include "support/reading.h"
#include "support/xbase_file.h"

#include <gtest/gtest.h>

namespace {

using namespace kd_lib::exchange;
using kd_test::Reading;
using kd_test::XbaseFile;
using Rows = std::vector<std::vector<std::string>>;
using Texts = std::vector<std::string>;

class DbfCodePages : public testing::Test {
protected:
    Reading read(unsigned language, const std::string& text)
    {
        XbaseFile file(3, {{"T", 'C', static_cast<unsigned>(text.size())}});
        file.Language = language;
        file.record({text});
        return kd_test::readFileAs(kd_test::rewrite(Folder, "t.dbf", file.bytes()), Options);
    }

    Reading readDriver(const std::string& driver, const std::string& text, unsigned language = 0)
    {
        XbaseFile file(4, {{"T", 'C', static_cast<unsigned>(text.size())}});
        file.Driver = driver;
        file.Language = language;
        file.record({text});
        return kd_test::readFileAs(kd_test::rewrite(Folder, "t.dbf", file.bytes()), Options);
    }

    kd_test::ScopedDirectory Folder;
    SourceOptions Options;
};

TEST_F(DbfCodePages, LanguageByte)
{
    struct Case {
        unsigned Byte;
        std::string Text;
        std::string Expected;
        std::string Note;
    };
    for (const Case& one :
         std::vector<Case>{{0x03, "\x80", "\xE2\x82\xAC", "code page CP1252: language byte 03"},
                           {0x01, "\xE1", "\xC3\x9F", "code page CP437: language byte 01"},
                           {0x02, "\xD5", "\xC4\xB1", "code page CP850: language byte 02"},
                           {0x64, "\xA9", "\xC4\x99", "code page CP852: language byte 64"},
                           {0x65, "\x8C", "\xD0\x9C", "code page CP866: language byte 65"},
                           {0xC9, "\xCC", "\xD0\x9C", "code page CP1251: language byte C9"},
                           {0x68, "\x87", "\xC4\x8D", "code page Kamenicky: language byte 68"},
                           {0x69, "\x86", "\xC4\x85", "code page Mazovia: language byte 69"},
                           {0xF0, "\xC5\xBE", "\xC5\xBE", "code page UTF-8: language byte F0"},
                           {0x00, "\xE4", "\xC3\xA4", "code page CP1252: the file names none"},
                           {0x7F, "\xE4", "\xC3\xA4", "code page CP1252: language byte 7F is not known"}}) {
        const Reading reading = read(one.Byte, one.Text);
        EXPECT_EQ(reading.only(), "'" + one.Expected + "'");
        EXPECT_EQ(reading.Notes, (Texts{one.Note}));
    }
}

TEST_F(DbfCodePages, PlainTextHasNoNote)
{
    EXPECT_EQ(read(0x7F, "plain ~").Notes, Texts{});
}

TEST_F(DbfCodePages, NotedOnce)
{
    XbaseFile file(3, {{"A", 'C', 2}, {"B", 'C', 2}});
    file.record({"\xE4", "\xE5"}).record({"\xE4", "\xE5"});
    EXPECT_EQ(kd_test::readFileAs(Folder.write("o.dbf", file.bytes())).Notes.size(), 1U);
}

TEST_F(DbfCodePages, CpgFileComesBeforeTheLanguageByte)
{
    for (const std::string& text : Texts{"UTF-8", "utf8\r\n", "65001", " UTF-8 ", "\xEF\xBB\xBFUTF-8"}) {
        kd_test::rewrite(Folder, "t.cpg", text);
        const Reading reading = read(3, "\xC5\xBE");
        EXPECT_EQ(reading.only(), "'\xC5\xBE'") << text;
        EXPECT_EQ(reading.Notes, (Texts{"code page UTF-8: t.cpg"}));
    }
    for (const std::string& text : Texts{"1251", "ANSI 1251", "CP1251\n", "windows-1251", std::string("1251\0\0", 6)}) {
        kd_test::rewrite(Folder, "t.cpg", text);
        EXPECT_EQ(read(3, "\xCC").only(), "'\xD0\x9C'") << text;
    }
    std::filesystem::remove(Folder.file("t.cpg"));
    Folder.write("T.CPG", "LDID/100");
    EXPECT_EQ(read(3, "\xA9").only(), "'\xC4\x99'");
}

TEST_F(DbfCodePages, CpgFileThatIsNotKnown)
{
    for (const std::string& text : Texts{"", "no such page", "\x1B[31m", "//TRANSLIT"}) {
        kd_test::rewrite(Folder, "t.cpg", text);
        const Reading reading = read(2, "\x80");
        EXPECT_EQ(reading.only(), "'\xE2\x82\xAC'") << text;
        ASSERT_EQ(reading.Notes.size(), 1U);
        EXPECT_TRUE(reading.Notes[0].starts_with("code page CP1252: t.cpg names the unknown code page \""));
        EXPECT_EQ(reading.Notes[0].find('\x1B'), std::string::npos);
    }
    kd_test::rewrite(Folder, "t.cpg", std::string(1000000, '1'));
    EXPECT_EQ(read(2, "\x80").only(), "'\xE2\x82\xAC'");
}

TEST_F(DbfCodePages, OptionComesFirst)
{
    Folder.write("t.cpg", "UTF-8");
    Options.Encoding = "852";
    const Reading reading = read(3, "\xA9");
    EXPECT_EQ(reading.only(), "'\xC4\x99'");
    EXPECT_EQ(reading.Notes, (Texts{"code page CP852: as requested"}));
}

TEST_F(DbfCodePages, LanguageDriver)
{
    EXPECT_EQ(readDriver("DB866RU0", "\x8C").only(), "'\xD0\x9C'");
    EXPECT_EQ(readDriver("db866ru0", "\x8C").Notes, (Texts{"code page CP866: language driver db866ru0"}));
    EXPECT_EQ(readDriver("DB437US0", "\xE1").only(), "'\xC3\x9F'");
    EXPECT_EQ(readDriver("DB437GR0", "\x80").only(), "'\xCE\x91'");
    EXPECT_EQ(readDriver("DB867CZ0", "\x87").only(), "'\xC4\x8D'");
    EXPECT_EQ(readDriver("DBWINUS0", "\x80").only(), "'\xE2\x82\xAC'");
    EXPECT_EQ(readDriver("FOXDE437", "\xE1").only(), "'\xC3\x9F'");
    EXPECT_EQ(readDriver("FOXCZ895", "\x87").only(), "'\xC4\x8D'");
    EXPECT_EQ(readDriver("FOXCZWIN", "\x8A").only(), "'\xC5\xA0'");
    EXPECT_EQ(readDriver("FOXDEWIN", "\x80").only(), "'\xE2\x82\xAC'");
    EXPECT_EQ(readDriver("dbHebrew", "\x80").only(), "'\xD7\x90'");
    EXPECT_EQ(readDriver("DB866RU0", "\xE1", 1).only(), "'\xC3\x9F'") << "the language byte decides";
    for (const std::string driver : {"BGDB868", "DB999XX0", "DB", "FOX", "x\x1B"}) {
        const Reading reading = readDriver(driver, "\x80");
        EXPECT_EQ(reading.only(), "'\xE2\x82\xAC'") << driver;
        EXPECT_TRUE(reading.Notes.at(0).ends_with(" is not known")) << reading.Notes[0];
        EXPECT_EQ(reading.Notes[0].find('\x1B'), std::string::npos);
    }
}

TEST_F(DbfCodePages, BytesThatThePageLacks)
{
    Reading reading = read(3, "a\x81"
                              "b\x8D");
    EXPECT_EQ(reading.only(), "'a\xEF\xBF\xBD"
                              "b\xEF\xBF\xBD'");
    ASSERT_EQ(reading.Flaws.size(), 1U);
    Options.OnEncodingError = EncodingErrors::Escape;
    EXPECT_EQ(read(3, "a\x81"
                      "b")
                  .only(),
              "'a\\x81b'");
    Options.OnEncodingError = EncodingErrors::Strict;
    reading = read(3, "a\x81"
                      "b");
    EXPECT_EQ(reading.only(), "unreadable");
    EXPECT_EQ(reading.Flaws.size(), 1U);
}

TEST_F(DbfCodePages, KindsOfFlaws)
{
    XbaseFile file(3, {{"T", 'C', 2}});
    file.Language = 3;
    file.record({"\x81"});
    const std::string path = Folder.write("k.dbf", file.bytes());
    const auto kind = [&path](EncodingErrors errors) {
        SourceOptions options;
        options.OnEncodingError = errors;
        const auto source = openSource(path, options);
        return source->next() ? source->record().Flaws.at(0).Kind : FlawKind::RecordCut;
    };
    EXPECT_EQ(kind(EncodingErrors::Replace), FlawKind::Replaced);
    EXPECT_EQ(kind(EncodingErrors::Escape), FlawKind::Escaped);
    EXPECT_EQ(kind(EncodingErrors::Strict), FlawKind::Unreadable);
}

TEST_F(DbfCodePages, DoubleByteCharacterCutByTheEndOfTheField)
{
    const Reading reading = read(0x7B, "ab\x95");
    EXPECT_EQ(reading.only(), "'ab\xEF\xBF\xBD'");
    EXPECT_EQ(reading.Flaws.size(), 1U);
    EXPECT_EQ(read(0x7B, "\x95\x5C\x8E\xA6").only(), "'\xE8\xA1\xA8\xE7\xA4\xBA'");
}

TEST_F(DbfCodePages, PagesThatAreNotBasedOnAscii)
{
    Options.Encoding = "IBM037";
    EXPECT_EQ(read(0, "\xC1\xC2\x40\x40").only(), "'AB  '") << "blanks of this page are not padding";
}

TEST_F(DbfCodePages, NamesOfColumns)
{
    XbaseFile file(3, {{"STRA\xE1"
                        "E",
                        'C', 2},
                       {"X\x81", 'C', 1}});
    file.Language = 1;
    file.record({"a", "b"});
    Reading reading = kd_test::readFileAs(Folder.write("n.dbf", file.bytes()));
    EXPECT_EQ(reading.Names, (Texts{"STRA\xC3\x9F"
                                    "E",
                                    "X\xC3\xBC"}));
    EXPECT_EQ(reading.Notes, (Texts{"code page CP437: language byte 01"}));
    file.Language = 3;
    reading = kd_test::readFileAs(kd_test::rewrite(Folder, "n.dbf", file.bytes()));
    EXPECT_EQ(reading.Names.at(1), "X\xEF\xBF\xBD");
    ASSERT_EQ(reading.Notes.size(), 2U);
    EXPECT_TRUE(reading.Notes[0].starts_with("loss: name of column 2: ")) << reading.Notes[0];
}

}  // namespace

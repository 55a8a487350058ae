#include "support/shown.h"

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

using kd_lib::exchange::CodePage;
using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::isAscii;
using kd_lib::exchange::OptionError;
using kd_test::replacement;
using Outcome = CodePage::Decoded::Outcome;

namespace {

std::string decoded(const char* page, std::string_view bytes, EncodingErrors onError = EncodingErrors::Replace)
{
    std::string scratch;
    return std::string(CodePage(page).decode(bytes, onError, scratch).Text);
}

Outcome outcome(const char* page, std::string_view bytes, EncodingErrors onError = EncodingErrors::Replace)
{
    std::string scratch;
    return CodePage(page).decode(bytes, onError, scratch).Result;
}

std::string nameOf(const char* name)
{
    return CodePage(name).name();
}

TEST(CodePage, NamesInManySpellings)
{
    EXPECT_EQ(nameOf("cp852"), "CP852");
    EXPECT_EQ(nameOf("852"), "CP852");
    EXPECT_EQ(nameOf(" 1252\r\n"), "CP1252");
    EXPECT_EQ(nameOf("ANSI 1252"), "CP1252");
    EXPECT_EQ(nameOf("windows-1252"), "CP1252");
    EXPECT_EQ(nameOf("UTF8"), "UTF-8");
    EXPECT_EQ(nameOf("utf-8"), "UTF-8");
    EXPECT_EQ(nameOf("65001"), "UTF-8");
    EXPECT_EQ(nameOf("ISO 88591"), "ISO-8859-1");
    EXPECT_EQ(nameOf("ISO-8859-1"), "ISO-8859-1");
    EXPECT_EQ(nameOf("88591"), "ISO-8859-1");
    EXPECT_EQ(nameOf("885915"), "ISO-8859-15");
    EXPECT_EQ(nameOf("8859-15"), "ISO-8859-15");
    EXPECT_EQ(nameOf("28592"), "ISO-8859-2");
    EXPECT_EQ(nameOf("latin2"), "LATIN2");
    EXPECT_EQ(nameOf("shiftjis"), "CP932");
    EXPECT_EQ(nameOf("Shift_JIS"), "CP932");
    EXPECT_EQ(nameOf("LDID/87"), "CP1252");
    EXPECT_EQ(nameOf("ldid/ 104"), "Kamenicky");
    EXPECT_EQ(nameOf("KAMENICKY"), "Kamenicky");
    EXPECT_EQ(nameOf("mazovia"), "Mazovia");
    EXPECT_EQ(nameOf("macgreek"), "MacGreek");
    EXPECT_EQ(nameOf("10007"), "MAC-CYRILLIC");
    EXPECT_EQ(nameOf("koi8-r"), "KOI8-R");
}

TEST(CodePage, AllNamesOfAPage)
{
    for (const char* name : {"kamenicky", "keybcs2", "895", "cp895", "867", "cp867"}) {
        EXPECT_EQ(nameOf(name), "Kamenicky") << name;
    }
    for (const char* name : {"mazovia", "620", "cp620", "790", "cp790"}) {
        EXPECT_EQ(nameOf(name), "Mazovia") << name;
    }
    for (const char* name : {"macgreek", "x-mac-greek", "10006", "cp10006"}) {
        EXPECT_EQ(nameOf(name), "MacGreek") << name;
    }
    for (const char* prefix : {"", "cp", "ansi", "oem", "ibm", "dos", "win", "windows-", "code page ", "x-cp"}) {
        EXPECT_EQ(nameOf((prefix + std::string("866")).c_str()), "CP866") << prefix;
    }
    const std::pair<const char*, const char*> numbered[] = {{"10000", "MACINTOSH"},  {"10029", "MAC-CENTRALEUROPE"},
                                                            {"20127", "ASCII"},      {"20866", "KOI8-R"},
                                                            {"21866", "KOI8-U"},     {"54936", "GB18030"},
                                                            {"1200", "UTF-16LE"},    {"1201", "UTF-16BE"},
                                                            {"51932", "EUC-JP"},     {"51949", "EUC-KR"},
                                                            {"28605", "ISO-8859-15"}};
    for (const auto& [number, name] : numbered) {
        EXPECT_EQ(nameOf(number), name) << number;
    }
}

TEST(CodePage, UnknownNamesAreOptionErrors)
{
    for (const char* name : {"", " ", "nonsense", "cp99999", "LDID/0", "LDID/999", "LDID/", "utf-8//TRANSLIT", "cp"}) {
        EXPECT_THROW(CodePage{name}, OptionError) << name;
        EXPECT_FALSE(CodePage::knows(name)) << name;
    }
    try {
        CodePage("klingon");
    } catch (const OptionError& error) {
        EXPECT_STREQ(error.what(), "unknown code page: klingon");
    }
}

TEST(CodePage, EveryLanguageByteThatNamesAPageNamesAKnownOne)
{
    int known = 0;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string name = CodePage::nameOfLanguageByte(static_cast<std::uint8_t>(byte));
        EXPECT_TRUE(name.empty() || CodePage::knows(name)) << byte << ' ' << name;
        known += name.empty() ? 0 : 1;
    }
    EXPECT_EQ(known, 79);
    EXPECT_EQ(CodePage::nameOfLanguageByte(0x65), "CP866");
    EXPECT_EQ(CodePage::nameOfLanguageByte(0x66), "CP865");
    EXPECT_EQ(CodePage::nameOfLanguageByte(0x57), "CP1252");
    EXPECT_EQ(CodePage::nameOfLanguageByte(0), "");
}

TEST(CodePage, PagesOfOneByteACharacter)
{
    EXPECT_EQ(decoded("cp852", "P\xA9\xA1li\xE7 \x9Clu\x9Cou\xFDk\xEC"),
              "P\xC4\x99\xC3\xADli\xC5\xA1 \xC5\xA5lu\xC5\xA5ou\xC5\x99k\xC3\xBD");
    EXPECT_EQ(decoded("cp1250", "\x8A\x9D\xE1\xF8"), "\xC5\xA0\xC5\xA5\xC3\xA1\xC5\x99");
    EXPECT_EQ(decoded("cp866", "\x8F\xE0"), "\xD0\x9F\xD1\x80");
    EXPECT_EQ(decoded("cp874", "\x80\xA1"), "\xE2\x82\xAC\xE0\xB8\x81");
    EXPECT_EQ(decoded("kamenicky", "\x80\x8D\xFF"), "\xC4\x8C\xC4\xBA\xC2\xA0");
    EXPECT_EQ(decoded("mazovia", "\x86\xA7\xE1"), "\xC4\x85\xC5\xBC\xC3\x9F");
    EXPECT_EQ(decoded("macgreek", "\xA1\x9C"), "\xCE\x93\xE2\x82\xAC");
    EXPECT_TRUE(CodePage("kamenicky").isSingleByte());
    EXPECT_TRUE(CodePage("cp437").isSingleByte());
    EXPECT_TRUE(CodePage("cp437").isAsciiBased());
    EXPECT_FALSE(CodePage("cp932").isSingleByte());
    EXPECT_FALSE(CodePage("utf-8").isSingleByte());
}

TEST(CodePage, EveryCharacterOfThePagesThatIconvLacks)
{
    std::string upper;
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        upper += static_cast<char>(byte);
    }
    const std::string fromB0 = "░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧"
                               "╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀αßΓπΣσµτΦΘΩδ∞φε∩"
                               "≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";
    EXPECT_EQ(decoded("kamenicky", upper), "ČüéďäĎŤčěĚĹÍľĺÄÁÉžŽôöÓůÚýÖÜŠĽÝŘť"
                                           "áíóúňŇŮÔšřŕŔ¼§«»" +
                                               fromB0);
    EXPECT_EQ(decoded("mazovia", upper), "ÇüéâäàąçêëèïîćÄĄĘęłôöĆûùŚÖÜ¢Ł¥śƒ"
                                         "ŹŻóÓńŃźż¿⌐¬½¼¡«»" +
                                             fromB0);
    EXPECT_EQ(decoded("macgreek", upper), "Ä¹²É³ÖÜ΅àâä΄¨çéèêë£™îï•½‰ôö¦€ùûü"
                                          "†ΓΔΘΛΞΠß®©ΣΪ§≠°·Α±≤≥¥ΒΕΖΗΙΚΜΦΫΨΩ"
                                          "άΝ¬ΟΡ≈Τ«»…\u00A0ΥΧΆΈœ–―“”‘’÷ΉΊΌΎέήίόΏ"
                                          "ύαβψδεφγηιξκλμνοπώρστθωςχυζϊϋΐΰ\u00AD");
}

TEST(CodePage, LettersAreNotJoinedWithTheirMarks)
{
    // The converters of these pages hold a letter back, to join it with a mark that follows.
    EXPECT_EQ(decoded("cp1255", "\xE0\xC7\xCB"), "\xD7\x90\xD6\xB7\xD6\xBB");
    EXPECT_EQ(decoded("cp1258", "a\xCC"), "a\xCC\x80");
    EXPECT_TRUE(CodePage("cp1255").isSingleByte());
}

TEST(CodePage, ADecodedTextViewsItsBytesWhereTheyAreUtf8Already)
{
    const CodePage page("cp852");
    std::string scratch;
    const std::string_view bytes = "plain text";
    EXPECT_EQ(page.decode(bytes, EncodingErrors::Strict, scratch).Text.data(), bytes.data());
    const std::string_view utf8 = "\xC5\xA1";
    EXPECT_EQ(CodePage("utf8").decode(utf8, EncodingErrors::Strict, scratch).Text.data(), utf8.data());
}

TEST(CodePage, AByteThatThePageLacks)
{
    EXPECT_EQ(decoded("cp1252", "a\x81z\x9D"), "a" + replacement + "z" + replacement);
    EXPECT_EQ(outcome("cp1252", "a\x81z"), Outcome::Replaced);
    EXPECT_EQ(decoded("cp1252", "a\x81z\x9D\xE9", EncodingErrors::Escape), "a\\x81z\\x9D\xC3\xA9");
    EXPECT_EQ(outcome("cp1252", "a\x81z", EncodingErrors::Escape), Outcome::Escaped);
    EXPECT_EQ(decoded("cp1252", "a\x81z", EncodingErrors::Strict), "");
    EXPECT_EQ(outcome("cp1252", "a\x81z", EncodingErrors::Strict), Outcome::Failed);
    EXPECT_EQ(outcome("cp1252", "a\xE9z", EncodingErrors::Strict), Outcome::Known);
    EXPECT_EQ(decoded("ascii", "\xE9"), replacement);
}

TEST(CodePage, TheReasonNamesTheFirstUnknownByte)
{
    const CodePage page("1252");
    std::string scratch;
    const std::string_view bytes = "\xE9 \x8D\x81";
    const CodePage::Decoded text = page.decode(bytes, EncodingErrors::Replace, scratch);
    EXPECT_EQ(text.FirstUnknown, 2U);
    EXPECT_EQ(page.reason(bytes, text), "byte 0x8D is not in code page CP1252");
    const CodePage utf8("utf-8");
    EXPECT_EQ(utf8.reason("a\xFF", utf8.decode("a\xFF", EncodingErrors::Strict, scratch)), "byte 0xFF is not UTF-8");
}

TEST(CodePage, MalformedUtf8)
{
    EXPECT_EQ(decoded("utf-8", "a\xC3"), "a" + replacement);
    EXPECT_EQ(decoded("utf-8", "\xE2\x82z"), replacement + "z");
    EXPECT_EQ(decoded("utf-8", "\xE2\x82z", EncodingErrors::Escape), "\\xE2\\x82z");
    EXPECT_EQ(decoded("utf-8", "\xC0\x80"), replacement + replacement);
    EXPECT_EQ(decoded("utf-8", "\xED\xA0\x80"), replacement + replacement + replacement);
    EXPECT_EQ(decoded("utf-8", "\xF4\x90\x80\x80"), replacement + replacement + replacement + replacement);
    EXPECT_EQ(decoded("utf-8", "\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");
    EXPECT_EQ(decoded("utf-8", "\xF0\x9F\x98"), replacement);
    EXPECT_EQ(outcome("utf-8", "\xF4\x8F\xBF\xBF", EncodingErrors::Strict), Outcome::Known);
    EXPECT_EQ(outcome("utf-8", "\xE0\x9F\xBF", EncodingErrors::Strict), Outcome::Failed);
}

TEST(CodePage, DoubleByteCharacters)
{
    EXPECT_EQ(decoded("cp932", "\x93\xFA\x96{\x83\\"), "\xE6\x97\xA5\xE6\x9C\xAC\xE3\x82\xBD");
    EXPECT_EQ(decoded("gbk", "\xC4\xE3"), "\xE4\xBD\xA0");
    EXPECT_EQ(decoded("cp949", "\xB0\xA1"), "\xEA\xB0\x80");
    EXPECT_EQ(decoded("cp950", "\xA4\xA4"), "\xE4\xB8\xAD");
}

TEST(CodePage, ADoubleByteCharacterCutByTheEndIsOneReplacement)
{
    EXPECT_EQ(decoded("gbk", "ab\xC4\xE3\xC4"), "ab\xE4\xBD\xA0" + replacement);
    EXPECT_EQ(outcome("gbk", "ab\xC4", EncodingErrors::Strict), Outcome::Failed);
    EXPECT_EQ(decoded("gbk", "ab\xC4", EncodingErrors::Escape), "ab\\xC4");
}

TEST(CodePage, ADoubleByteCharacterThatThePageLacks)
{
    EXPECT_EQ(decoded("cp932", "x\x81\xADy"), "x" + replacement + "y");
    EXPECT_EQ(decoded("cp932", "x\x81\xADy", EncodingErrors::Escape), "x\\x81\\xADy");
    EXPECT_EQ(decoded("gbk", "x\xC4 y"), "x" + replacement + " y");  // the blank is not a second byte, so it stays
}

TEST(CodePage, BytesThatBecomeSeveralCharacters)
{
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        expected += "\u0BB8\u0BCD\u0BB0\u0BC0";
    }
    EXPECT_TRUE(decoded("tscii", std::string(1000, '\x82')) == expected) << "twelve bytes for one";
    for (std::size_t size = 1; size < 100; ++size) {
        EXPECT_EQ(decoded("tscii", std::string(size, '\x82')), expected.substr(0, size * 12)) << size;
    }
    std::string escapes;
    for (int i = 0; i < 9; ++i) {
        escapes += "\\xFF";
    }
    std::string scratch;
    const std::string bytes = "\x82\x82" + std::string(9, '\xFF');
    const std::string_view text = CodePage("tscii").decode(bytes, EncodingErrors::Escape, scratch).Text;
    EXPECT_EQ(text, expected.substr(0, 24) + escapes);
    EXPECT_LE(text.size(), scratch.size());
}

TEST(CodePage, PagesThatAreNotAsciiBased)
{
    EXPECT_FALSE(CodePage("utf-16le").isAsciiBased());
    EXPECT_EQ(decoded("utf-16le", std::string_view("a\0\xE1\0", 4)), "a\xC3\xA1");
    EXPECT_EQ(decoded("utf-16le", std::string_view("a\0\xE1", 3)), "a" + replacement);
    EXPECT_FALSE(CodePage("ebcdic-us").isAsciiBased());
    EXPECT_EQ(decoded("ebcdic-us", "\xC1\xC2"), "AB");
    EXPECT_FALSE(CodePage("iso-2022-jp").isAsciiBased());
    EXPECT_EQ(decoded("iso-2022-jp", "\x1B$B$\"\x1B(Ba"), "\xE3\x81\x82"
                                                          "a");
}

TEST(CodePage, AsciiIsFoundAtEveryLengthAndPlace)
{
    for (std::size_t length = 0; length < 40; ++length) {
        EXPECT_TRUE(isAscii(std::string(length, '\x7F')));
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'a');
            text[at] = '\x80';
            EXPECT_FALSE(isAscii(text)) << length << ' ' << at;
        }
    }
}

TEST(CodePage, MovesAndKeepsItsPage)
{
    CodePage first("cp852");
    CodePage second(std::move(first));
    first = CodePage("cp866");
    std::string scratch;
    EXPECT_EQ(second.decode("\x9C", EncodingErrors::Strict, scratch).Text, "\xC5\xA5");
    EXPECT_EQ(first.decode("\x8F", EncodingErrors::Strict, scratch).Text, "\xD0\x9F");
}

}  // namespace

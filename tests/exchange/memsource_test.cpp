#include "support/scoped_directory.h"
#include "support/shown.h"
#include "support/source_file.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/memsource.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <string>

using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::Error;
using kd_lib::exchange::FlawKind;
using kd_lib::exchange::MemSource;
using kd_lib::exchange::OptionError;
using kd_lib::exchange::SourceOptions;
using kd_test::errorOf;
using kd_test::ScopedDirectory;
using kd_test::shownColumns;
using kd_test::shownNotes;
using kd_test::shownRecords;
using kd_test::SourceFile;

namespace {

constexpr char highBit = '\x80';
const std::string endMark = "\x1A";

char withHighBit(char type)
{
    return static_cast<char>(static_cast<unsigned char>(type) | static_cast<unsigned char>(highBit));
}

std::string bytesOf(double number)
{
    const auto bits = std::bit_cast<std::uint64_t>(number);
    std::string bytes;
    for (int i = 0; i < 8; ++i) {
        bytes += static_cast<char>(bits >> (8 * i) & 0xFFU);
    }
    return bytes;
}

std::string header(const std::string& name, char type, std::size_t length, int high = -1)
{
    std::string bytes(32, '\0');
    bytes.replace(0, name.size(), name);
    bytes[11] = type;
    bytes[16] = static_cast<char>(length & 0xFFU);
    bytes[17] = static_cast<char>(high < 0 ? length >> 8U : static_cast<unsigned>(high));
    return bytes;
}

std::string text(const std::string& name, const std::string& value)
{
    return header(name, withHighBit('C'), value.size() + 1) + value + '\0';
}

std::string number(const std::string& name, double value)
{
    return header(name, withHighBit('N'), 10, 0) + bytesOf(value);
}

std::string date(const std::string& name, double julian)
{
    return header(name, withHighBit('D'), 1, 0) + bytesOf(julian);
}

std::string boolean(const std::string& name, char value)
{
    return header(name, withHighBit('L'), 1, 0) + value;
}

class Memory : public SourceFile<MemSource> {
public:
    explicit Memory(const std::string& bytes, const SourceOptions& options = {}) : SourceFile("m.mem", bytes, options)
    {
    }
};

std::string variablesOf(const std::string& bytes, const SourceOptions& options = {})
{
    return kd_test::recordsIn<MemSource>("m.mem", bytes, options);
}

std::string notesOfMemory(const std::string& bytes, const SourceOptions& options = {})
{
    return kd_test::notesIn<MemSource>("m.mem", bytes, options);
}

std::string failureOfMemory(const std::string& bytes, const SourceOptions& options = {})
{
    return kd_test::failureIn<MemSource>("m.mem", bytes, options);
}

TEST(MemSource, VariablesOfDBase)
{
    Memory memory(text("NAME", "Ann  ") + number("PI", 3.14) + number("COUNT", 1000000) + date("BORN", 2451544) +
                  date("NEVER", 0) + boolean("YES", 1) + boolean("NO", 0) + text("TENLETTERS", "") + endMark);
    EXPECT_EQ(shownColumns(memory.source), "name:text type:text value:text");
    EXPECT_EQ(shownRecords(memory.source), "1 <NAME> <text> <Ann  >\n"
                                           "2 <PI> <number> <3.14>\n"
                                           "3 <COUNT> <number> <1000000>\n"
                                           "4 <BORN> <date> <1999-12-31>\n"
                                           "5 <NEVER> <date> NULL\n"
                                           "6 <YES> <boolean> <true>\n"
                                           "7 <NO> <boolean> <false>\n"
                                           "8 <TENLETTERS> <text> <>\n");
    EXPECT_EQ(shownNotes(memory.source), "");
    EXPECT_EQ(memory.source.recordsRead(), 8U);
    EXPECT_EQ(memory.source.facts()[0].Value, "memory variables, form of dBase III or Clipper");
}

TEST(MemSource, TheExampleBytesOfTheFormat)
{
    const std::string value("\x66\x66\x66\x66\x66\x66\xC6\x3F", 8);
    EXPECT_EQ(variablesOf(header("X", withHighBit('N'), 14, 3) + value + endMark), "1 <X> <number> <0.175>\n");
    EXPECT_EQ(variablesOf(header("X", withHighBit('C'), 2) + std::string("@\0", 2) + endMark), "1 <X> <text> <@>\n");
    const std::string longText(255, 'a');
    EXPECT_EQ(variablesOf(header("X", withHighBit('C'), 0, 1) + longText + '\0' + endMark),
              "1 <X> <text> <" + longText + ">\n");
}

TEST(MemSource, AnEmptyFileIsItsEndMark)
{
    EXPECT_EQ(variablesOf(endMark), "");
    EXPECT_EQ(notesOfMemory(endMark), "");
    EXPECT_EQ(failureOfMemory(""), "m.mem: not a .mem file: it is empty, without an end mark");
}

TEST(MemSource, TextsInTheirCodePage)
{
    const std::string bytes = text("N", "\xE9\x81") + endMark;
    EXPECT_EQ(variablesOf(bytes), "1 <N> <text> <\xC3\xA9\xEF\xBF\xBD> !byte 0x81 is not in code page CP1252\n");
    EXPECT_EQ(notesOfMemory(bytes), "code page CP1252: the file names none\n");
    EXPECT_EQ(variablesOf(text("N", "\x9C") + endMark, {.Encoding = "852"}), "1 <N> <text> <\xC5\xA5>\n");
    EXPECT_EQ(notesOfMemory(bytes + number("X", 1), {.Records = {1, 1}}), "code page CP1252: the file names none\n");
    EXPECT_EQ(notesOfMemory(text("N", "\x9C") + endMark, {.Encoding = "852"}), "code page CP852: as requested\n");
    EXPECT_EQ(variablesOf(text("N", std::string("a\0b", 3)) + endMark), std::string("1 <N> <text> <a\0b>\n", 19));
}

TEST(MemSource, ValuesThatAreInvalidForTheirType)
{
    EXPECT_EQ(variablesOf(date("D", 1) + date("E", 2451544.5) + date("F", 5373485) + boolean("L", 2) +
                          number("N", std::numeric_limits<double>::quiet_NaN()) + endMark),
              "1 <D> <date> UNREADABLE !not a day of the calendar\n"
              "2 <E> <date> UNREADABLE !not a day of the calendar\n"
              "3 <F> <date> UNREADABLE !not a day of the calendar\n"
              "4 <L> <boolean> UNREADABLE !neither 0 nor 1\n"
              "5 <N> <number> <NaN>\n");
    EXPECT_EQ(variablesOf(date("A", 1721426) + date("Z", 5373484) + endMark),
              "1 <A> <date> <0001-01-01>\n2 <Z> <date> <9999-12-31>\n");
}

TEST(MemSource, DamageIsNamed)
{
    const std::string first = number("A", 1);
    EXPECT_EQ(notesOfMemory(first), "the end mark is missing\n");
    EXPECT_EQ(notesOfMemory(first + endMark + "rest"), "there are bytes after the end mark\n");
    for (std::size_t cut = 1; cut < 40; ++cut) {
        EXPECT_EQ(variablesOf(first + first.substr(0, cut)),
                  "1 <A> <number> <1>\n2 UNREADABLE UNREADABLE UNREADABLE !the file ends within the variable\n")
            << cut;
    }
    const std::string strange = header("ARR", 'A', 3);
    EXPECT_EQ(variablesOf(first + strange + first + endMark), "1 <A> <number> <1>\n");
    EXPECT_EQ(notesOfMemory(first + strange + first + endMark),
              "the variable at byte 40 is of the unknown type 41: it and everything after it cannot be read (loss)\n");
    EXPECT_EQ(failureOfMemory(strange), "m.mem: byte 11: not a .mem file: 41 is not a variable type");
    EXPECT_EQ(failureOfMemory(std::string(64, '\0')), "m.mem: byte 11: not a .mem file: 00 is not a variable type");
    EXPECT_EQ(variablesOf("abc"), "1 UNREADABLE UNREADABLE UNREADABLE !the file ends within the variable\n");
    Memory cut(first.substr(0, 35));
    ASSERT_TRUE(cut.source.next());
    EXPECT_EQ(cut.source.record().Flaws[0].Kind, FlawKind::RecordCut);
    EXPECT_FALSE(cut.source.next());
    EXPECT_FALSE(cut.source.next());
}

std::string foxText(const std::string& name, const std::string& value)
{
    return header(name, 'C', value.size() + 1) + value + '\0';
}

TEST(MemSource, VariablesOfFoxPro)
{
    std::string longName = header("", 'n', 10, 0);
    longName += std::string("\x12\0", 2) + "AVERYLONGNAMEOFONE" + bytesOf(-2.5);
    std::string bigEndian = header("BIG", 'C', 0, 0);
    bigEndian.replace(13, 4, std::string("\0\0\x01\x2D", 4));
    Memory memory(foxText("NAME", "Ann") + header("N", 'N', 10, 0) + bytesOf(7) + longName + header("D", 'D', 8, 0) +
                  bytesOf(2451544) + header("L", 'L', 1, 0) + '\x01' + foxText("LONG", std::string(300, 'x')) +
                  bigEndian + std::string(300, 'y') + '\0' + endMark);
    EXPECT_EQ(shownRecords(memory.source), "1 <NAME> <text> <Ann>\n"
                                           "2 <N> <number> <7>\n"
                                           "3 <AVERYLONGNAMEOFONE> <number> <-2.5>\n"
                                           "4 <D> <date> <1999-12-31>\n"
                                           "5 <L> <boolean> <true>\n"
                                           "6 <LONG> <text> <" +
                                               std::string(300, 'x') +
                                               ">\n"
                                               "7 <BIG> <text> <" +
                                               std::string(300, 'y') + ">\n");
    EXPECT_EQ(memory.source.facts()[0].Value, "memory variables, form of FoxPro");
    for (std::size_t size = 0; size < 20; ++size) {
        const std::string cut = longName.substr(0, 33 + size);
        EXPECT_EQ(variablesOf(cut), "1 UNREADABLE UNREADABLE UNREADABLE !the file ends within the variable\n") << size;
    }
}

TEST(MemSource, AnEmptyTextOfFoxProIsOneZeroByteWhateverElseItsHeaderHolds)
{
    std::string empty = header("E", 'C', 1);
    empty[15] = '\x01';  // as a length of four bytes it would be 257
    const std::string next = foxText("T", std::string(223, 'y'));
    ASSERT_EQ(next.size(), 256U) << "its zero byte is where a text of 257 bytes would end";
    EXPECT_EQ(variablesOf(empty + '\0' + next + endMark),
              "1 <E> <text> <>\n2 <T> <text> <" + std::string(223, 'y') + ">\n");
}

TEST(MemSource, AHugeLengthReadsNothing)
{
    std::string bytes = header("C", 'C', 0xFFFF);
    bytes.replace(13, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(variablesOf(bytes + "abc"), "1 UNREADABLE UNREADABLE UNREADABLE !the file ends within the variable\n");
}

TEST(MemSource, VariablesAsTexts)
{
    const auto variable = [](const std::string& name, char type, std::size_t length, const std::string& value) {
        std::string bytes = header("", type, length);
        bytes.replace(1, name.size(), name);
        return bytes + value;
    };
    const std::string bytes = variable("USER", 'C', 7, std::string("Ingrid\0", 7)) + variable("VISITS", 'N', 0, "42@") +
                              variable("SINCE", 'D', 9, std::string("20240305\0", 9)) +
                              variable("ACTIVE", 'L', 2, std::string("T\0", 2)) + variable("BAD", 'N', 0, "4x@");
    EXPECT_EQ(variablesOf(bytes), "1 <USER> <text> <Ingrid>\n2 <VISITS> <number> <42>\n3 <SINCE> <date> <2024-03-05>\n"
                                  "4 <ACTIVE> <boolean> <true>\n5 <BAD> <number> UNREADABLE !not a number\n");
    EXPECT_EQ(notesOfMemory(bytes), "");
    EXPECT_EQ(variablesOf(variable("VISITS", 'N', 0, "42")),
              "1 UNREADABLE UNREADABLE UNREADABLE !the file ends within the variable\n");
}

TEST(MemSource, OptionsOriginsSeeks)
{
    const std::string bytes = number("A", 1) + text("B", "x\x81") + number("C", 3) + endMark;
    EXPECT_EQ(variablesOf(bytes, {.Select = {"VALUE"}, .Records = {2, 3}, .OnEncodingError = EncodingErrors::Strict}),
              "2 UNREADABLE !byte 0x81 is not in code page CP1252\n3 <3>\n");
    EXPECT_EQ(variablesOf(bytes, {.Records = {3, 9}, .Types = {{"value", "number"}}}), "3 <C> <number> 3\n");
    EXPECT_THROW(variablesOf(bytes, {.Header = false}), OptionError);
    Memory memory(bytes);
    memory.source.seek(2);
    ASSERT_TRUE(memory.source.next());
    EXPECT_EQ(memory.source.record().Offset, 40U);
    EXPECT_EQ(memory.source.origin(0).Offset, 40U);
    EXPECT_EQ(memory.source.origin(1).Offset, 51U);
    EXPECT_EQ(memory.source.origin(2).Offset, 72U);
    EXPECT_EQ(memory.source.origin(2).Bytes, "x\x81");
    memory.source.seek(1);
    memory.source.need({true, false, false});
    EXPECT_EQ(shownRecords(memory.source), "1 <A> NULL NULL\n2 <B> NULL NULL\n3 <C> NULL NULL\n");
}

}  // namespace

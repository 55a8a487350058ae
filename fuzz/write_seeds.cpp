// Writes the first inputs of every target: write_seeds FOLDER makes FOLDER/<target>/<number>.
// The settings of a target are the last bytes of its input.

#include "exchange/support/xbase_file.h"
#include "support/dbf_builder.h"
#include "support/mem_builder.h"

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <string>

namespace {

/// The seeds of one target.
class Seeds {
public:
    Seeds(const std::filesystem::path& corpus, const std::string& target) : Folder(corpus / target)
    {
        std::filesystem::create_directories(Folder);
    }

    void add(const std::string& content, std::initializer_list<int> settings)
    {
        std::string bytes = content;
        for (const int setting : settings) {
            bytes += static_cast<char>(setting);
        }
        std::ofstream out(Folder / std::to_string(Count), std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        ++Count;
    }

private:
    std::filesystem::path Folder;
    int Count = 0;
};

std::string stockTable()
{
    kd_test::DbfBuilder builder({{"NAME", 'C', 10}, {"PRICE", 'N', 8, 2}, {"BOUGHT", 'D', 8}, {"OPEN", 'L', 1}});
    builder.record({"bolt", "    1.25", "20240305", "T"});
    builder.deletedRecord({"nut's", "    0.30", "", "F"});
    builder.record({"washer", "", "20231231", "?"});
    return builder.bytes();
}

std::string allTypesTable()
{
    kd_test::DbfBuilder builder({{"C", 'C', 3},
                                 {"D", 'D', 8},
                                 {"F", 'F', 4, 1},
                                 {"L", 'L', 1},
                                 {"M", 'M', 10},
                                 {"N", 'N', 5},
                                 {"P", 'P', 10},
                                 {"X", 'X', 2, 0, 1}});
    builder.record({"c1", "20240101", "1.5", "Y", "", "7", "p1", "x1"});
    builder.record({"c2", "20240202", "2.5", "N", "12", "8", "p2", "x2"});
    return builder.bytes();
}

std::string narrowRecords()
{
    kd_test::DbfBuilder builder({{"A", 'C', 4}, {"B", 'C', 4}});
    builder.record({"r1c1", "r1c2"}).record({"r2c1", "r2c2"});
    builder.recordLength = 6;
    builder.terminator = false;
    builder.endMark = false;
    return builder.bytes();
}

void writeXbaseSeeds(const std::filesystem::path& corpus, const std::string& target)
{
    Seeds seeds(corpus, target);
    for (int settings = 0; settings < 4; ++settings) {
        seeds.add(stockTable(), {settings});
        seeds.add(allTypesTable(), {settings});
        seeds.add(narrowRecords(), {settings});
    }
    seeds.add(stockTable().substr(0, 50), {0});
    seeds.add("", {});
}

void writeMemorySeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "memory_fuzz");
    const std::string text = kd_test::memEntry("TITLE", 'C', 6, 0, std::string("Hello\0", 6));
    const std::string number = kd_test::memEntry("COUNT", 'N', 10, 2, "  42.50@");
    const std::string date = kd_test::memEntry("TODAY", 'D', 8, 0, "20240305");
    const std::string logical = kd_test::memEntry("READY", 'L', 1, 0, "T");
    seeds.add(text + number + date + logical + '\x1A', {});
    seeds.add(kd_test::memEntry("LONG", 'C', 255, 0, std::string(255, 'x')) + text, {});
    seeds.add(number.substr(0, 36), {});
}

/// Settings: record length, then flags.
void writePositionalSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "positional_fuzz");
    const std::string lines = "....bolt   blue  M8\n....nut    red   M6\r\n\nlast line without an end";
    seeds.add("4|11|17\n" + lines, {0, 1});
    seeds.add("2;4:6\n" + lines, {20, 0});
    seeds.add("1|2\nabcdefghijkl", {4, 4});
    seeds.add("8|x|12\n" + lines, {0, 3});
    seeds.add("-1|2147483647|-2147483648\n" + lines, {0, 0});
}

/// Settings: record length, mode, flags.
void writeDelimitedSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "delimited_fuzz");
    seeds.add("name|price|place\nbolt|1.25|left\nnut|0.30\nwasher||right|more\n", {0, 0, 0});
    seeds.add("\"Name\",Price\r\n\"bolt, long\",1.25\r\n", {0, 1, 2});
    seeds.add("a\tb\tc\n1\t2\t3\n\n4\t5\t6", {0, 2, 0});
    seeds.add("# note\nr1c1;r1c2\nr2c1;r2c2\n", {12, 3 + 4 * ';', 8 + 1});
    seeds.add("fixed,lines", {5, 1, 4 + 1});
}

/// Settings: block size.
void writeScriptSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "script_fuzz");
    seeds.add("CREATE TABLE t (a, b);\nINSERT INTO t VALUES ('r1;c1', 1);\n# note; it's nothing\nSELECT * FROM t;\n",
              {3});
    seeds.add("BEGIN; CREATE TABLE `order` (`select` int); INSERT INTO `order` VALUES (7); COMMIT;", {0});
    seeds.add(";;\n;SELEC;", {1});
    seeds.add("SELECT 'open", {15});
    seeds.add("SELECT 1, 'two', NULL, x'00ff', 2.5", {7});
    seeds.add("CREATE TABLE t (a PRIMARY KEY); BEGIN; INSERT INTO t VALUES (1); INSERT INTO t VALUES (1); COMMIT;",
              {2});
    seeds.add("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x FROM c", {2});
    seeds.add("DROP TABLE IF EXISTS t; CREATE TABLE t (a int); UPDATE t SET a = a + 1; DELETE FROM t; ROLLBACK;", {9});
}

/// Settings: length, type.
void writeLiteralSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "literal_fuzz");
    const char* const values[] = {"",       "   ",   "it's", "'quoted'", "20240305", "2024-03-05 11:12:13",
                                  "101112", "12345", "T",    "\t7.5 "};
    for (const char* value : values) {
        for (int type = 0; type < 17; ++type) {
            seeds.add(value, {12, type});
        }
    }
}

/// Arguments line by line, an empty line, and the bytes of every file that the arguments can name.
void writeProgramSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "program_fuzz");
    const std::string text = "name,price\r\nbolt,1.25\nnut,0.30\n";
    for (const char* work : {"show\ninput.dbf", "list\ninput.dbf\n--deleted", "script\ninput.dbf\n--key\nid",
                             "load\ninput.dbf\n--into\nnew.db\n--table\nt", "script\ninput.dbf\n--definition-only"}) {
        for (const std::string& table : {stockTable(), allTypesTable(), narrowRecords()}) {
            seeds.add(work + ("\n\n" + table), {});
        }
    }
    seeds.add("list\ninput.csv\n--unquote\n\n" + text, {});
    seeds.add("load\ninput.csv\n--into\nnew.db\n\n" + text, {});
    seeds.add("list\ninput.tsv\n\na\tb\n1\t2\n", {});
    seeds.add("list\ninput.txt\n--columns\n2|5\n\nabcdefghijklmnop\n0123456789\n", {});
    seeds.add("show\ninput.txt\n--columns\n2|5\n\nabc\n", {});
    seeds.add("memory\ninput.mem\n\n" + kd_test::memEntry("TITLE", 'C', 6, 0, std::string("Hello\0", 6)), {});
    seeds.add("import\ninput.sql\n--into\nnew.db\n\nBEGIN; CREATE TABLE t (a); INSERT INTO t VALUES (1); COMMIT;", {});
    seeds.add("import\ninput.sql\n--into\nempty.db\n\nCREATE TABLE t (a); INSERT INTO nowhere VALUES (1);", {});
    seeds.add("query\nempty.db\nSELECT 1 AS one, 'two' AS other\n\n", {});
    seeds.add("query\ninput.db\nSELECT * FROM sqlite_master\n\nSQLite format 3", {});
    seeds.add("--help\n\n", {});
    seeds.add("--version\n\n", {});
    seeds.add("", {});
}

/// Settings: block size.
void writeStatementSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "statement_fuzz");
    seeds.add("CREATE TABLE u(a); -- it's\nINSERT INTO u VALUES ('a;b') /* ; */;\n# don't\nSELECT `a;b`, [c;d] FROM u",
              {3});
    seeds.add(
        "CREATE TRIGGER x AFTER INSERT ON t BEGIN UPDATE t SET b = CASE a WHEN 1 THEN ';' END; END; INSERT INTO t "
        "VALUES (2, 3);",
        {0});
    seeds.add(
        "BEGIN; SAVEPOINT a; DELETE FROM t; ROLLBACK TO a; RELEASE a; COMMIT; SAVEPOINT b; INSERT INTO t VALUES (7, 8)",
        {7});
    seeds.add("INSERT OR ROLLBACK INTO t VALUES (1, 1); ROLLBACK; EXPLAIN COMMIT; \xEF\xBB\xBF;;", {15});
}

/// Settings: options, kind of file.
void writeTableSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "tables_fuzz");
    for (int settings = 0; settings < 9; ++settings) {
        seeds.add(stockTable(), {settings, 0});
        seeds.add(allTypesTable(), {settings, 0});
        seeds.add("id,name,born\n1,\"Quill, Ada\",1815-12-10\n2,,\n,\"a \"\"b\"\"\",x,y\n", {settings + 18, 1});
        seeds.add("1\t2.50\ttrue\n-7\t\tfalse\n", {settings + 9, 2});
    }
    seeds.add(narrowRecords(), {0, 0});
    seeds.add(kd_test::memEntry("TITLE", 'C', 6, 0, std::string("Hello\0", 6)) +
                  kd_test::memEntry("COUNT", 'N', 10, 2, "  42.50@") + '\x1A',
              {0, 3});
    seeds.add("bolt   7 left\nnut    9 right and longer than others\n\nx", {0, 4});
}

/// A variable of dBase III: the type has its high bit set, the name begins at byte 0.
std::string dbaseVariable(const std::string& name, unsigned char type, const std::string& value)
{
    std::string bytes(32, '\0');
    bytes.replace(0, name.size(), name);
    bytes[11] = static_cast<char>(type);
    bytes[16] = static_cast<char>(value.size());
    return bytes + value;
}

void writeSourceSeeds(const std::filesystem::path& corpus)
{
    Seeds delimited(corpus, "delimitedsource_fuzz");
    for (const int more : {0, 1, 2, 33, 97, 161, 225}) {
        delimited.add("a,b;c\r\n1,\"x\"\"y\nz\";2024-02-29\n\n,NA;\"\"\n\xE9\x83|,\xC3\xA9;1.50\n\x1A", {more, 1});
        delimited.add("a,b\n1,2\n3\n4,5,6\n007,'q'\n", {more, 13});
    }
    delimited.add(std::string("\xFF\xFE"
                              "a\0,\0b\0\n\0001\0,\0\0\xD8\n\0",
                              18),
                  {4, 129});
    Seeds fixed(corpus, "fixedsource_fuzz");
    fixed.add("a:1-4,b:6-9\nAnn  Rome\r\nBob\n\n007  x\xC3\xA9yz\n", {16});
    fixed.add("5|12|20\n0001 oslo  -3.5    nw 4\r\n\x1A", {0});
    fixed.add("a:1-8\n20240229\n20230229\r", {16});
    Seeds memory(corpus, "memsource_fuzz");
    const std::string number("\x66\x66\x66\x66\x66\x66\xC6\x3F", 8);
    const std::string day("\0\0\0\0\x2C\xB4\x42\x41", 8);
    memory.add(dbaseVariable("NAME", 0xC3, std::string("Ann\0", 4)) + dbaseVariable("N", 0xCE, number) +
                   dbaseVariable("D", 0xC4, day) + dbaseVariable("L", 0xCC, "\x01") + "\x1A",
               {});
    memory.add(dbaseVariable("NAME", 'C', std::string("Ann\0", 4)) +
                   dbaseVariable("", 'n', std::string("\x0C\0LONGVARIABLE", 14) + number) + "\x1A",
               {});
    memory.add(kd_test::memEntry("USER", 'C', 7, 0, std::string("Ingrid\0", 7)) +
                   kd_test::memEntry("VISITS", 'N', 0, 0, "42@"),
               {});
}

/// Settings: the size of the memo file at the content's end, low byte before high byte, then two bytes of options.
void writeXbaseSourceSeeds(const std::filesystem::path& corpus)
{
    using kd_test::little;
    Seeds tables(corpus, "dbfsource_fuzz");
    const auto add = [&tables](const kd_test::XbaseFile& table, const std::string& memo, bool fox) {
        for (const int flags : {0, 1, 2, 6, 8, 64, 96, 130}) {
            const auto size = static_cast<int>(memo.size());
            tables.add(table.bytes() + memo, {size % 256, size / 256, fox ? 128 : 0, flags});
            tables.add(table.bytes() + memo, {size % 256, size / 256, (fox ? 128 : 0) + flags % 8 + 24, flags});
        }
    };
    kd_test::XbaseFile three(0x83, {{"A", 'C', 12}, {"B", 'N', 9, 2}, {"D", 'D', 8}, {"L", 'L', 1}, {"M", 'M', 10}});
    three.Language = 2;
    three.record({"it's \x81", "   -12.50", "20240229", "T", "         1"});
    three.record({"a  b", "*********", "20230229", "x", "         9"}, '*');
    three.record({"", "1.5E+03", "", "?", ""});
    add(three, kd_test::memo3({"first", "second"}), false);
    kd_test::XbaseFile four(0x8B, {{"A", 'M', 10}, {"B", 'G', 10}});
    four.record({"         1", "         2"});
    add(four, kd_test::memo4({"first", "second"}, 64), false);
    kd_test::XbaseFile visual(0x32, {{"A", 'V', 8, 0, 2},
                                     {"B", 'I', 4, 0, 2},
                                     {"Y", 'Y', 8},
                                     {"T", 'T', 8},
                                     {"F", 'B', 8},
                                     {"Q", 'Q', 5, 0, 2},
                                     {"M", 'M', 4},
                                     {"C", 'C', 3, 0, 4},
                                     {"_NullFlags", '0', 1, 0, 5}});
    visual.record({"ab     \x02", little(7, 4), little(180001, 8), little(2460375, 4) + little(47655678, 4),
                   kd_test::littleDouble(0.1), "\x01\x02  \x02", little(8, 4), "\xFF\x01\x02", "\x09"});
    visual.record({"", "", "", "", "", "", little(9, 4), "", "\x1F"});
    add(visual, kd_test::memoFox({"fox", ""}), true);
    kd_test::XbaseFile seven(4, {{"A", 'O', 8}, {"B", '@', 8}, {"P", '+', 4}, {"C", 'C', 3}});
    seven.Driver = "DB866RU0";
    seven.record({kd_test::big(0x3F970051EB851EB7, 8), kd_test::big(0x42CC418BA99A0000, 8), kd_test::big(0x8000000A, 4),
                  "\x8C"});
    add(seven, "", false);
    kd_test::XbaseFile two(2, {{"A", 'C', 5}, {"B", 'N', 4}});
    two.record({"x", "17"}).record({"y", ""});
    two.Count = 5;
    two.End = "\x1A rest";
    add(two, "", false);
    Seeds memos(corpus, "memofile_fuzz");
    for (int kind = 0; kind < 5; ++kind) {
        memos.add(kd_test::memo3({"first", "",
                                  "it's\x1A"
                                  "third"}),
                  {kind * 2});
        memos.add(kd_test::memo4({"first", "", "third"}, 64), {kind * 2});
        memos.add(kd_test::memoFox({"first", "", "third"}, 33), {kind * 2 + 1});
    }
}

void writeUnitSeeds(const std::filesystem::path& corpus)
{
    Seeds pages(corpus, "codepage_fuzz");
    for (int page = 0; page < 20; ++page) {
        pages.add("abc \xC3\xA9 \x81\xAD \x83\\ \xE0\xC7 \x1B$B$\" \xF0\x9F\x98\x80 +AOk- \xC4", {page});
    }
    pages.add("iso 8859-15", {255});
    pages.add("LDID/87", {255});
    Seeds values(corpus, "values_fuzz");
    for (const char* value : {"-0012.50", "1.5E+03", ".5", "1E-1000", "20240229", "2024-02-29", "23:59:58.123", "true",
                              "T", "2024-02-29T23:59:58.123", "NaN", "-inf", "****", "9223372036854775807", " 7 "}) {
        values.add(value, {});
    }
}

/// Settings: the number of bytes of calls at the content's end, low byte before high byte. Calls of every kind are
/// side by side so that each is reached at once.
void addCalls(Seeds& seeds, const std::string& file, int kinds)
{
    for (int kind = 0; kind < kinds; ++kind) {
        for (int step : {1, 3, 7, 11, 29}) {
            std::string calls(1, static_cast<char>(kind));
            for (int i = 0; i < 240; ++i) {
                calls += static_cast<char>(i * step % 251);
            }
            seeds.add(file + calls, {static_cast<int>(calls.size() % 256), static_cast<int>(calls.size() / 256)});
        }
    }
}

void writeCallSeeds(const std::filesystem::path& corpus)
{
    Seeds tables(corpus, "table_calls_fuzz");
    addCalls(tables, stockTable(), 6);
    addCalls(tables, allTypesTable(), 6);
    addCalls(tables, "Name,Price\nbolt,1\n#,\n0123456789\n", 6);
    Seeds sqlite(corpus, "sqlite_calls_fuzz");
    addCalls(sqlite, "CREATE TABLE IF NOT EXISTS t (a, b); INSERT INTO t VALUES (1, 2);", 10);
    Seeds servers(corpus, "server_calls_fuzz");
    addCalls(servers, "", 5);
    Seeds parts(corpus, "parts_fuzz");
    addCalls(parts, "", 6);
}

/// Settings: the pages of a table, from the last byte on.
void writeBlockSeeds(const std::filesystem::path& corpus)
{
    Seeds seeds(corpus, "blocks_fuzz");
    const std::string text = "bolt 12 it's\x80\t 1999 20240305 T\n\n a longer line of the file\n";
    for (int kind = 0; kind < 16; ++kind) {
        seeds.add(text, {1, 60, 40, 2, 7, 12, 1, 30, 0, 3, kind});
        seeds.add(text, {0, 255, 255, 0, 200, 3, 90, 2, 10, 1, 4, 0, 20, 5, kind});
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: write_seeds FOLDER\n";
        return 2;
    }
    const std::filesystem::path corpus = argv[1];
    writeXbaseSeeds(corpus, "xbase_fuzz");
    writeXbaseSeeds(corpus, "convert_fuzz");
    writeMemorySeeds(corpus);
    writePositionalSeeds(corpus);
    writeDelimitedSeeds(corpus);
    writeScriptSeeds(corpus);
    writeLiteralSeeds(corpus);
    writeProgramSeeds(corpus);
    writeStatementSeeds(corpus);
    writeTableSeeds(corpus);
    writeSourceSeeds(corpus);
    writeXbaseSourceSeeds(corpus);
    writeUnitSeeds(corpus);
    writeBlockSeeds(corpus);
    writeCallSeeds(corpus);
    return 0;
}

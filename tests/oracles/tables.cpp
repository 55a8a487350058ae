// oracle_tables FOLDER: writes the tables that the oracles read, ASCII content, every cell different.

#include "support/dbf_builder.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using kd_test::DbfBuilder;
using kd_test::DbfColumn;

std::string cell(int row, int column)
{
    std::string text = "r";
    text += std::to_string(row);
    text += 'c';
    return text += std::to_string(column);
}

DbfBuilder allTypes()
{
    DbfBuilder table({{"NAME", 'C', 12},
                      {"COUNT", 'N', 6},
                      {"PRICE", 'N', 9, 2},
                      {"RATE", 'F', 8, 3},
                      {"BOUGHT", 'D', 8},
                      {"READY", 'L', 1}});
    table.record({"bolt", "    71", "     1.25", "   0.125", "20240305", "T"});
    table.deletedRecord({"nut", "    82", "     2.50", "   0.250", "19991231", "F"});
    table.record({"  washer", "   -93", "   -33.75", "  -0.500", "20000229", "y"});
    table.record({"", "", "", "", "", "?"});
    table.record({"pin  two", "104", "4.00", "9.999", "19010101", "n"});
    return table;
}

DbfBuilder awkwardTexts()
{
    DbfBuilder table({{"TEXT", 'C', 30}, {"NEXT", 'C', 10}});
    const std::vector<std::string> texts = {"it's",       "''",          "semi;colon",  "# no comment",
                                            "\"double\"", "back\\slash", "100 %",       "(brackets)",
                                            "a,b,c",      "-- dashes",   "/* stars */", "~!@$^&*+="};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        table.record({texts[i], "next " + std::to_string(i)});
    }
    return table;
}

DbfBuilder everyAsciiCharacter()
{
    DbfBuilder table({{"CODE", 'N', 3}, {"TEXT", 'C', 5}});
    for (int code = 0x21; code < 0x7F; ++code) {
        table.record({std::to_string(code), {'<', static_cast<char>(code), '>'}});
    }
    return table;
}

DbfBuilder manyColumns()
{
    std::vector<DbfColumn> columns;
    for (int i = 0; i < 200; ++i) {
        columns.push_back({"COL" + std::to_string(i), 'C', static_cast<unsigned char>(8 + i % 5)});
    }
    DbfBuilder table(columns);
    for (int row = 1; row <= 7; ++row) {
        std::vector<std::string> values;
        for (int column = 0; column < 200; ++column) {
            values.push_back(cell(row, column));
        }
        table.record(values);
    }
    return table;
}

DbfBuilder manyRecords()
{
    DbfBuilder table({{"NUMBER", 'N', 10}, {"TEXT", 'C', 250}, {"DAY", 'D', 8}});
    for (int row = 1; row <= 3000; ++row) {
        const std::string day = std::to_string(20240101 + row % 28);
        std::string text = cell(row, 2);
        text.append(static_cast<std::size_t>(row % 200), '.');
        text += "end";
        const std::vector<std::string> values = {std::to_string(row * 7919), text, day};
        row % 11 == 0 ? table.deletedRecord(values) : table.record(values);
    }
    return table;
}

DbfBuilder oneColumnAndNoMarks()
{
    DbfBuilder table({{"ONLY", 'C', 1}});
    table.record({"a"}).record({"b"}).record({"c"});
    table.endMark = false;
    return table;
}

void write(const std::filesystem::path& folder, const std::string& name, const DbfBuilder& table)
{
    std::ofstream out(folder / (name + ".dbf"), std::ios::binary);
    out << table.bytes();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: oracle_tables FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    write(folder, "types", allTypes());
    write(folder, "awkward", awkwardTexts());
    write(folder, "ascii", everyAsciiCharacter());
    write(folder, "columns", manyColumns());
    write(folder, "records", manyRecords());
    write(folder, "only", oneColumnAndNoMarks());
    return 0;
}

// Any sequence of calls on every kind of table, with overrides that read on, go elsewhere and rename.

#include "support/bounded_output.h"
#include "support/calls.h"
#include "support/input_folder.h"
#include "support/shape_checked.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/xbase2sql.h>
#include <kd_lib/xbasememory.h>

#include <algorithm>
#include <exception>
#include <limits>
#include <sstream>
#include <type_traits>

namespace {

constexpr std::size_t outputLimit = 64U << 20U;
constexpr int longestWalk = 100;
constexpr int longestSequence = 200;

constexpr std::array<const char*, 4> names = {"input", "other", "none", ""};
constexpr std::array<const char*, 7> endings = {"txt", "csv", "dbf", "mem", "", "sql", "none"};
constexpr std::array<std::uint64_t, 10> lengths = {0,   1,    2,     8,     33,
                                                   255, 4096, 65536, 65537, std::numeric_limits<std::uint64_t>::max()};
constexpr std::array<const char*, 6> columnLines = {"4|8", "1:2;3", "0", "8|4", "x", "300|65600"};

/// A table whose overrides do to it what a client's may do. The argument of each must not change.
template <class Table>
class Busy : public kd_fuzz::ShapeChecked<Table> {
public:
    using kd_fuzz::ShapeChecked<Table>::ShapeChecked;

    kd_fuzz::Calls* Sequence = nullptr;

    bool extractContent(const std::string& record) override
    {
        const bool isValue =
            std::any_of(this->Fields.begin(), this->Fields.end(),
                        [&record](const kd_lib::TableField& field) { return &field.Value == &record; });
        const std::string before = record;
        const bool extracted = Depth < 2 && Sequence != nullptr ? disturbed(record) : Base::extractContent(record);
        kd_fuzz::require(isValue || record == before, "the record of an override has changed");
        return extracted;
    }

private:
    using Base = kd_fuzz::ShapeChecked<Table>;

    bool disturbed(const std::string& record)
    {
        ++Depth;
        bool extracted = false;
        try {
            extracted = disturb(record);
        } catch (...) {
            --Depth;
            throw;
        }
        --Depth;
        return extracted;
    }

    bool disturb(const std::string& record)
    {
        switch (Sequence->below(9)) {
        case 1:
            return Base::extractContent(record + "     and something more");
        case 2:
            this->fetchRecord();
            break;
        case 3:
            this->goRecord(Sequence->byte());
            break;
        case 4:
            this->Fields.add(Sequence->text());
            break;
        case 5:
            this->Name = Sequence->oneOf(names);
            break;
        case 6:
            if (kd_lib::TableField* field = this->Fields.get(static_cast<unsigned long>(Sequence->byte()))) {
                field->Name = Sequence->text();
            }
            break;
        case 7:
            this->close();
            break;
        default:
            break;
        }
        return Base::extractContent(record);
    }

    int Depth = 0;
};

void open(kd_lib::FileTable& table, kd_fuzz::Calls& calls)
{
    const std::string name = calls.oneOf(names);
    switch (calls.below(5)) {
    case 0:
        table.open(name);
        break;
    case 1:
        table.Extension = calls.oneOf(endings);
        table.DatabaseTable::open();
        break;
    case 2:
        table.openPath(kd_fuzz::inputFolder() + '/' + name + '.' + calls.oneOf(endings));
        table.Path = kd_fuzz::inputFolder();
        break;
    case 3:
        table.close();
        break;
    default:
        kd_fuzz::require(table.is_open() == table.File.is_open(), "is_open and the stream differ");
        break;
    }
}

void configure(kd_lib::FileTable& table, kd_fuzz::Calls& calls)
{
    switch (calls.below(8)) {
    case 0:
        table.RecordLength = calls.oneOf(lengths);
        break;
    case 1:
        table.RecordLength = calls.byte();
        break;
    case 2:
        table.HeaderLength = calls.flag() ? calls.byte() : calls.oneOf(lengths);
        break;
    case 3:
        table.RecordEnd = calls.flag() ? 10 : 0;
        break;
    case 4:
        table.Binary = calls.flag();
        break;
    case 5:
        table.Trim = calls.flag();
        break;
    case 6:
        table.Fields.CaseSensitive = calls.flag();
        break;
    default:
        table.File.setstate(calls.flag() ? std::ios::failbit : std::ios::badbit);
        break;
    }
}

void define(kd_lib::FileTable& table, kd_fuzz::Calls& calls)
{
    switch (calls.below(7)) {
    case 0:
        table.getFieldList();
        break;
    case 1:
        table.readHeader();
        break;
    case 2:
        table.defineFields();
        break;
    case 3:
        table.setFieldOffsets(calls.oneOf(columnLines));
        break;
    case 4:
        table.setFieldOffsets(calls.text());
        break;
    case 5:
        table.Fields.add(calls.text());
        break;
    default: {
        kd_lib::TableField field(calls.text(), static_cast<kd_lib::FIELD_TYPE>(calls.number()), calls.number(),
                                 calls.number(), calls.number(), calls.flag());
        table.Fields.add(field);
        break;
    }
    }
}

void navigate(kd_lib::FileTable& table, kd_fuzz::Calls& calls)
{
    const bool open = table.File.is_open();
    bool moved = false;
    switch (calls.below(8)) {
    case 0:
        moved = table.beginFile();
        break;
    case 1:
        moved = table.endFile();
        break;
    case 2:
        moved = table.firstRecord();
        break;
    case 3:
        moved = table.nextRecord();
        break;
    case 4:
        moved = table.lastRecord();
        break;
    case 5:
        moved = table.goRecord(calls.byte());
        break;
    case 6:
        moved = table.goRecord(std::numeric_limits<unsigned long>::max() - calls.byte());
        break;
    default:
        table.skipHeader();
        moved = open;
        break;
    }
    kd_fuzz::require(moved == open, "navigation shows whether the table is open");
}

void read(kd_lib::FileTable& table, kd_fuzz::Calls& calls)
{
    switch (calls.below(6)) {
    case 0:
        table.fetchRecord();
        break;
    case 1:
        for (int i = 0; i < longestWalk && table.fetchRecord(); ++i) {
        }
        break;
    case 2:
        table.extractContent(calls.text());
        break;
    case 3:
        if (table.Fields.size() > 0) {
            table.extractContent(table.Fields.List.back()->Value);
        }
        break;
    case 4:
        table.Fields.getData(calls.text());
        table.Fields.getData(static_cast<unsigned long>(calls.byte()));
        table.Fields.findNumber(calls.text());
        break;
    default:
        table.showHeader();
        break;
    }
}

void special(kd_lib::AsciiTable& table, kd_fuzz::Calls& calls)
{
    table.CommentChar = calls.flag() ? '#' : 0;
    table.HasFieldNames = calls.flag();
    table.isCommentLine(calls.text());
}

void special(kd_lib::DelimitedTable& table, kd_fuzz::Calls& calls)
{
    special(static_cast<kd_lib::AsciiTable&>(table), calls);
    switch (calls.below(5)) {
    case 0:
        table.setCsvMode();
        break;
    case 1:
        table.setRMode();
        break;
    case 2:
        table.setExcelMode();
        break;
    case 3:
        table.Separator = static_cast<int>(calls.byte());
        break;
    default:
        table.extractFieldNames(calls.text());
        break;
    }
}

void special(kd_lib::xBaseTable& table, kd_fuzz::Calls& calls)
{
    table.ReadDeleted = calls.flag();
    table.isDeleted();
    table.convertXbaseFieldType(static_cast<unsigned char>(calls.byte()));
    table.convertBoolean(calls.text());
}

/// The script as the statements of single records: what `writeScript` must have written.
std::string insertsOf(kd_lib::xBase2Sql& table)
{
    std::string inserts;
    table.firstRecord();
    for (int i = 0; i < longestWalk * 10 && table.fetchRecord(); ++i) {
        inserts += table.insert();
    }
    return inserts;
}

void special(kd_lib::xBase2Sql& table, kd_fuzz::Calls& calls)
{
    special(static_cast<kd_lib::xBaseTable&>(table), calls);
    table.KeyColumn = calls.flag() ? calls.text() : "";
    table.InsertRecords = calls.flag();
    std::ostringstream out;
    switch (calls.below(6)) {
    case 0:
        table.createTable(calls.flag());
        break;
    case 1:
        table.prepareInsert(calls.oneOf(std::array<const char*, 3>{"sqlite", "postgresql", "mysql"}));
        break;
    case 2:
        table.insert();
        break;
    case 3:
        table.convert();
        break;
    case 4:
        if (calls.flag()) {
            out.setstate(std::ios::badbit);
        }
        table.writeScript(out);
        break;
    default:
        insertsOf(table);
        break;
    }
}

void special(kd_lib::xBaseMemory& table, kd_fuzz::Calls& calls)
{
    special(static_cast<kd_lib::xBaseTable&>(table), calls);
    table.read();
    table.write();
}

void special(kd_lib::FileTable&, kd_fuzz::Calls&) {}

template <class Table>
void callOnce(Busy<Table>& table, kd_fuzz::Calls& calls)
{
    switch (calls.below(8)) {
    case 0:
        open(table, calls);
        break;
    case 1:
        configure(table, calls);
        break;
    case 2:
    case 3:
        define(table, calls);
        break;
    case 4:
        navigate(table, calls);
        break;
    case 5:
    case 6:
        read(table, calls);
        break;
    default:
        special(static_cast<Table&>(table), calls);
        break;
    }
}

/// A table of this name, by the constructor for it if there is one.
template <class Table>
Busy<Table> tableOf(const std::string& name)
{
    if constexpr (std::is_constructible_v<Table, const std::string&>) {
        return Busy<Table>(name);
    } else {
        return Busy<Table>();
    }
}

template <class Table>
void callInSequence(kd_fuzz::Calls calls)
{
    Busy<Table> table = tableOf<Table>("input");
    table.Path = kd_fuzz::inputFolder();
    table.Name = "input";
    table.Sequence = calls.flag() ? &calls : nullptr;
    table.DatabaseTable::open();
    for (int i = 0; i < longestSequence && calls.more(); ++i) {
        try {
            callOnce(table, calls);
        } catch (const std::exception&) {
            // A standard exception is an outcome, and leaves the table usable.
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const kd_fuzz::FileAndCalls input(data, size);
    for (const char* ending : {"txt", "csv", "dbf", "mem"}) {
        kd_fuzz::writeInput(std::string("input.") + ending, input.File);
    }
    const kd_fuzz::BoundedOutput output(outputLimit);
    kd_fuzz::Calls calls(input.Sequence);
    switch (calls.below(6)) {
    case 0:
        callInSequence<kd_lib::FileTable>(calls);
        break;
    case 1:
        callInSequence<kd_lib::AsciiTable>(calls);
        break;
    case 2:
        callInSequence<kd_lib::DelimitedTable>(calls);
        break;
    case 3:
        callInSequence<kd_lib::xBaseTable>(calls);
        break;
    case 4:
        callInSequence<kd_lib::xBase2Sql>(calls);
        break;
    default:
        callInSequence<kd_lib::xBaseMemory>(calls);
        break;
    }
    return 0;
}

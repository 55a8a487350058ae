#include "../../formats/numbers.h"
#include "dbffacts.h"
#include "dbflayout.h"
#include "dbfrecords.h"
#include "fieldform.h"
#include "inspection.h"
#include "memofile.h"
#include "recorddecoder.h"
#include "tablecodepage.h"
#include "tablecolumns.h"
#include "wording.h"

#include <kd_lib/exchange/codepage.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

/// Explains the header of a table, line by line.
class HeaderInspection {
public:
    HeaderInspection(Inspection& to, const DbfLayout& layout, std::string_view bytes, const TableColumns* columns,
                     std::optional<std::string> wrongCount)
        : To(to), Layout(layout), Bytes(bytes), Columns(columns), WrongCount(std::move(wrongCount))
    {
    }

    void run()
    {
        if (Layout.Family == DbfFamily::DBase2) {
            numbersOf2();
        } else {
            numbers();
        }
        for (std::size_t i = 0; i < Layout.Fields.size(); ++i) {
            field(i);
        }
        if (Layout.FieldsEnd > 0) {
            end();
        }
        if (Layout.Fault) {
            const std::size_t at = std::min(Layout.FaultAt, Bytes.size());
            To.damaged(at, Bytes.substr(at, 2), "header", *Layout.Fault);
        }
    }

private:
    /// A part of the header, as far as the file has it.
    void part(std::size_t at, std::size_t length, std::string_view what, const std::string& meaning)
    {
        if (at < Bytes.size()) {
            To.report(at, Bytes.substr(at, length), what, meaning);
        }
    }

    void unused(std::size_t at, std::size_t length)
    {
        const std::string_view bytes = Bytes.substr(std::min(at, Bytes.size()), length);
        const bool empty = bytes.find_first_not_of('\0') == std::string_view::npos;
        part(at, length, "reserved", empty ? "" : "left-overs, not read");
    }

    void recordCount(std::size_t at, std::size_t length)
    {
        if (WrongCount) {
            To.damaged(at, Bytes.substr(at, length), "record count", *WrongCount);
        } else {
            part(at, length, "record count", std::to_string(Layout.RecordCount));
        }
    }

    void numbers()
    {
        part(dbfheader::versionAt, 1, "version", kindOfTable(Layout));
        if (Bytes.size() < dbfheader::size) {
            part(1, Bytes.size(), "header", "not whole");
            return;
        }
        part(dbfheader::yearAt, 3, "last change", lastChange(Layout));
        recordCount(dbfheader::recordCountAt, 4);
        part(dbfheader::headerLengthAt, 2, "header length", std::to_string(Layout.HeaderLength));
        part(dbfheader::recordLengthAt, 2, "record length", std::to_string(Layout.RecordLength));
        unused(dbfheader::recordLengthAt + 2, 2);
        part(dbfheader::transactionAt, 1, "transaction", Layout.InTransaction ? "unfinished" : "");
        part(dbfheader::encryptedAt, 1, "encryption", Layout.Encrypted ? "encrypted" : "");
        unused(dbfheader::encryptedAt + 1, dbfheader::flagsAt - dbfheader::encryptedAt - 1);
        part(dbfheader::flagsAt, 1, "flags", flags());
        part(dbfheader::languageAt, 1, "language byte", language());
        unused(dbfheader::languageAt + 1, 2);
        if (Layout.Family == DbfFamily::DBase7) {
            part(dbf7header::driverAt, dbf7header::driverWidth, "language driver", printable(Layout.Driver));
            unused(dbf7header::driverAt + dbf7header::driverWidth, 4);
        }
    }

    void numbersOf2()
    {
        part(dbfheader::versionAt, 1, "version", kindOfTable(Layout));
        recordCount(dbf2header::recordCountAt, 2);
        part(dbf2header::monthAt, 3, "last change", lastChange(Layout));
        part(dbf2header::recordLengthAt, 2, "record length", std::to_string(Layout.RecordLength));
    }

    std::string flags() const
    {
        std::string text;
        const auto add = [this, &text](std::uint8_t flag, const char* what) {
            if ((Layout.Flags & flag) != 0) {
                text += text.empty() ? what : std::string(", ") + what;
            }
        };
        add(dbfheader::indexFlag, "index file");
        add(dbfheader::memoFlag, "memo file");
        add(dbfheader::containerFlag, "database container");
        return text;
    }

    std::string language() const
    {
        const std::string page = CodePage::nameOfLanguageByte(Layout.LanguageByte);
        return Layout.LanguageByte == 0 ? "not stated" : page.empty() ? "not known" : page;
    }

    void field(std::size_t index)
    {
        const DbfField& field = Layout.Fields[index];
        const FieldForm form = formOf(field, Layout);
        std::string meaning = nameOf(index) + ": type " + printable({&field.Letter, 1}) + ", " +
                              count(field.Length, "byte") + " at byte " + std::to_string(field.Offset) +
                              " of the record";
        if (form == FieldForm::Number && field.Decimals != 0) {
            meaning += ", " + count(field.Decimals, "decimal");
        }
        meaning += form == FieldForm::NullFlags ? ", the null flags"
                   : form == FieldForm::Unknown ? ", not known: bytes"
                                                : ", " + typeName(typeOf(form));
        meaning += foxFlags(field);
        part(field.DescriptorAt, descriptorShapeOf(Layout.Family).Size, "column " + std::to_string(index + 1), meaning);
    }

    std::string nameOf(std::size_t index) const
    {
        if (Columns != nullptr) {
            const auto found = std::ranges::find(Columns->Fields, index);
            if (found != Columns->Fields.end()) {
                return Columns->Columns[static_cast<std::size_t>(found - Columns->Fields.begin())].Name;
            }
        }
        return printable(Layout.Fields[index].Name);
    }

    std::string foxFlags(const DbfField& field) const
    {
        std::string text;
        if (Layout.FoxFlags) {
            text += (field.Flags & foxfield::systemFlag) != 0 ? ", system" : "";
            text += (field.Flags & foxfield::nullFlag) != 0 ? ", may be NULL" : "";
            text += (field.Flags & foxfield::binaryFlag) != 0 ? ", binary" : "";
            text += (field.Flags & foxfield::autoIncrementFlag) == foxfield::autoIncrementFlag ? ", autoincrement" : "";
        }
        return text;
    }

    void end()
    {
        std::size_t at = Layout.FieldsEnd;
        if (Layout.FieldsEndMarked) {
            part(at, 1, "end of the columns", "");
            ++at;
        }
        if (at < Layout.HeaderLength) {
            const bool database = !Layout.Database.empty();
            part(at, Layout.HeaderLength - at, database ? "database" : "after the columns",
                 database ? printable(Layout.Database) : "not read");
        }
    }

    Inspection& To;
    const DbfLayout& Layout;
    std::string_view Bytes;
    const TableColumns* Columns;
    std::optional<std::string> WrongCount;
};

/// A text if the header's count is wrong. To know that, the records are read before the header is explained. A pipe
/// cannot be read twice: there it is known only at the end.
std::optional<std::string> wrongCount(const Inspection& to, const InputFile& file, const DbfLayout& layout)
{
    if (!file.seekable()) {
        return std::nullopt;
    }
    InputFile again(to.file());
    again.seek(layout.HeaderLength);
    DbfRecords records(again, layout);
    while (records.next() == DbfRecords::Found::Record && !to.options().Stop.stop_requested()) {
    }
    return records.wrongCount();
}

/// The records of a table that can be read.
class RecordInspection {
public:
    RecordInspection(Inspection& to, InputFile& file, const DbfLayout& layout, const CodePage& page,
                     const TableColumns& columns)
        : To(to), File(file), Layout(layout), Columns(columns), Memo(openMemo()),
          Decoder(layout, wanted(columns), page, EncodingErrors::Replace, Memo ? &*Memo : nullptr),
          Records(file, layout)
    {
        Current.Cells.resize(columns.Columns.size());
        Current.Columns = &Columns.Columns;
    }

    void run()
    {
        using Found = DbfRecords::Found;
        for (Found found = Records.next(); found != Found::End; found = Records.next()) {
            if (found == Found::CutRecord) {
                To.damaged(Records.offset(), Records.bytes(), "record " + std::to_string(Records.number()),
                           "the file ends within the record");
                Cut = true;
                break;
            }
            record();
        }
        notes();
    }

private:
    static std::vector<WantedField> wanted(const TableColumns& columns)
    {
        std::vector<WantedField> fields;
        for (std::size_t i = 0; i < columns.Fields.size(); ++i) {
            fields.push_back({i, columns.Fields[i], std::nullopt});
        }
        return fields;
    }

    std::optional<MemoFile> openMemo() const
    {
        std::optional<std::string> path = To.options().MemoFile;
        if (path->empty()) {
            path = findMemoFile(To.file(), Layout);
        }
        const bool any =
            std::ranges::any_of(Layout.Fields, [this](const DbfField& field) { return isMemo(formOf(field, Layout)); });
        if (!any || !path) {
            return std::nullopt;
        }
        return std::optional<MemoFile>(std::in_place, *path, memoKindOf(Layout, *path));
    }

    void record()
    {
        Current.Flaws.clear();
        const std::string_view bytes = Records.bytes();
        Decoder.decode(bytes.data(), Current);
        const char mark = bytes.front();
        To.report(Records.offset(), bytes.substr(0, 1), "record " + std::to_string(Records.number()),
                  mark == deletedMark ? "deleted"
                  : mark == validMark ? ""
                                      : "an unknown deletion mark, kept");
        std::size_t column = 0;
        for (std::size_t i = 0; i < Layout.Fields.size(); ++i) {
            if (column < Columns.Fields.size() && Columns.Fields[column] == i) {
                cell(column, bytes.substr(Layout.Fields[i].Offset, Layout.Fields[i].Length));
                ++column;
            } else {
                To.report(Records.offset() + Layout.Fields[i].Offset,
                          bytes.substr(Layout.Fields[i].Offset, Layout.Fields[i].Length), "  null flags", "");
            }
        }
        if (bytes.size() > Layout.FieldsLength) {
            To.report(Records.offset() + Layout.FieldsLength, bytes.substr(Layout.FieldsLength), "  rest",
                      "not of a column, not read");
        }
    }

    void cell(std::size_t column, std::string_view bytes)
    {
        const std::uint64_t offset = Records.offset() + Layout.Fields[Columns.Fields[column]].Offset;
        const std::string what = "  " + Columns.Columns[column].Name;
        const auto flaw = std::ranges::find(Current.Flaws, column, &Flaw::Column);
        if (flaw != Current.Flaws.end()) {
            To.damaged(offset, bytes, what, flaw->Reason);
            return;
        }
        const Cell& value = Current.Cells[column];
        std::string meaning = cellMeaning(value);
        if (isMemo(formOf(Layout.Fields[Columns.Fields[column]], Layout)) && value.Kind != CellKind::Null) {
            meaning = "block " + std::to_string(memoPointer(bytes).value_or(0)) + ": " + meaning;
        }
        To.report(offset, bytes, what, meaning);
    }

    /// The end of the records, and faults of their number.
    void notes()
    {
        std::string_view rest = Records.rest();
        std::uint64_t at = Records.restOffset();
        if (!rest.empty() && rest.front() == fileEnd) {
            To.report(at, rest.substr(0, 1), "end of the records", "");
            rest.remove_prefix(1);
            ++at;
        }
        for (const Note& note : Records.takeNotes()) {
            // The header's line reports a wrong count.
            if (note.Loss && (note.Text != Records.wrongCount() || !File.seekable())) {
                To.damaged(at, {}, "records", note.Text);
            }
        }
        const std::uint64_t size = File.size().value_or(at + rest.size());
        if (!Cut && size > at) {
            To.reportMany(at, size - at, rest, "rest of the file", "not read");
        }
    }

    Inspection& To;
    InputFile& File;
    const DbfLayout& Layout;
    const TableColumns& Columns;
    std::optional<MemoFile> Memo;
    RecordDecoder Decoder;
    DbfRecords Records;
    Record Current;
    bool Cut = false;
};

}  // namespace

void inspectDbf(Inspection& to)
{
    InputFile file(to.file());
    const std::string bytes = readDbfHeader(file);
    const DbfLayout layout = parseDbfHeader(bytes);
    if (layout.Fault) {
        HeaderInspection(to, layout, bytes, nullptr, std::nullopt).run();
        if (file.size().value_or(0) > bytes.size()) {
            to.reportMany(bytes.size(), *file.size() - bytes.size(), {}, "rest of the file", "not explained");
        }
        return;
    }
    const PageChoice choice = chooseCodePage(to.file(), layout, to.options().Encoding);
    const CodePage page(choice.Page);
    const TableColumns columns = columnsOfTable(layout, page, true);
    HeaderInspection(to, layout, bytes, &columns, wrongCount(to, file, layout)).run();
    to.report(0, {}, "code page", page.name() + ": " + choice.Reason);
    for (const Note& note : columns.Notes) {
        if (note.Loss) {
            to.damaged(0, {}, "columns", note.Text);
        }
    }
    RecordInspection(to, file, layout, page, columns).run();
}

}  // namespace kd_lib::exchange::detail

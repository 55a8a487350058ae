#include "recorddecoder.h"

#include "binarytext.h"
#include "fieldtexts.h"
#include "lettercase.h"
#include "recordblocks.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

constexpr std::uint32_t dateWidth = 8;

bool isAll(std::string_view bytes, char c)
{
    return bytes.find_first_not_of(c) == std::string_view::npos;
}

bool isEmptyMoment(std::string_view bytes)
{
    return isAll(bytes, '\0') || isAll(bytes, ' ');
}

}  // namespace

RecordDecoder::RecordDecoder(const DbfLayout& layout, const std::vector<WantedField>& wanted, const CodePage& page,
                             EncodingErrors onError, MemoFile* memo)
    : Page(page), OnError(onError), Memo(memo), RecordLength(layout.RecordLength)
{
    if (const DbfField* flags = nullFlagsOf(layout)) {
        NullFlagsAt = flags->Offset;
        NullFlagsLength = flags->Length;
    }
    const std::vector<NullBits> bits = nullBitsOf(layout);
    for (const WantedField& one : wanted) {
        const DbfField& from = layout.Fields[one.Index];
        Field field;
        field.Column = one.Column;
        field.Form = formOf(from, layout);
        field.Offset = from.Offset;
        field.Length = from.Length;
        field.Bits = bits[one.Index];
        if (one.Type && *one.Type != typeOf(field.Form)) {
            field.Form = formFor(field.Form, *one.Type);
            field.Type = *one.Type != typeOf(field.Form) ? one.Type : std::nullopt;
        }
        Fields.push_back(std::move(field));
    }
    need({});
}

void RecordDecoder::need(const std::vector<bool>& needed)
{
    Steps.clear();
    for (Field& field : Fields) {
        if (needed.empty() || needed[field.Column]) {
            const bool usual = field.Bits.Null < 0 && !field.Type;
            Steps.push_back(
                {usual ? field.Form : FieldForm::Unknown, field.Offset, field.Length, field.Column, &field});
        }
    }
}

bool RecordDecoder::isSet(const char* record, int bit) const
{
    const auto byte = static_cast<std::uint32_t>(bit) / 8;
    return bit >= 0 && byte < NullFlagsLength && (byteAt(record, NullFlagsAt + byte) >> (bit % 8) & 1) != 0;
}

/// Decodes the usual values of the forms that nearly all fields have. False: the field needs the slow path.
inline bool RecordDecoder::decodeUsual(const Step& step, const char* bytes, bool ascii, Cell& cell)
{
    // Sets the members of the cell one by one: a whole cell would be constructed first and then copied.
    switch (step.Form) {
    case FieldForm::Text:
        cell.Kind = CellKind::Text;
        cell.Text = withoutPaddingAtEnd(bytes, step.Length);
        return ascii;
    case FieldForm::Number: {
        const NumberForm form =
            step.Length <= FieldBits::width ? numberForm(bytes, step.Length, cell.Text) : NumberForm::Other;
        cell.Kind = form == NumberForm::Blank ? CellKind::Null : CellKind::Number;
        return form != NumberForm::Other;
    }
    case FieldForm::Date:
        cell.Kind = CellKind::Date;
        return step.Length == dateWidth && isDay(bytes, cell.Moment.Day);
    case FieldForm::Logical: {
        const Logical value = step.Length == 1 ? logicalLetters[static_cast<unsigned char>(*bytes)] : Logical::Other;
        cell.Kind = value == Logical::None ? CellKind::Null : CellKind::Boolean;
        cell.Boolean = value == Logical::True;
        return value != Logical::Other;
    }
    default:
        return false;
    }
}

void RecordDecoder::decode(const char* bytes, Record& record)
{
    static_assert(RecordBlocks::slack >= Record::PlainRoom);
    const RecordBytes of = bytesOfRecord(bytes, RecordLength);
    const bool ascii = Page.isAsciiBased() && of.Ascii;
    bool plain = ascii && of.Printable;
    for (const Step& step : Steps) {
        Cell& cell = record.Cells[step.Column];
        if (!decodeUsual(step, bytes + step.Offset, ascii, cell)) {
            decodeOther(*step.Of, bytes, record);
            // Such a text may come from a memo file, and lie in other memory than the record.
            plain = plain && cell.Kind != CellKind::Text && cell.Kind != CellKind::Number;
        }
    }
    record.Plain = plain;
}

void RecordDecoder::decodeOther(Field& field, const char* record, Record& to)
{
    if (isSet(record, field.Bits.Null)) {
        to.Cells[field.Column] = Cell::null();
        return;
    }
    const std::string_view bytes(record + field.Offset, field.Length);
    switch (field.Form) {
    case FieldForm::Text:
        setText(field, withoutPaddingAtEnd(bytes.data(), bytes.size()), to);
        break;
    case FieldForm::TrimmedText:
        setText(field, withoutPaddingAround(bytes.data(), bytes.size()), to);
        break;
    case FieldForm::Number:
        set(field, numberOf(bytes, field.Text), to);
        break;
    case FieldForm::Logical:
        set(field, logicalOf(bytes), to);
        break;
    case FieldForm::Date:
        set(field, eightDigitDateOf(bytes), to);
        break;
    case FieldForm::VaryingText:
    case FieldForm::VaryingBytes:
        setVarying(field, record, to);
        break;
    case FieldForm::MemoText:
    case FieldForm::MemoBytes:
        setMemo(field, bytes, to);
        break;
    case FieldForm::Bytes:
    case FieldForm::Unknown:
    case FieldForm::NullFlags:
        to.Cells[field.Column] = Cell::bytes(bytes);
        break;
    default:
        setBinary(field, bytes.data(), to);
        break;
    }
    if (field.Type) {
        convertCell(field, bytes, to);
    }
}

void RecordDecoder::set(const Field& field, const Converted& converted, Record& to)
{
    if (converted.Problem != nullptr) {
        to.reject(field.Column, converted.Problem);
    } else {
        to.Cells[field.Column] = converted.Value;
    }
}

void RecordDecoder::setText(Field& field, std::string_view bytes, Record& to)
{
    const CodePage::Decoded decoded = Page.decode(bytes, OnError, field.Text);
    using Outcome = CodePage::Decoded::Outcome;
    to.Cells[field.Column] = Cell::text(decoded.Text);
    MetHighByte = MetHighByte || !isAscii(bytes);
    if (decoded.Result == Outcome::Known) {
        return;
    }
    if (decoded.Result == Outcome::Failed) {
        to.reject(field.Column, Page.reason(bytes, decoded));
        return;
    }
    const FlawKind kind = decoded.Result == Outcome::Replaced ? FlawKind::Replaced : FlawKind::Escaped;
    to.Flaws.push_back({field.Column, kind, Page.reason(bytes, decoded)});
}

void RecordDecoder::setVarying(Field& field, const char* record, Record& to)
{
    std::string_view bytes(record + field.Offset, field.Length);
    if (!bytes.empty() && isSet(record, field.Bits.Varying)) {
        const std::size_t length = byteAt(bytes.data(), bytes.size() - 1);
        if (length >= bytes.size()) {
            to.reject(field.Column, "the value's length is greater than that of its field");
            return;
        }
        bytes = bytes.substr(0, length);
    }
    if (field.Form == FieldForm::VaryingText) {
        setText(field, bytes, to);
    } else {
        to.Cells[field.Column] = Cell::bytes(bytes);
    }
}

void RecordDecoder::setMemo(Field& field, std::string_view pointer, Record& to)
{
    const std::optional<std::uint64_t> block = memoPointer(pointer);
    if (!block) {
        to.reject(field.Column, "the memo pointer is not a number");
        return;
    }
    if (*block == 0) {
        to.Cells[field.Column] = Cell::null();
        return;
    }
    if (Memo == nullptr) {
        MetMissingMemo = true;
        to.reject(field.Column, "the memo file is missing", FlawKind::NoMemoFile);
        return;
    }
    if (const char* const reason = Memo->read(*block, field.Memo)) {
        to.reject(field.Column, reason);
    } else if (field.Form == FieldForm::MemoText) {
        setText(field, field.Memo, to);
    } else {
        to.Cells[field.Column] = Cell::bytes(field.Memo);
    }
}

void RecordDecoder::setBinary(Field& field, const char* bytes, Record& to)
{
    constexpr std::uint32_t sign = std::uint32_t{1} << 31;
    Cell& cell = to.Cells[field.Column];
    const std::string_view whole(bytes, field.Length);
    switch (field.Form) {
    case FieldForm::Integer:
        cell = integerCell(static_cast<std::int32_t>(little32(bytes)), field.Number);
        break;
    case FieldForm::SortableInteger:
        cell = isAll(whole, '\0') ? Cell::null()
                                  : integerCell(static_cast<std::int32_t>(big32(bytes) ^ sign), field.Number);
        break;
    case FieldForm::Currency:
        cell = currencyCell(static_cast<std::int64_t>(little64(bytes)), field.Number);
        break;
    case FieldForm::Double:
        // Programs that append blank records fill all of their fields with blanks.
        cell = isAll(whole, ' ') ? Cell::null() : doubleCell(bytes);
        break;
    case FieldForm::SortableDouble:
        cell = isAll(whole, '\0') ? Cell::null() : sortableDoubleCell(bytes);
        break;
    case FieldForm::JulianTimestamp:
        set(field, isEmptyMoment(whole) ? Converted(Cell::null()) : julianMoment(bytes), to);
        break;
    default:
        set(field, isEmptyMoment(whole) ? Converted(Cell::null()) : millisecondMoment(bytes), to);
        break;
    }
}

/// Converts to the type of the options. For text, an unreadable value becomes its bytes.
void RecordDecoder::convertCell(Field& field, std::string_view bytes, Record& to)
{
    const Cell& cell = to.Cells[field.Column];
    if (cell.Kind == CellKind::Unreadable && field.Type == ColumnType::Text && !isMemo(field.Form)) {
        std::erase_if(to.Flaws, [&field](const Flaw& flaw) { return flaw.Column == field.Column; });
        field.Conversion = uppered(hexText(bytes));
        to.Cells[field.Column] = Cell::text(field.Conversion);
        return;
    }
    set(field, convert(cell, *field.Type, field.Conversion), to);
}

std::optional<std::uint64_t> memoPointer(std::string_view field)
{
    if (field.size() == binaryPointerWidth) {
        return little32(field.data());
    }
    const std::string_view digits = withoutPadding(field);
    std::uint64_t block = 0;
    if (digits.empty()) {
        return block;
    }
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), block);
    constexpr std::uint64_t largest = 9'999'999'999;
    if (error != std::errc() || end != digits.data() + digits.size() || block > largest) {
        return std::nullopt;
    }
    return block;
}

}  // namespace kd_lib::exchange::detail

#include "fieldform.h"

#include "../../formats/memoheader.h"

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

constexpr std::uint32_t integerSize = 4;
constexpr std::uint32_t doubleSize = 8;

FieldForm ifLength(const DbfField& field, std::uint32_t length, FieldForm form)
{
    return field.Length == length ? form : FieldForm::Unknown;
}

/// The form of Visual FoxPro's V and Q fields; in other tables these letters mean something else.
FieldForm varyingForm(const DbfLayout& layout, FieldForm form)
{
    const bool visual = layout.Family == DbfFamily::VisualFoxPro || nullFlagsOf(layout) != nullptr;
    return visual ? form : FieldForm::Unknown;
}

bool isBinary(const DbfField& field, const DbfLayout& layout)
{
    return layout.FoxFlags && (field.Flags & foxfield::binaryFlag) != 0;
}

/// A pointer of four bytes, or of digits; a B field of 8 bytes is a double.
FieldForm formOfB(const DbfField& field)
{
    return field.Length == doubleSize ? FieldForm::Double : FieldForm::MemoBytes;
}

}  // namespace

FieldForm formOf(const DbfField& field, const DbfLayout& layout)
{
    switch (field.Letter) {
    case 'C':
        return isBinary(field, layout) ? FieldForm::Bytes : FieldForm::Text;
    case 'N':
    case 'F':
        return FieldForm::Number;
    case 'L':
        return FieldForm::Logical;
    case 'D':
        return FieldForm::Date;
    case 'M':
        return isBinary(field, layout) ? FieldForm::MemoBytes : FieldForm::MemoText;
    case 'G':
    case 'P':
    case 'W':
        return FieldForm::MemoBytes;
    case 'B':
        return formOfB(field);
    case 'I':
        return ifLength(field, integerSize,
                        layout.Family == DbfFamily::DBase7 ? FieldForm::SortableInteger : FieldForm::Integer);
    case '+':
        return ifLength(field, integerSize, FieldForm::SortableInteger);
    case 'O':
        return ifLength(field, doubleSize, FieldForm::SortableDouble);
    case 'Y':
        return ifLength(field, doubleSize, FieldForm::Currency);
    case 'T':
        return ifLength(field, doubleSize, FieldForm::JulianTimestamp);
    case '@':
        return ifLength(field, doubleSize, FieldForm::MillisecondTimestamp);
    case 'V':
        return varyingForm(layout, FieldForm::VaryingText);
    case 'Q':
        return varyingForm(layout, FieldForm::VaryingBytes);
    case '0':
        return FieldForm::NullFlags;
    default:
        return FieldForm::Unknown;
    }
}

ColumnType typeOf(FieldForm form)
{
    switch (form) {
    case FieldForm::Text:
    case FieldForm::TrimmedText:
    case FieldForm::VaryingText:
    case FieldForm::MemoText:
        return ColumnType::Text;
    case FieldForm::Number:
        return ColumnType::Number;
    case FieldForm::Logical:
        return ColumnType::Boolean;
    case FieldForm::Date:
        return ColumnType::Date;
    case FieldForm::Integer:
    case FieldForm::SortableInteger:
        return ColumnType::Integer;
    case FieldForm::Double:
    case FieldForm::SortableDouble:
        return ColumnType::Float;
    case FieldForm::Currency:
        return ColumnType::Currency;
    case FieldForm::JulianTimestamp:
    case FieldForm::MillisecondTimestamp:
        return ColumnType::Timestamp;
    default:
        return ColumnType::Bytes;
    }
}

FieldForm formFor(FieldForm form, ColumnType type)
{
    const bool asBytes = type == ColumnType::Bytes;
    switch (form) {
    case FieldForm::MemoText:
    case FieldForm::MemoBytes:
        return asBytes ? FieldForm::MemoBytes : FieldForm::MemoText;
    case FieldForm::VaryingText:
    case FieldForm::VaryingBytes:
        return asBytes ? FieldForm::VaryingBytes : FieldForm::VaryingText;
    case FieldForm::Text:
    case FieldForm::Bytes:
    case FieldForm::Unknown:
        return asBytes ? FieldForm::Bytes : FieldForm::Text;
    case FieldForm::Date:
        // A day can become the timestamp of its midnight.
        return asBytes ? FieldForm::Bytes : type == ColumnType::Timestamp ? FieldForm::Date : FieldForm::TrimmedText;
    case FieldForm::Number:
    case FieldForm::Logical:
        return asBytes ? FieldForm::Bytes : FieldForm::TrimmedText;
    default:
        return asBytes ? FieldForm::Bytes : form;
    }
}

std::vector<NullBits> nullBitsOf(const DbfLayout& layout)
{
    std::vector<NullBits> bits(layout.Fields.size());
    if (nullFlagsOf(layout) == nullptr) {
        return bits;
    }
    int next = 0;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const DbfField& field = layout.Fields[i];
        const FieldForm form = formOf(field, layout);
        if (form == FieldForm::NullFlags) {
            continue;
        }
        if (form == FieldForm::VaryingText || form == FieldForm::VaryingBytes) {
            bits[i].Varying = next++;
        }
        if ((field.Flags & foxfield::nullFlag) != 0) {
            bits[i].Null = next++;
        }
    }
    return bits;
}

Column columnOf(const DbfField& field, FieldForm form)
{
    Column column;
    column.Type = typeOf(form);
    column.Width = isMemo(form) ? 0 : field.Length;
    column.Decimals = form == FieldForm::Number ? field.Decimals : 0;
    column.Letter = field.Letter;
    column.SourceLength = field.Length;
    return column;
}

}  // namespace kd_lib::exchange::detail

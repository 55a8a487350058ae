#include "dbflayout.h"

#include "../../formats/numbers.h"
#include "../../formats/zeroend.h"
#include "inputfile.h"
#include "wording.h"

#include <algorithm>
#include <array>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

constexpr std::size_t preambleSize = 32;
constexpr int century = 2000;
constexpr int firstYearOfLastCentury = 80;  // writers that store year mod 100 have 0 to 79 for this one

std::size_t headerLengthOf(std::string_view preamble)
{
    if (preamble.empty()) {
        return 0;
    }
    if (const DbfVersion* version = dbfVersionOf(byteAt(preamble.data(), 0));
        version != nullptr && version->Family == DbfFamily::DBase2) {
        return dbf2header::length;
    }
    return preamble.size() < preambleSize ? 0 : little16(preamble.data() + dbfheader::headerLengthAt);
}

int yearOf(std::uint8_t byte)
{
    return byte + (byte < firstYearOfLastCentury ? century : dbfheader::yearBase);
}

void readNumbers(DbfLayout& layout, const char* bytes)
{
    layout.Year = yearOf(byteAt(bytes, dbfheader::yearAt));
    layout.Month = byteAt(bytes, dbfheader::monthAt);
    layout.Day = byteAt(bytes, dbfheader::dayAt);
    layout.RecordCount = little32(bytes + dbfheader::recordCountAt);
    layout.HeaderLength = little16(bytes + dbfheader::headerLengthAt);
    layout.RecordLength = little16(bytes + dbfheader::recordLengthAt);
    layout.Flags = byteAt(bytes, dbfheader::flagsAt);
    layout.LanguageByte = byteAt(bytes, dbfheader::languageAt);
    if (layout.Family == DbfFamily::DBase4 || layout.Family == DbfFamily::DBase7) {
        layout.InTransaction = byteAt(bytes, dbfheader::transactionAt) == 1;
        layout.Encrypted = byteAt(bytes, dbfheader::encryptedAt) == 1;
    }
}

void readNumbersOf2(DbfLayout& layout, const char* bytes)
{
    layout.Year = yearOf(byteAt(bytes, dbf2header::yearAt));
    layout.Month = byteAt(bytes, dbf2header::monthAt);
    layout.Day = byteAt(bytes, dbf2header::dayAt);
    layout.RecordCount = little16(bytes + dbf2header::recordCountAt);
    layout.HeaderLength = dbf2header::length;
    layout.RecordLength = little16(bytes + dbf2header::recordLengthAt);
}

DbfField fieldAt(std::string_view bytes, std::size_t at, const DescriptorShape& shape)
{
    DbfField field;
    const char* const descriptor = bytes.data() + at;
    field.Name = upToZero(bytes.substr(at, shape.NameWidth));
    field.Letter = descriptor[shape.TypeAt];
    field.Length = byteAt(descriptor, shape.LengthAt);
    field.Decimals = byteAt(descriptor, shape.DecimalsAt);
    field.DescriptorAt = at;
    if (shape.Size == descriptorOf3.Size) {
        field.Flags = byteAt(descriptor, foxfield::flagsAt);
    }
    return field;
}

/// Neither a descriptor nor its end mark, but unused room.
bool isUnused(std::string_view descriptor)
{
    return std::ranges::all_of(descriptor, [](char c) { return c == 0; });
}

void readFields(DbfLayout& layout, std::string_view bytes)
{
    const DescriptorShape& shape = descriptorShapeOf(layout.Family);
    const std::size_t last = layout.Family == DbfFamily::DBase2 ? dbf2header::markAt : layout.HeaderLength;
    const std::size_t end = std::min(last, bytes.size());
    std::size_t at = shape.First;
    while (at < end) {
        if (bytes[at] == descriptorEnd) {
            layout.FieldsEndMarked = true;
            break;
        }
        if (end - at < shape.Size || isUnused(bytes.substr(at, shape.Size))) {
            break;
        }
        layout.Fields.push_back(fieldAt(bytes, at, shape));
        at += shape.Size;
    }
    layout.FieldsEndMarked = layout.FieldsEndMarked || (at < bytes.size() && bytes[at] == descriptorEnd);
    layout.FieldsEnd = at;
}

bool canBeWide(const DbfField& field)
{
    return field.Letter == 'C' && field.Decimals != 0;
}

void makeWide(DbfField& field)
{
    field.Length += std::uint32_t{field.Decimals} << 8;
    field.Decimals = 0;
}

std::uint32_t lengthOfFields(const std::vector<DbfField>& fields)
{
    std::uint32_t length = firstFieldOffset;
    for (const DbfField& field : fields) {
        length += field.Length;
    }
    return length;
}

/// The C fields whose decimals byte is the high byte of the length: those that make the fields fill the record. The
/// byte may also be meaningless. If several choices fill the record, or none does, all of them are wide if that fits.
void widenTexts(std::vector<DbfField>& fields, std::uint32_t recordLength)
{
    const std::uint32_t narrow = lengthOfFields(fields);
    if (narrow >= recordLength) {
        return;
    }
    // ways[k]: the number of ways (2: two or more) in which the decimals of the previous fields add up to k.
    constexpr std::size_t sums = 256;
    const std::uint32_t missing = recordLength - narrow;
    std::vector<std::array<std::uint8_t, sums>> ways(1);
    ways[0][0] = 1;
    std::uint32_t all = 0;
    std::vector<DbfField*> wide;
    for (DbfField& field : fields) {
        if (canBeWide(field)) {
            std::array<std::uint8_t, sums> next = ways.back();
            for (std::size_t k = field.Decimals; k < sums; ++k) {
                next[k] = static_cast<std::uint8_t>(std::min(2, next[k] + ways.back()[k - field.Decimals]));
            }
            ways.push_back(next);
            wide.push_back(&field);
            all += std::uint32_t{field.Decimals} << 8;
        }
    }
    std::size_t left = missing / 256;
    const bool unique = missing % 256 == 0 && ways.back()[left] == 1;
    if (!unique && all > missing) {
        return;
    }
    for (std::size_t i = wide.size(); i > 0; --i) {
        const bool leftOut = unique && ways[i - 1][left] != 0;
        if (!leftOut) {
            left -= unique ? wide[i - 1]->Decimals : 0U;
            makeWide(*wide[i - 1]);
        }
    }
}

bool hasBackLink(const DbfLayout& layout)
{
    return layout.Family != DbfFamily::DBase2 && layout.Family != DbfFamily::DBase7 && layout.FieldsEndMarked &&
           layout.HeaderLength == layout.FieldsEnd + 1 + backLinkWidth;
}

void placeFields(DbfLayout& layout)
{
    widenTexts(layout.Fields, layout.RecordLength);
    std::uint32_t offset = firstFieldOffset;
    for (DbfField& field : layout.Fields) {
        field.Offset = offset;
        offset += field.Length;
    }
    layout.FieldsLength = offset;
    layout.FoxFlags = layout.Family == DbfFamily::VisualFoxPro || nullFlagsOf(layout) != nullptr || hasBackLink(layout);
}

void setFault(DbfLayout& layout, std::size_t at, std::string fault)
{
    layout.Fault = std::move(fault);
    layout.FaultAt = at;
}

/// The first fault that makes it impossible to read the table.
void findFault(DbfLayout& layout, std::size_t bytes)
{
    const bool two = layout.Family == DbfFamily::DBase2;
    const std::size_t first = descriptorShapeOf(layout.Family).First;
    const std::size_t recordLengthAt = two ? dbf2header::recordLengthAt : dbfheader::recordLengthAt;
    if (layout.HeaderLength <= first) {
        setFault(layout, dbfheader::headerLengthAt,
                 "the header gives its own length as " + std::to_string(layout.HeaderLength) +
                     ", which leaves no room for columns");
    } else if (layout.HeaderLength > bytes) {
        setFault(layout, bytes,
                 "the file ends at byte " + std::to_string(bytes) + ", within the header of " +
                     count(layout.HeaderLength, "byte"));
    } else if (layout.Fields.empty()) {
        setFault(layout, first, "the header describes no columns");
    } else if (layout.RecordLength == 0) {
        setFault(layout, recordLengthAt, "the header gives a record length of 0");
    } else if (layout.RecordLength < layout.FieldsLength) {
        setFault(layout, recordLengthAt,
                 "the header gives a record length of " + std::to_string(layout.RecordLength) +
                     ", but the columns need " + std::to_string(layout.FieldsLength) + " bytes");
    }
}

}  // namespace

std::string readDbfHeader(InputFile& file)
{
    std::string bytes(preambleSize, '\0');
    bytes.resize(file.read(bytes.data(), preambleSize));
    const std::size_t length = headerLengthOf(bytes);
    if (length > bytes.size() && bytes.size() == preambleSize) {
        bytes.resize(length);
        bytes.resize(preambleSize + file.read(bytes.data() + preambleSize, length - preambleSize));
    }
    return bytes;
}

DbfLayout parseDbfHeader(std::string_view bytes)
{
    DbfLayout layout;
    if (bytes.empty()) {
        layout.Fault = "the file is empty";
        return layout;
    }
    layout.Version = byteAt(bytes.data(), dbfheader::versionAt);
    layout.Known = dbfVersionOf(layout.Version);
    layout.Family = layout.Known != nullptr ? layout.Known->Family : DbfFamily::DBase3;
    if (bytes.size() < preambleSize) {
        setFault(layout, bytes.size(), "the file ends within the header, at byte " + std::to_string(bytes.size()));
        return layout;
    }
    layout.Family == DbfFamily::DBase2 ? readNumbersOf2(layout, bytes.data()) : readNumbers(layout, bytes.data());
    if (layout.Family == DbfFamily::DBase7 && bytes.size() > dbf7header::driverAt) {
        layout.Driver = upToZero(bytes.substr(dbf7header::driverAt, dbf7header::driverWidth));
    }
    readFields(layout, bytes);
    placeFields(layout);
    if (hasBackLink(layout) && bytes.size() >= layout.HeaderLength) {
        layout.Database = upToZero(bytes.substr(layout.FieldsEnd + 1, backLinkWidth));
    }
    findFault(layout, bytes.size());
    return layout;
}

std::vector<Note> layoutNotes(const DbfLayout& layout)
{
    std::vector<Note> notes;
    if (layout.Known == nullptr) {
        notes.push_back({"version byte " + hex(layout.Version) + " is not known; read as dBase III"});
    }
    if (layout.RecordLength > layout.FieldsLength) {
        notes.push_back({"a record has " + count(layout.RecordLength, "byte") + ", its columns " +
                         std::to_string(layout.FieldsLength) + "; the last " +
                         count(layout.RecordLength - layout.FieldsLength, "byte") + " of each are not read"});
    }
    if (layout.Encrypted) {
        notes.push_back({"the header marks the records as encrypted; they are read as they are"});
    }
    return notes;
}

const DbfField* nullFlagsOf(const DbfLayout& layout)
{
    const auto found = std::ranges::find(layout.Fields, '0', &DbfField::Letter);
    return found == layout.Fields.end() ? nullptr : &*found;
}

}  // namespace kd_lib::exchange::detail

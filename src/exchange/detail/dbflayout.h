/// \file
/// The header of a .dbf file: the kind of the table, and the places of its fields.
#pragma once

#include "../../formats/dbfheader.h"

#include <kd_lib/exchange/error.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

class InputFile;

/// One field as the header describes it.
struct DbfField {
    std::string Name;  ///< the bytes, in the table's code page
    char Letter = 0;
    std::uint32_t Length = 0;
    std::uint32_t Offset = 0;  ///< of the field in the record; the deletion mark is at 0
    std::uint8_t Decimals = 0;
    std::uint8_t Flags = 0;        ///< Visual FoxPro's
    std::size_t DescriptorAt = 0;  ///< byte in the file
};

/// The checked header: the fields lie in the record.
struct DbfLayout {
    std::uint8_t Version = 0;
    const formats::DbfVersion* Known = nullptr;  ///< null: the version byte is not known
    formats::DbfFamily Family = formats::DbfFamily::DBase3;
    bool FoxFlags = false;  ///< the descriptors have Visual FoxPro's flags

    int Year = 0;  ///< of the last change, four digits
    int Month = 0;
    int Day = 0;
    std::uint64_t RecordCount = 0;  ///< according to the header
    std::uint32_t HeaderLength = 0;
    std::uint32_t RecordLength = 0;
    std::uint8_t Flags = 0;
    std::uint8_t LanguageByte = 0;
    std::string Driver;    ///< dBase 7's language driver
    std::string Database;  ///< the file of the Visual FoxPro database that the table belongs to
    bool Encrypted = false;
    bool InTransaction = false;

    std::vector<DbfField> Fields;
    std::size_t FieldsEnd = 0;       ///< byte after the last descriptor
    bool FieldsEndMarked = false;    ///< there is an end mark
    std::uint32_t FieldsLength = 0;  ///< sum of the fields and the deletion mark

    /// The reason why the table cannot be read; nothing for a sound table.
    std::optional<std::string> Fault;
    std::size_t FaultAt = 0;  ///< byte in the file
};

/// Reads the header's bytes from the beginning of a file: all of them, or as many as the file has.
std::string readDbfHeader(InputFile& file);

/// Interprets the bytes of a header. If they do not define a table, `Fault` is set, and only the facts found before the
/// fault are filled in.
DbfLayout parseDbfHeader(std::string_view bytes);

/// Notes about a table that can be read although its header is unusual.
std::vector<Note> layoutNotes(const DbfLayout& layout);

/// The field of the null flags; a null pointer if the table has none.
const DbfField* nullFlagsOf(const DbfLayout& layout);

}  // namespace kd_lib::exchange::detail

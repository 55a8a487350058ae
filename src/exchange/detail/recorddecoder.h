/// \file
/// Decodes the bytes of a .dbf record into cells.
#pragma once

#include "binaryvalues.h"
#include "fieldform.h"
#include "memofile.h"

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/record.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// A field that becomes a column.
struct WantedField {
    std::size_t Column = 0;          ///< index of its cell in the record
    std::size_t Index = 0;           ///< of the layout's fields
    std::optional<ColumnType> Type;  ///< the type of the options, if it differs from the field's
};

/// Knows how the field of each column is read. Allocates nothing for a record, unless a value is longer than all
/// previous ones.
class RecordDecoder {
public:
    /// `page` and `memo` (null if there is none) must outlive the object.
    RecordDecoder(const DbfLayout& layout, const std::vector<WantedField>& wanted, const CodePage& page,
                  EncodingErrors onError, MemoFile* memo);

    /// From now on only these columns are read; the cells of the others are null.
    void need(const std::vector<bool>& needed);

    /// Fills the cells of the wanted fields, and the record's flaws. `bytes` begin with the
    /// deletion mark; around them there is `RecordBlocks::slack`. The cells view them, or memory of this object.
    void decode(const char* bytes, Record& record);

    bool metHighByte() const { return MetHighByte; }        ///< a text had a byte above 127
    bool metMissingMemo() const { return MetMissingMemo; }  ///< a pointer was set although there is no memo file

private:
    struct Field {
        std::size_t Column = 0;  ///< index of its cell in the record
        FieldForm Form = FieldForm::Unknown;
        std::uint32_t Offset = 0;
        std::uint32_t Length = 0;
        NullBits Bits;
        std::optional<ColumnType> Type;  ///< to convert the cells to
        Digits Number;                   ///< memory for numbers
        std::string Text;                ///< memory for texts
        std::string Memo;                ///< memory for the bytes of a memo
        std::string Conversion;          ///< memory for results of conversions
    };

    /// The members used for every record, close together.
    struct Step {
        FieldForm Form;  ///< `Unknown` if a value needs more than its bytes
        std::uint32_t Offset;
        std::uint32_t Length;
        std::size_t Column;
        Field* Of;
    };

    static bool decodeUsual(const Step& step, const char* bytes, bool ascii, Cell& cell);
    void decodeOther(Field& field, const char* record, Record& to);
    void convertCell(Field& field, std::string_view bytes, Record& to);
    bool isSet(const char* record, int bit) const;

    void setText(Field& field, std::string_view bytes, Record& to);
    void setVarying(Field& field, const char* record, Record& to);
    void setMemo(Field& field, std::string_view pointer, Record& to);
    void setBinary(Field& field, const char* bytes, Record& to);
    static void set(const Field& field, const Converted& converted, Record& to);

    const CodePage& Page;
    EncodingErrors OnError;
    MemoFile* Memo;
    std::uint32_t RecordLength;
    std::uint32_t NullFlagsAt = 0;
    std::uint32_t NullFlagsLength = 0;
    std::vector<Field> Fields;
    std::vector<Step> Steps;  ///< of the fields that are needed
    bool MetHighByte = false;
    bool MetMissingMemo = false;
};

/// The number of a memo block in a pointer field: 0 for none; nothing if it is not a number.
std::optional<std::uint64_t> memoPointer(std::string_view field);

}  // namespace kd_lib::exchange::detail

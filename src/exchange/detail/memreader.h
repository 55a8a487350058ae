/// \file
/// The variables of a .mem file.
#pragma once

#include "inputfile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// How the variables are written.
enum class MemForm : std::uint8_t {
    DBase,   ///< dBase III and Clipper
    FoxPro,  ///< FoxPro and Visual FoxPro
    Text     ///< only texts: numbers as digits, dates as eight digits
};

/// "dBase III or Clipper", "FoxPro", "texts".
const char* memFormName(MemForm form);

/// Reads the variables in order.
class MemReader {
public:
    /// `file` must be at its beginning and outlive the object.
    explicit MemReader(InputFile& file) : File(file) {}

    enum class Found : std::uint8_t {
        Variable,
        End,      ///< the end mark, or the end of the file
        Cut,      ///< the file ends within a variable
        Unknown,  ///< a variable's type is unknown; nothing more can be read
    };
    Found next();

    // Of the current variable. Views are valid until the next call.
    MemForm form() const { return Form; }
    char type() const { return Type; }                       ///< 'C', 'N', 'D' or 'L'; the byte itself if it is unknown
    std::string_view name() const { return bytes(Name); }    ///< as it is in the file
    std::string_view value() const { return bytes(Value); }  ///< of C without the zero byte at its end
    std::string_view typeByte() const;                       ///< in the header
    std::string_view lengths() const;                        ///< in the header: two bytes
    std::uint64_t offset() const { return Start; }           ///< of the variable's first byte in the file
    std::uint64_t offsetOf(std::string_view piece) const;    ///< of a piece of the variable

    bool hasEndMark() const { return EndMark; }

    /// Bytes after the end mark, which are not read; only if `hasEndMark`.
    bool hasBytesAfterEnd();

    /// Starts again, with the file at its beginning.
    void restart();

private:
    /// Bytes of the variable.
    struct Range {
        std::size_t At = 0;
        std::size_t Length = 0;
    };

    bool has(std::size_t count);
    void load(std::size_t count);
    std::string_view bytes(Range range) const { return std::string_view(Buffer).substr(At + range.At, range.Length); }
    Found takeHeader();
    bool takeLongName();
    std::size_t lengthOfText();
    bool endsWithZero(std::size_t length);
    bool takeValue();
    bool takeBytes(std::size_t length);
    bool takeText(std::size_t length);
    bool takeNumberText();

    InputFile& File;
    std::string Buffer;
    std::size_t At = 0;       // of the variable, in the buffer
    std::uint64_t Start = 0;  // the same in the file
    std::size_t Size = 0;     // of the part of the variable that has been examined
    bool AtEnd = false;
    bool EndMark = false;
    MemForm Form = MemForm::DBase;
    char Type = 0;
    Range Name;
    Range Value;
};

}  // namespace kd_lib::exchange::detail

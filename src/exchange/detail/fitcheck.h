/// \file
/// The limits of a target's columns.
#pragma once

#include <kd_lib/exchange/record.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kd_lib::exchange::detail {

enum class FitRule : std::uint8_t {
    Everything,
    Characters,         ///< texts of at most `Limit` characters
    NoZeroByte,         ///< texts without zero bytes, of at most `Limit` characters (0: of any length)
    Whole32,            ///< whole numbers of 32 bits
    Whole64,            ///< whole numbers of 64 bits
    Decimal,            ///< `Limit` digits before the point and `Decimals` after it
    PostgreSqlNumeric,  ///< as many digits as PostgreSQL accepts
    ExactAsDouble,      ///< numbers whose digits survive in a double
    DoubleOrText,       ///< every number; those whose digits a double would lose are kept as text
    NoNan,              ///< infinities, but not NaN
    Finite              ///< neither
};

/// The check of one column.
struct FitCheck {
    FitRule Rule = FitRule::Everything;
    std::uint32_t Limit = 0;
    std::uint32_t Decimals = 0;
};

/// The checks of a target's columns, chosen once. Nearly every record has only cells that are clearly small enough;
/// such a record is checked in one pass without a branch per cell.
class FitChecks {
public:
    void add(std::size_t column, FitCheck check);

    /// Rejects the cells that do not fit. Removes decimals that are all zeros from whole numbers.
    void apply(Record& record)
    {
        if (!Checks.empty() && !fitsPlainly(record)) {
            applyEach(record);
        }
    }

    /// How many numbers of this column were kept as text because they were too long for a double.
    std::uint64_t keptAsText(std::size_t column) const;

private:
    struct ColumnCheck {
        std::size_t Column;
        FitCheck Check;
        std::uint64_t KeptAsText = 0;
    };

    /// A text or number of up to `Size` bytes fits, unless it has the byte that its list looks for.
    struct PlainSize {
        std::size_t Column;
        std::size_t Size;
    };

    static const char* reasonAgainst(ColumnCheck& check, Cell& cell);
    bool fitsPlainly(const Record& record) const;
    void applyEach(Record& record);

    std::vector<ColumnCheck> Checks;
    std::vector<PlainSize> WithoutZeroByte;
    std::vector<PlainSize> WithoutPoint;
    std::vector<PlainSize> OfAnyBytes;
    std::vector<std::size_t> Floats;
};

/// The checks of a target that has neither NaN nor infinities.
FitChecks finiteFloats(const std::vector<Column>& columns);

}  // namespace kd_lib::exchange::detail

/// \file
/// What a column of a target can hold.
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
    PostgreSqlNumeric,  ///< as many digits as PostgreSQL takes
    ExactAsDouble,      ///< numbers whose digits a double gives back
    DoubleOrText,       ///< every number; those whose digits a double does not give back are kept as text
    NoNan,              ///< infinities, but no NaN
    Finite              ///< neither
};

/// The check of one column.
struct FitCheck {
    FitRule Rule = FitRule::Everything;
    std::uint32_t Limit = 0;
    std::uint32_t Decimals = 0;
};

/// The checks of a target's columns, chosen once. A record in which every cell is plainly small enough is looked at
/// in one pass without a decision per cell; that is nearly every record.
class FitChecks {
public:
    void add(std::size_t column, FitCheck check);

    /// Rejects the cells that do not fit. Decimals that are all zeros are taken off whole numbers.
    void apply(Record& record)
    {
        if (!Checks.empty() && !fitsPlainly(record)) {
            applyEach(record);
        }
    }

    /// How many numbers of this column were too long for a double, and are kept as text.
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

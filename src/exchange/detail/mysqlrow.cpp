#include "mysqlrow.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace kd_lib::exchange::detail {

namespace {

// Measured with MariaDB 10.11; MySQL documents the same limits.
constexpr std::size_t rowBytes = 65535;  // of a row; long texts count as pointers
constexpr std::size_t pageBytes = 8126;  // of the part of a row that InnoDB keeps in the page
constexpr std::size_t pageOverhead = 24;
constexpr std::size_t longTextInRow = 12;
constexpr std::size_t longTextInPage = 21;  // a pointer and its length
constexpr std::size_t shortVarchar = 255;   // bytes; shorter ones stay in the page
constexpr std::size_t bytesOfCharacter = 4;
constexpr std::size_t bytesOfKey = 8;

/// The most bytes that a column needs.
struct Size {
    std::size_t InRow;
    std::size_t InPage;
};

Size both(std::size_t bytes)
{
    return {bytes, bytes};
}

/// Nine digits need four bytes, the remaining digits fewer.
std::size_t bytesOfDigits(std::size_t digits)
{
    return digits / 9 * 4 + (digits % 9 + 1) / 2;
}

Size sizeOf(const Column& column, const TargetType& type)
{
    if (type.VarcharCharacters != 0) {
        const std::size_t bytes = type.VarcharCharacters * bytesOfCharacter;
        const std::size_t lengthBytes = bytes > shortVarchar ? 2 : 1;
        return {bytes + lengthBytes, bytes > shortVarchar ? longTextInPage : bytes + lengthBytes};
    }
    switch (column.Type) {
    case ColumnType::Text:
    case ColumnType::Bytes:
        return {longTextInRow, longTextInPage};
    case ColumnType::Number:
        return both(type.Check.Rule == FitRule::Decimal
                        ? bytesOfDigits(type.Check.Limit) + bytesOfDigits(type.Check.Decimals)
                        : 8);
    case ColumnType::Currency:
        return both(bytesOfDigits(15) + bytesOfDigits(4));
    case ColumnType::Boolean:
        return both(1);
    default:
        return both(8);
    }
}

/// The sizes of the columns of a table.
class Row {
public:
    Row(const std::vector<Column>& columns, bool key, std::vector<TargetType>& types)
        : Columns(columns), Types(types), Order(types.size())
    {
        const std::size_t bits = (types.size() + 7) / 8;
        Sum = {bits + (key ? bytesOfKey : 0), bits + pageOverhead + (key ? bytesOfKey : 0)};
        for (std::size_t i = 0; i < types.size(); ++i) {
            add(sizeOf(columns[i], types[i]));
        }
        std::iota(Order.begin(), Order.end(), std::size_t{0});
        std::ranges::stable_sort(Order, std::ranges::greater(),
                                 [&types](std::size_t i) { return types[i].VarcharCharacters; });
    }

    void shortenRow(const TargetType& longText)
    {
        for (std::size_t i : Order) {
            if (Sum.InRow <= rowBytes) {
                return;
            }
            replace(i, longText);
        }
    }

    /// Only varchars that stay in the page and are longer than a pointer are worth changing.
    bool shortenPage(const TargetType& longText)
    {
        for (std::size_t i : Order) {
            if (Sum.InPage <= pageBytes) {
                return true;
            }
            if (sizeOf(Columns[i], Types[i]).InPage > longTextInPage) {
                replace(i, longText);
            }
        }
        return Sum.InPage <= pageBytes;
    }

private:
    void add(Size size)
    {
        Sum.InRow += size.InRow;
        Sum.InPage += size.InPage;
    }

    void replace(std::size_t i, const TargetType& longText)
    {
        if (Types[i].VarcharCharacters != 0) {
            const Size old = sizeOf(Columns[i], Types[i]);
            Sum = {Sum.InRow - old.InRow, Sum.InPage - old.InPage};
            Types[i] = longText;
            add(sizeOf(Columns[i], Types[i]));
        }
    }

    const std::vector<Column>& Columns;
    std::vector<TargetType>& Types;
    std::vector<std::size_t> Order;  ///< longest varchar first
    Size Sum = {};
};

}  // namespace

bool fitMySqlRow(const Dialect& dialect, const std::vector<Column>& columns, bool key, std::vector<TargetType>& types)
{
    Row row(columns, key, types);
    row.shortenRow(longTextType(dialect));
    return row.shortenPage(longTextType(dialect));
}

}  // namespace kd_lib::exchange::detail

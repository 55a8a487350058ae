/// \file
/// The output of targets as text.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/record.h>

#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace kd_test {

/// A block of few bytes, whose output is a text.
class TextBlock : public kd_lib::exchange::OutputBlock {
public:
    explicit TextBlock(std::size_t size = 8) : OutputBlock(size) {}

    std::string text()
    {
        flush();
        return Text;
    }

protected:
    void take(std::string_view piece) override { Text += piece; }

private:
    std::string Text;
};

inline std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline kd_lib::exchange::Column columnOf(std::string name,
                                         kd_lib::exchange::ColumnType type = kd_lib::exchange::ColumnType::Text,
                                         std::uint32_t width = 0, std::uint32_t decimals = 0)
{
    kd_lib::exchange::Column column;
    column.Name = std::move(name);
    column.Type = type;
    column.Width = width;
    column.Decimals = decimals;
    return column;
}

inline kd_lib::exchange::Record recordOf(std::vector<kd_lib::exchange::Cell> cells)
{
    kd_lib::exchange::Record record;
    record.Number = 1;
    record.Cells = std::move(cells);
    return record;
}

}  // namespace kd_test

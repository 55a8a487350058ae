/// \file
/// A source in memory, for tests of the code between sources and targets.
#pragma once

#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/target.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kd_test {

/// Yields the given records. The bytes of a cell in the file are those of `Bytes`, at 100 x record + column.
class MemorySource : public kd_lib::exchange::Source {
public:
    struct Row {
        std::vector<kd_lib::exchange::Cell> Cells;
        std::vector<kd_lib::exchange::Flaw> Flaws = {};
        bool Deleted = false;
    };

    explicit MemorySource(std::vector<kd_lib::exchange::Column> columns, std::vector<Row> rows = {},
                          std::string file = "memory.dbf")
        : Source(std::move(file)), Rows(std::move(rows))
    {
        Columns = std::move(columns);
    }

    using Source::note;

    std::string Bytes = "raw";
    std::uint64_t FailsAt = 0;  ///< number of a record that cannot be read; 0: none
    std::vector<Row> Rows;

    Origin origin(std::size_t column) const override { return {100 * Current.Number + column, Bytes}; }
    void seek(std::uint64_t number) override { Next = static_cast<std::size_t>(number - 1); }
    std::uint64_t position() const override { return 100 * Next; }
    std::optional<std::uint64_t> size() const override { return 100 * Rows.size(); }

protected:
    bool read() override
    {
        while (Next < Rows.size()) {
            const Row& row = Rows[Next++];
            ++Read;
            if (Next == FailsAt) {
                throw kd_lib::exchange::Error(kd_lib::exchange::Place{File, Next, {}, {}}, "Input/output error");
            }
            if (row.Deleted) {
                ++LeftOut;
                continue;
            }
            Current.Number = Next;
            Current.Offset = 100 * Next;
            Current.Cells = row.Cells;
            Current.Flaws = row.Flaws;
            return true;
        }
        return false;
    }

private:
    std::size_t Next = 0;
};

}  // namespace kd_test

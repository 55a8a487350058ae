/// \file
/// Rows on their way to a server.
#pragma once

#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange {

/// Texts of rows, gathered in chunks of some MiB. A second thread hands a chunk on while the next one is gathered, so
/// that neither the server nor the source waits for the other. Memory: two chunks.
class KD_LIB_EXPORT RowChunks {
public:
    struct Chunk {
        std::string Text;                    ///< the rows, one after the other
        std::vector<std::size_t> Ends;       ///< of each row in `Text`
        std::vector<std::uint64_t> Records;  ///< the number of each row's record

        /// The first `rows` rows.
        std::string_view first(std::size_t rows) const { return std::string_view(Text).substr(0, end(rows)); }

    private:
        std::size_t end(std::size_t rows) const { return rows == 0 ? 0 : Ends[rows - 1]; }
    };

    /// `send` is called on another thread, by one call after the other. What it throws comes out of a later `endRow`, or
    /// of `finish`; nothing is sent after it.
    explicit RowChunks(std::function<void(const Chunk&)> send);
    ~RowChunks();  ///< as `discard`
    RowChunks(const RowChunks&) = delete;
    RowChunks& operator=(const RowChunks&) = delete;

    /// Where the text of the row is to be appended.
    std::string& text() { return Gathered.Text; }

    /// The row of the record of this number is complete.
    void endRow(std::uint64_t record);

    /// Sends what is left, and returns when all has been taken.
    void finish();

    /// Returns when nothing is being sent any more, and forgets the rest.
    void discard() noexcept;

    /// How many rows of a chunk are taken, where `takes` says whether the first so many of them are: to find a refused row
    /// that the server does not name. Calls `takes` about 16 times; what it takes must be undone by itself.
    static std::size_t rowsTaken(const Chunk& chunk, const std::function<bool(std::size_t rows)>& takes);

private:
    void hand();

    std::function<void(const Chunk&)> Send;
    Chunk Gathered;
    Chunk Sending;
    std::future<void> Sender;
};

}  // namespace kd_lib::exchange

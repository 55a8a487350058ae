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

/// Texts of rows, collected in chunks of some MiB. A second thread sends a chunk while the next one is collected, so
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

    /// `send` is called on another thread, one call at a time. If it throws, a later `endRow` or `finish` throws the
    /// same exception, and nothing more is sent.
    explicit RowChunks(std::function<void(const Chunk&)> send);
    ~RowChunks();  ///< as `discard`
    RowChunks(const RowChunks&) = delete;
    RowChunks& operator=(const RowChunks&) = delete;

    /// The text to which the row is appended.
    std::string& text() { return Gathered.Text; }

    /// Marks the row as complete; it comes from the record of this number.
    void endRow(std::uint64_t record);

    /// Sends the rest, and returns when all of it has been sent.
    void finish();

    /// Waits until nothing is being sent any more, and discards the rest.
    void discard() noexcept;

    /// Finds a refused row that the server does not name: returns how many rows at the beginning of a chunk are
    /// accepted. `takes(n)` returns whether the first n rows are accepted, and must undo what it stored. It is called
    /// about 16 times.
    static std::size_t rowsTaken(const Chunk& chunk, const std::function<bool(std::size_t rows)>& takes);

private:
    KD_LIB_LOCAL void hand();

    std::function<void(const Chunk&)> Send;
    Chunk Gathered;
    Chunk Sending;
    std::future<void> Sender;
};

}  // namespace kd_lib::exchange

/// \file
/// Sends rows to the server.
#pragma once

#include "mariadbsession.h"

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/exchange/rowchunks.h>
#include <kd_lib/exchange/servertarget.h>
#include <kd_lib/exchange/tablelayout.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// The statement that stores rows: LOAD DATA LOCAL from memory, or INSERT if the server forbids that.
class RowSender {
public:
    /// `table` and `columns` without quotes; `foreign`: those of the columns that are not UTF-8.
    RowSender(MariadbSession& session, const TableLayout& layout, const std::string& table,
              const std::vector<std::string>& columns, const std::vector<std::string>& foreign);

    /// Appends the row of a record.
    void write(const Record& record, OutputBlock& rows) const;

    /// Sends the first `count` rows of a chunk; nothing if the server accepts them all.
    std::optional<RowRefusal> send(const RowChunks::Chunk& chunk, std::size_t count);

private:
    static int open(void** state, const char* name, void* self);
    static int read(void* state, char* to, unsigned int size);
    static void close(void* state);
    static int reasonOfFailure(void* state, char* to, unsigned int size);

    std::optional<RowRefusal> load(std::string_view rows, std::size_t count);
    std::optional<RowRefusal> insert(const RowChunks::Chunk& chunk, std::size_t count);
    std::optional<RowRefusal> refusal() const;

    MariadbSession& Session;
    const TableLayout& Layout;
    bool Inserts;
    std::size_t LongestStatement;
    std::string Lead;       // the statement, or its part before the rows
    std::string Statement;  // of an INSERT
    std::string_view Rest;  // the rows that LOAD DATA has not read
};

}  // namespace kd_lib::exchange::detail

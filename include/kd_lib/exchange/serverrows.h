/// \file
/// Rows that a server sends.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kd_lib::exchange {

/// The rows of one statement, as a server sends them. Each server has a class derived from it.
class KD_LIB_EXPORT ServerRows : public ResultSource {
public:
    std::uint64_t changes() const override { return Changes; }
    Origin origin(std::size_t) const override { return {}; }

    /// Going back runs the statement again, in a session that refuses changes: a statement that changes data throws a
    /// `SqlError` and has run only once.
    void seek(std::uint64_t number) override;

    std::uint64_t position() const override { return 0; }
    std::optional<std::uint64_t> size() const override { return std::nullopt; }

protected:
    using ResultSource::ResultSource;

    /// Runs a statement; the records are its rows.
    void run(std::string sql);

    /// Runs `Sql` up to its first row and returns whether there is one. The first time it sets `Columns`.
    virtual bool start() = 0;

    /// Takes the next row; false at the end, with `Changes` set.
    virtual bool take() = 0;

    /// Fills the current record's cells, one for each column, with the row that was taken.
    virtual void fill() = 0;

    /// Makes the session refuse statements that change data, from now on.
    virtual void forbidChanges() = 0;

    std::string Sql;
    std::uint64_t Changes = 0;

private:
    bool read() override;
    KD_LIB_LOCAL void rerun();
    KD_LIB_LOCAL bool advance();

    std::uint64_t Number = 0;  // of the current record
    bool Running = false;      // the last row has not been taken
    bool Pending = false;      // the row that was taken is not the current record yet
};

}  // namespace kd_lib::exchange

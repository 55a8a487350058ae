/// \file
/// Rows of PostgreSQL.
#pragma once

#include "postgresqlsession.h"

#include <kd_lib/exchange/databaseserver.h>

#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// The rows of one statement, as the server sends them.
class PostgresqlSource final : public ResultSource {
public:
    PostgresqlSource(const std::string& uri, const ServerOptions& options, std::string sql);

    /// The columns of a table, in the order in which it is stored.
    static std::unique_ptr<PostgresqlSource> ofTable(const std::string& uri, const ServerOptions& options,
                                                     const std::string& table, const std::vector<std::string>& columns);

    std::uint64_t changes() const override { return Changes; }
    Origin origin(std::size_t) const override { return {}; }
    void seek(std::uint64_t number) override;
    std::uint64_t position() const override { return 0; }
    std::optional<std::uint64_t> size() const override { return std::nullopt; }

protected:
    bool read() override;

private:
    PostgresqlSource(const std::string& uri, const ServerOptions& options);

    void start();
    bool take();
    void takeColumns();

    PostgresqlSession Session;
    std::string Sql;
    Result Rows;
    std::vector<std::string> Buffers;  // bytes, decoded
    std::uint64_t Number = 0;
    std::uint64_t Changes = 0;
    bool Running = false;
    bool First = false;  // `Rows` has not been used
    bool Changing = false;
};

}  // namespace kd_lib::exchange::detail

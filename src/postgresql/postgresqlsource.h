/// \file
/// Rows of PostgreSQL.
#pragma once

#include "postgresqlsession.h"

#include <kd_lib/exchange/serverrows.h>

#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// The rows of one statement, as the server sends them.
class PostgresqlSource final : public ServerRows {
public:
    PostgresqlSource(const std::string& uri, const ServerOptions& options, std::string sql);

    /// The columns of a table, in the order in which it is stored.
    PostgresqlSource(const std::string& uri, const ServerOptions& options, const std::string& table,
                     const std::vector<std::string>& columns);

private:
    PostgresqlSource(const std::string& uri, const ServerOptions& options);

    bool start() override;
    bool take() override;
    void fill() override;
    void forbidChanges() override { Session.run("SET SESSION CHARACTERISTICS AS TRANSACTION READ ONLY"); }
    void takeColumns();

    PostgresqlSession Session;
    Result Rows;
    std::vector<std::string> Buffers;  // bytes, decoded
};

}  // namespace kd_lib::exchange::detail

/// \file
/// Rows of MariaDB or MySQL.
#pragma once

#include "mariadbsession.h"

#include <kd_lib/exchange/serverrows.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// The rows of one statement, as the server sends them.
class MariadbSource final : public ServerRows {
public:
    MariadbSource(const std::string& uri, const ServerOptions& options, std::string sql);

    /// The columns of a table, in the order in which it is stored.
    MariadbSource(const std::string& uri, const ServerOptions& options, const std::string& table,
                  const std::vector<std::string>& columns);

private:
    struct Freer {
        void operator()(MYSQL_RES* result) const { mysql_free_result(result); }
    };

    MariadbSource(const std::string& uri, const ServerOptions& options);

    bool start() override;
    bool take() override;
    void fill() override;
    void forbidChanges() override { Session.run("SET SESSION TRANSACTION READ ONLY"); }
    void takeColumns();
    void endResults();

    MariadbSession Session;
    std::unique_ptr<MYSQL_RES, Freer> Rows;  // destroyed before the connection
    MYSQL_ROW Row = nullptr;
};

}  // namespace kd_lib::exchange::detail

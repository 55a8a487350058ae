/// \file
/// Rows of MariaDB or MySQL.
#pragma once

#include "mariadbsession.h"

#include <kd_lib/exchange/databaseserver.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// The rows of one statement, as the server sends them.
class MariadbSource final : public ResultSource {
public:
    MariadbSource(const std::string& uri, const ServerOptions& options, std::string sql);

    /// The columns of a table, in the order in which it is stored.
    static std::unique_ptr<MariadbSource> ofTable(const std::string& uri, const ServerOptions& options,
                                                  const std::string& table, const std::vector<std::string>& columns);

    std::uint64_t changes() const override { return Changes; }
    Origin origin(std::size_t) const override { return {}; }
    void seek(std::uint64_t number) override;
    std::uint64_t position() const override { return 0; }
    std::optional<std::uint64_t> size() const override { return std::nullopt; }

protected:
    bool read() override;

private:
    struct Freer {
        void operator()(MYSQL_RES* result) const { mysql_free_result(result); }
    };

    MariadbSource(const std::string& uri, const ServerOptions& options);

    void start();
    bool take();
    void takeColumns();
    void endResults();

    MariadbSession Session;
    std::string Sql;
    std::unique_ptr<MYSQL_RES, Freer> Rows;  // destroyed before the connection
    MYSQL_ROW Row = nullptr;
    std::uint64_t Number = 0;
    std::uint64_t Changes = 0;
};

}  // namespace kd_lib::exchange::detail

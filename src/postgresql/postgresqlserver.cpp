#include <kd_lib/exchange/postgresqlserver.h>

#include "../servers/serverof.h"
#include "postgresqlimport.h"
#include "postgresqlsource.h"
#include "postgresqltarget.h"

namespace kd_lib::exchange {

namespace {

struct Parts {
    using Rows = detail::PostgresqlSource;
    static constexpr Engine engine = Engine::PostgreSql;
    static constexpr auto load = detail::postgresqlLoad;
    static constexpr auto import = detail::importIntoPostgresql;
};

}  // namespace

std::unique_ptr<DatabaseServer> postgresqlServer(const std::string& uri, const ServerOptions& options)
{
    return std::make_unique<detail::ServerOf<Parts>>(uri, options);
}

DatabaseServer* kd_postgresql_server(const std::string& uri, const ServerOptions& options)
{
    return postgresqlServer(uri, options).release();
}

}  // namespace kd_lib::exchange

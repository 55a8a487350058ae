#include <kd_lib/exchange/mariadbserver.h>

#include "../servers/serverof.h"
#include "mariadbimport.h"
#include "mariadbsource.h"
#include "mariadbtarget.h"

namespace kd_lib::exchange {

namespace {

struct Parts {
    using Rows = detail::MariadbSource;
    static constexpr Engine engine = Engine::MySql;
    static constexpr auto load = detail::mariadbLoad;
    static constexpr auto import = detail::importIntoMariadb;
};

}  // namespace

std::unique_ptr<DatabaseServer> mariadbServer(const std::string& uri, const ServerOptions& options)
{
    return std::make_unique<detail::ServerOf<Parts>>(uri, options);
}

DatabaseServer* kd_mariadb_server(const std::string& uri, const ServerOptions& options)
{
    return mariadbServer(uri, options).release();
}

}  // namespace kd_lib::exchange

#include <kd_lib/exchange/mariadbserver.h>

#include "mariadbimport.h"
#include "mariadbsource.h"
#include "mariadbtarget.h"

namespace kd_lib::exchange {

namespace {

class MariadbServer final : public DatabaseServer {
public:
    MariadbServer(std::string uri, ServerOptions options) : Uri(std::move(uri)), Options(std::move(options)) {}

    const Dialect& dialect() const override { return dialectOf(Engine::MySql); }

    std::unique_ptr<Target> target(const TableOptions& table) override
    {
        return std::make_unique<detail::MariadbTarget>(Uri, table, Options);
    }

    std::unique_ptr<ResultSource> query(const std::string& sql) override
    {
        return std::make_unique<detail::MariadbSource>(Uri, Options, sql);
    }

    std::unique_ptr<Source> table(const std::string& table, const std::vector<std::string>& columns) override
    {
        return detail::MariadbSource::ofTable(Uri, Options, table, columns);
    }

    ImportTally importScript(const std::string& script, const ImportOptions& options) override
    {
        return detail::importIntoMariadb(Uri, Options, script, options);
    }

private:
    std::string Uri;
    ServerOptions Options;
};

}  // namespace

std::unique_ptr<DatabaseServer> mariadbServer(const std::string& uri, const ServerOptions& options)
{
    return std::make_unique<MariadbServer>(uri, options);
}

}  // namespace kd_lib::exchange

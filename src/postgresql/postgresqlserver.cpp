#include <kd_lib/exchange/postgresqlserver.h>

#include "postgresqlimport.h"
#include "postgresqlsource.h"
#include "postgresqltarget.h"

namespace kd_lib::exchange {

namespace {

class PostgresqlServer final : public DatabaseServer {
public:
    PostgresqlServer(std::string uri, ServerOptions options) : Uri(std::move(uri)), Options(std::move(options)) {}

    const Dialect& dialect() const override { return dialectOf(Engine::PostgreSql); }

    std::unique_ptr<Target> target(const TableOptions& table) override
    {
        return std::make_unique<detail::PostgresqlTarget>(Uri, table, Options);
    }

    std::unique_ptr<ResultSource> query(const std::string& sql) override
    {
        return std::make_unique<detail::PostgresqlSource>(Uri, Options, sql);
    }

    std::unique_ptr<Source> table(const std::string& table, const std::vector<std::string>& columns) override
    {
        return detail::PostgresqlSource::ofTable(Uri, Options, table, columns);
    }

    ImportTally importScript(const std::string& script, const ImportOptions& options) override
    {
        return detail::importIntoPostgresql(Uri, Options, script, options);
    }

private:
    std::string Uri;
    ServerOptions Options;
};

}  // namespace

std::unique_ptr<DatabaseServer> postgresqlServer(const std::string& uri, const ServerOptions& options)
{
    return std::make_unique<PostgresqlServer>(uri, options);
}

}  // namespace kd_lib::exchange

/// \file
/// The operations of a server, for the libraries of both servers.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/exchange/servertarget.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kd_lib::exchange::detail {

/// `Parts` holds the differences between servers: `engine`, the function `load` that creates a `ServerLoad`, the class
/// `Rows` of results, and the function `import` for scripts.
template <class Parts>
class ServerOf final : public DatabaseServer {
public:
    ServerOf(std::string uri, ServerOptions options) : Uri(std::move(uri)), Options(std::move(options)) {}

    const Dialect& dialect() const override { return dialectOf(Parts::engine); }

    std::unique_ptr<Target> target(const TableOptions& table) override
    {
        return std::make_unique<ServerTarget>(
            [uri = Uri, options = Options, table](const std::string& file, const std::vector<Column>& columns) {
                return Parts::load(uri, options, table, file, columns);
            });
    }

    std::unique_ptr<ResultSource> query(const std::string& sql) override
    {
        return std::make_unique<typename Parts::Rows>(Uri, Options, sql);
    }

    std::unique_ptr<Source> table(const std::string& table, const std::vector<std::string>& columns) override
    {
        return std::make_unique<typename Parts::Rows>(Uri, Options, table, columns);
    }

    ImportTally importScript(const std::string& script, const ImportOptions& options) override
    {
        return Parts::import(Uri, Options, script, options);
    }

private:
    std::string Uri;
    ServerOptions Options;
};

}  // namespace kd_lib::exchange::detail

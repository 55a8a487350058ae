/// \file
/// Loads a table of MariaDB or MySQL.
#pragma once

#include <kd_lib/exchange/databaseserver.h>

#include <memory>
#include <string>

namespace kd_lib::exchange::detail {

/// Loads a new table under a temporary name, or appends in one transaction.
class MariadbTarget final : public Target {
public:
    MariadbTarget(std::string uri, TableOptions table, ServerOptions options);
    ~MariadbTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;
    std::string destination() const override { return Destination; }

private:
    class Load;

    std::string Uri;
    TableOptions Table;
    ServerOptions Options;
    std::string Destination;
    std::unique_ptr<Load> Work;
};

}  // namespace kd_lib::exchange::detail

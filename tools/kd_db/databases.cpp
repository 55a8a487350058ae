#include "databases.h"

#include "signals.h"

#include <kd_lib/exchange/sqlitetarget.h>

namespace kd_tool {

std::unique_ptr<exchange::Target> databaseTarget(const Options& options)
{
    return std::make_unique<exchange::SqliteTarget>(options.Into, options.Table,
                                                    exchange::SqliteOptions{.Stop = stopToken()});
}

unsigned jobsAtATime(const std::string&, unsigned)
{
    return 1;
}

}  // namespace kd_tool

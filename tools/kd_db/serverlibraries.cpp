#include "serverlibraries.h"

#include "signals.h"

#include <kd_lib/exchange/databaseuri.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/mariadbserver.h>
#include <kd_lib/exchange/postgresqlserver.h>

#include <dlfcn.h>

namespace kd_tool {

namespace {

using exchange::ServerFunction;

[[noreturn, maybe_unused]] void fail(const std::string& database, const std::string& reason)
{
    throw exchange::Error(exchange::withoutPassword(database), reason);
}

#ifdef KD_OPENED_SOVERSION
/// The function of a server's library, which is opened for the database `database`.
ServerFunction* opened(const std::string& database, const std::string& server, const std::string& name)
{
    const std::string library = "libkd_" + name + ".so." KD_OPENED_SOVERSION;
    void* const handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const function = handle != nullptr ? ::dlsym(handle, ("kd_" + name + "_server").c_str()) : nullptr;
    if (function == nullptr) {
        const char* const reason = ::dlerror();
        fail(database, "the " + server + " library cannot be opened (Debian package libkd-" + name +
                           KD_OPENED_SOVERSION "): " + (reason != nullptr ? reason : "no reason given"));
    }
    return reinterpret_cast<ServerFunction*>(function);
}
#endif

ServerFunction* postgresql([[maybe_unused]] const std::string& database)
{
#if !defined(KD_WITH_POSTGRESQL)
    fail(database, "this kd_db was built without PostgreSQL");
#elif defined(KD_OPENED_SOVERSION)
    static ServerFunction* const function = opened(database, "PostgreSQL", "postgresql");
    return function;
#else
    return exchange::kd_postgresql_server;
#endif
}

ServerFunction* mariadb([[maybe_unused]] const std::string& database)
{
#if !defined(KD_WITH_MARIADB)
    fail(database, "this kd_db was built without MariaDB");
#elif defined(KD_OPENED_SOVERSION)
    static ServerFunction* const function = opened(database, "MariaDB", "mariadb");
    return function;
#else
    return exchange::kd_mariadb_server;
#endif
}

}  // namespace

std::unique_ptr<exchange::DatabaseServer> serverOf(const std::string& database)
{
    const exchange::DatabaseKind kind = exchange::databaseKind(database);
    if (kind == exchange::DatabaseKind::Sqlite) {
        return nullptr;
    }
    ServerFunction* const server =
        kind == exchange::DatabaseKind::PostgreSql ? postgresql(database) : mariadb(database);
    return std::unique_ptr<exchange::DatabaseServer>(server(database, {.Stop = stopToken()}));
}

}  // namespace kd_tool

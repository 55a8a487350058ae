#include "postgresqlsession.h"

#include <kd_lib/exchange/databaseuri.h>

#include <sys/socket.h>

namespace kd_lib::exchange::detail {

namespace {

constexpr const char* applicationName = "kd_db";

/// Without this, libpq would print the server's notices.
void passOver(void*, const PGresult*) {}

}  // namespace

PostgresqlSession::PostgresqlSession(const std::string& uri, const ServerOptions& options)
    : Name(withoutPassword(uri)), Stop(options.Stop)
{
    checkStop();
    char* reason = nullptr;
    PQconninfoOption* const parsed = PQconninfoParse(uri.c_str(), &reason);
    if (parsed == nullptr) {
        // After its colon the reason quotes a part of the URI, perhaps the password.
        const std::string text = reason != nullptr ? reason : "out of memory";
        PQfreemem(reason);
        throw OptionError(Name, kd_lib::detail::postgresqlReason(text.substr(0, text.find(": \"")).c_str()));
    }
    PQconninfoFree(parsed);
    const char* const words[] = {"dbname", "client_encoding", "fallback_application_name", nullptr};
    const char* const values[] = {uri.c_str(), "UTF8", applicationName, nullptr};
    Handle.reset(PQconnectdbParams(words, values, 1));
    if (PQstatus(handle()) != CONNECTION_OK) {
        fail(nullptr);
    }
    PQsetNoticeReceiver(handle(), passOver, nullptr);
    OnStop = std::make_unique<Cutter>(Stop, [socket = PQsocket(handle())] { ::shutdown(socket, SHUT_RDWR); });
}

Result PostgresqlSession::run(const std::string& sql, bool copy)
{
    Result result(PQexec(handle(), sql.c_str()));
    const ExecStatusType status = PQresultStatus(result.get());
    const bool copying = copy && (status == PGRES_COPY_IN || status == PGRES_COPY_OUT);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK && status != PGRES_EMPTY_QUERY && !copying) {
        fail(result.get());
    }
    return result;
}

Result PostgresqlSession::rows(const char* sql, const std::string& parameter)
{
    const char* const values[] = {parameter.c_str()};
    Result result(PQexecParams(handle(), sql, 1, nullptr, values, nullptr, nullptr, 0));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
        fail(result.get());
    }
    return result;
}

void PostgresqlSession::fail(const PGresult* result) const
{
    checkStop();
    throw Error(Name, kd_lib::detail::postgresqlReason(result, handle()));
}

void PostgresqlSession::checkStop() const
{
    if (Stop.stop_requested()) {
        throw Stopped(Name, "stopped");
    }
}

}  // namespace kd_lib::exchange::detail

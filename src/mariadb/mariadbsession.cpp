#include "mariadbsession.h"

#include <kd_lib/exchange/databaseuri.h>

#include <errmsg.h>
#include <mysqld_error.h>

#include <sys/socket.h>

namespace kd_lib::exchange::detail {

MariadbSession::MariadbSession(const std::string& uri, const ServerOptions& options)
    : Name(withoutPassword(uri)), Stop(options.Stop)
{
    checkStop();
    std::string reason;
    Handle = kd_lib::detail::openMariadb(kd_lib::detail::MariadbSettings::of(uri), reason);
    if (!Handle) {
        throw Error(Name, reason);
    }
    OnStop = std::make_unique<Cutter>(Stop, [socket = mysql_get_socket(handle())] { ::shutdown(socket, SHUT_RDWR); });
}

MariadbSession::~MariadbSession() = default;

bool MariadbSession::send(const std::string& sql) const
{
    return mysql_real_query(handle(), sql.data(), sql.size()) == 0;
}

void MariadbSession::run(const std::string& sql)
{
    if (!send(sql)) {
        fail();
    }
    for (int more = 0; more == 0; more = mysql_next_result(handle())) {
        if (MYSQL_RES* const result = mysql_use_result(handle()); result != nullptr) {
            mysql_free_result(result);
        }
    }
    if (mysql_errno(handle()) != 0) {
        fail();
    }
}

TextRows MariadbSession::rows(const std::string& sql)
{
    TextRows all;
    MYSQL_RES* const result = send(sql) ? mysql_store_result(handle()) : nullptr;
    if (result == nullptr) {
        fail();
    }
    while (const MYSQL_ROW row = mysql_fetch_row(result)) {
        const unsigned long* const lengths = mysql_fetch_lengths(result);
        std::vector<std::string>& values = all.emplace_back();
        for (unsigned int i = 0; i < mysql_num_fields(result); ++i) {
            values.emplace_back(row[i] != nullptr ? std::string(row[i], lengths[i]) : "");
        }
    }
    mysql_free_result(result);
    return all;
}

std::string MariadbSession::literal(std::string_view text) const
{
    std::string quoted(text.size() * 2 + 2, '\'');
    const unsigned long size = mysql_real_escape_string(handle(), quoted.data() + 1, text.data(), text.size());
    quoted.resize(size + 1);
    return quoted += '\'';
}

std::string MariadbSession::reason() const
{
    return kd_lib::detail::mariadbReason(mysql_error(handle()), mysql_errno(handle()));
}

bool MariadbSession::lost() const
{
    const unsigned int number = mysql_errno(handle());
    return number == CR_SERVER_GONE_ERROR || number == CR_SERVER_LOST || number == ER_CONNECTION_KILLED ||
           number == ER_SERVER_SHUTDOWN || number == CR_COMMANDS_OUT_OF_SYNC;
}

void MariadbSession::fail() const
{
    checkStop();
    throw Error(Name, reason());
}

void MariadbSession::checkStop() const
{
    if (Stop.stop_requested()) {
        throw Stopped(Name, "stopped");
    }
}

}  // namespace kd_lib::exchange::detail

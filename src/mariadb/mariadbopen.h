/// \file
/// Opens connections of libmariadb.
#pragma once

#include <mysql.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kd_lib::detail {

/// Where and how to connect; libmariadb chooses the empty members.
struct MariadbSettings {
    std::string Host;  ///< a name, an address, or the path of a Unix socket
    std::uint16_t Port = 0;
    std::string User;
    std::string Password;
    std::string Database;
    std::vector<std::pair<std::string, std::string>> Options;  ///< as in a URI

    /// The settings of a URI. Throws an `exchange::OptionError` if it is malformed or has an unknown option.
    static MariadbSettings of(const std::string& uri);
};

struct MysqlCloser {
    void operator()(MYSQL* handle) const { mysql_close(handle); }
};
using Mysql = std::unique_ptr<MYSQL, MysqlCloser>;

/// Connects, with the texts of the session in UTF-8. Null after a failure, with its reason.
Mysql openMariadb(const MariadbSettings& settings, std::string& reason);

/// An error of libmariadb or the server: its text on one line and its number.
std::string mariadbReason(const char* text, unsigned int number);

}  // namespace kd_lib::detail

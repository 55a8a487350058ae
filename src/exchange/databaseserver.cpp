#include <kd_lib/exchange/databaseserver.h>

namespace kd_lib::exchange {

DatabaseServer::~DatabaseServer() = default;

}  // namespace kd_lib::exchange

#include <kd_lib/exchange/databaseserver.h>

namespace kd_lib::exchange {

ResultSource::~ResultSource() = default;

DatabaseServer::~DatabaseServer() = default;

}  // namespace kd_lib::exchange

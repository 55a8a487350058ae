#include <kd_lib/exchange/target.h>

namespace kd_lib::exchange {

Target::~Target() = default;

}  // namespace kd_lib::exchange

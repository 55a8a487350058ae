// Operations of the library that are being written: until then the commands that need them fail.
#include <kd_lib/exchange/inspect.h>

namespace kd_lib::exchange {

bool inspect(const std::string& file, const InspectLine&, const InspectOptions&)
{
    throw Error(file, "not possible yet");
}

}  // namespace kd_lib::exchange

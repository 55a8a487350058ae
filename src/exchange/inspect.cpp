#include <kd_lib/exchange/inspect.h>

#include "detail/inspection.h"
#include "detail/lettercase.h"

#include <filesystem>

namespace kd_lib::exchange {

bool inspect(const std::string& file, const InspectLine& line, const InspectOptions& options)
{
    const std::string extension = detail::lowered(std::filesystem::path(file).extension().string());
    detail::Inspection to(file, line, options);
    if (extension == ".dbf") {
        detail::inspectDbf(to);
    } else if (extension == ".dbt" || extension == ".fpt") {
        detail::inspectMemoFile(to);
    } else if (extension == ".mem") {
        detail::inspectMem(to);
    } else {
        throw Error(file, "not a .dbf, .dbt, .fpt or .mem file by its name");
    }
    return to.sound();
}

}  // namespace kd_lib::exchange

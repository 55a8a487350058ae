// A .mem file as a source.

#include "support/checked_source.h"
#include "support/input_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::writeInput("input.mem", std::string_view(reinterpret_cast<const char*>(data), size));
    kd_fuzz::checkSource(kd_fuzz::inputFolder() + "/input.mem", {});
    return 0;
}

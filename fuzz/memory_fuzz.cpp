// A .mem file, listed twice.

#include "support/bounded_output.h"
#include "support/input_folder.h"

#include <kd_lib/xbasememory.h>

#include <exception>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::writeInput("input.mem", std::string_view(reinterpret_cast<const char*>(data), size));
    // An entry takes 32 bytes of the file and writes a line of at most some 300; a digit writes two.
    const kd_fuzz::BoundedOutput output(4096 + 32 * size);
    try {
        kd_lib::xBaseMemory memory;
        memory.Path = kd_fuzz::inputFolder();
        if (memory.open("input")) {
            memory.read();
            memory.read();
        }
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
    return 0;
}

#include "commands.h"

#include "../output.h"

#include <kd_lib/xbasememory.h>

namespace kd_tool {

void memory(const std::string& file)
{
    const FileParts parts(file);
    if (!parts.hasExtension("mem")) {
        throw UsageError(file + ": the file must end in .mem");
    }
    requireReadableFile(file);
    kd_lib::xBaseMemory variables;
    if (parts.Name.empty() || !variables.openPath(file)) {
        throw Failure(file, "cannot be opened");
    }
    ResultOutput results;
    variables.read();
    results.finish();
}

}  // namespace kd_tool

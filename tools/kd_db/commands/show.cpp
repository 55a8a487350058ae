#include "commands.h"

#include "../output.h"

namespace kd_tool {

void show(const SourceOptions& options)
{
    const std::unique_ptr<Source> source = openSource(options);
    ResultOutput results;
    source->table().showHeader();
    results.finish();
}

}  // namespace kd_tool

#include "commands.h"

#include "../carry.h"
#include "../inputs.h"
#include "../listtarget.h"
#include "../signals.h"

namespace kd_tool {

int list(const Options& options, Console& console)
{
    const std::string& file = options.Arguments.front();
    requireTwoOutputs(options);
    requireKind(file, options.Source);
    requireOtherFile(file, options.Output);
    if (options.Output != "-" || !options.Rejects.empty()) {
        finishOnSignal();
    }
    const auto source = exchange::openSource(file, options.Source);
    const std::unique_ptr<RejectsFile> rejects = openRejects(options);
    const auto target = listTarget(options, console);
    return carryAlone(*source, *target, {options, console, rejects.get(), "shown"});
}

int memory(const Options& options, Console& console)
{
    Options variables = options;
    variables.Source.Kind = exchange::SourceKind::Mem;
    return list(variables, console);
}

}  // namespace kd_tool

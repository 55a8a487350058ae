#include "commands.h"

#include "../databases.h"
#include "../exitstatus.h"
#include "../inputs.h"
#include "../signals.h"

#include <kd_lib/exchange/importscript.h>

namespace kd_tool {

int import(const Options& options, Console& console)
{
    if (options.Into.empty()) {
        throw UsageError("--into is missing");
    }
    finishOnSignal();
    const std::string& script = options.Arguments.front();
    console.note(script + ": running into " + shownName(options.Into));
    const WorkInProgress work(console, script, sizeOf({script}));
    exchange::ImportProgress before;
    exchange::ImportOptions settings;
    settings.Stop = stopToken();
    settings.OnProgress = [&](const exchange::ImportProgress& now) {
        console.advance(now.Bytes - before.Bytes, now.Statements - before.Statements);
        before = now;
    };
    const exchange::ImportTally tally = importInto(options.Into, script, settings);
    console.note(script + ": " + counted(tally.Statements, "statement") + " run");
    return statusDone;
}

}  // namespace kd_tool

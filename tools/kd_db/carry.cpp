#include "carry.h"

#include "exitstatus.h"
#include "report.h"
#include "signals.h"

#include <kd_lib/exchange/transfer.h>

#include <algorithm>
#include <new>
#include <sys/stat.h>

namespace kd_tool {

std::unique_ptr<RejectsFile> openRejects(const Options& options)
{
    return options.Rejects.empty() ? nullptr : std::make_unique<RejectsFile>(options.Rejects);
}

void requireOtherFile(const std::string& input, const std::string& output)
{
    struct stat read {};
    struct stat written {};
    if (::stat(input.c_str(), &read) == 0 && ::stat(output.c_str(), &written) == 0 && S_ISREG(read.st_mode) &&
        read.st_dev == written.st_dev && read.st_ino == written.st_ino) {
        throw UsageError(output + ": is the input file");
    }
}

void requireTwoOutputs(const Options& options)
{
    if (options.Rejects == "-" && options.Output == "-") {
        throw UsageError("--rejects and the result cannot both go to standard output");
    }
}

int carry(exchange::Source& source, exchange::Target& target, const Carriage& carriage)
{
    Report report(carriage.To, carriage.Rejects, source.file(), carriage.Verb);
    exchange::Progress before;
    exchange::TransferOptions options;
    options.Policy = carriage.Asked.OnError;
    options.Stop = stopToken();
    options.Limit = carriage.Asked.Limit;
    options.OnReject = [&](const exchange::Reject& reject) { report.reject(reject); };
    options.OnProgress = [&](const exchange::Progress& now) {
        // A source that reads all rows first reads them again.
        carriage.To.advance(now.Bytes - std::min(before.Bytes, now.Bytes), now.Records - before.Records);
        before = now;
    };
    const auto reportRest = [&] {
        report.restOfRejects();
        report.sourceNotes(source.notes());
        report.targetNotes(target.notes());
    };
    try {
        const exchange::Tally tally = exchange::transfer(source, target, options);
        reportRest();
        if (carriage.Tally) {
            report.tally(tally, target.destination());
        }
        return tally.Loss ? statusLoss : statusDone;
    } catch (const exchange::Stopped&) {
        throw;
    } catch (...) {
        reportRest();
        throw;
    }
}

int carryAlone(exchange::Source& source, exchange::Target& target, const Carriage& carriage)
{
    const WorkInProgress work(carriage.To, source.file(), source.size());
    try {
        const int status = carry(source, target, carriage);
        if (carriage.Rejects != nullptr) {
            carriage.Rejects->finish();
        }
        return status;
    } catch (const exchange::Error&) {
        // The rejects before the failure explain it.
        if (carriage.Rejects != nullptr && signalReceived() == 0) {
            carriage.Rejects->finish();
        }
        throw;
    }
}

int withErrorLine(const std::string& file, Console& console, const std::function<int()>& work)
{
    try {
        return work();
    } catch (const exchange::Stopped&) {
        throw;
    } catch (const exchange::OptionError& error) {
        console.trouble(error.what());
        return statusUsage;
    } catch (const UsageError& error) {
        console.trouble(error.what());
        return statusUsage;
    } catch (const exchange::Error& error) {
        console.trouble(error.what());
    } catch (const std::bad_alloc&) {
        console.trouble(file + ": not enough memory");
    }
    return statusFailed;
}

}  // namespace kd_tool

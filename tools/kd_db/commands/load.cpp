#include "commands.h"

#include "../carry.h"
#include "../databases.h"
#include "../exitstatus.h"
#include "../inputs.h"
#include "../signals.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace kd_tool {

namespace {

/// The files of one load, and their results.
class Load {
public:
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the analyser loses sight of the member that owns the file.
    Load(const Options& options, Console& console) : Asked(options), To(console), Rejects(openRejects(options))
    {
        Files = filesOf(options.Arguments, options.Source);
        for (const std::string& file : Files) {
            requireOtherFile(file, options.Into);
            if (file == "-" && options.Table.Table.empty()) {
                throw UsageError("standard input needs --table");
            }
        }
        if (Files.size() > 1 && !options.Table.Table.empty() && options.Table.Mode != exchange::TableMode::Append) {
            throw UsageError("--table names one table; several files need --append with it");
        }
    }

    int run()
    {
        {
            const WorkInProgress work(To, Files.size() == 1 ? Files.front() : counted(Files.size(), "file"),
                                      sizeOf(Files));
            Into.emplace(Asked, Files.size() > 1);
            loadAll();
            // Finished tables stay, even if the load of the others has been stopped.
            Into->finish();
        }
        if (Rejects) {
            Rejects->finish();
        }
        if (Failure) {
            std::rethrow_exception(Failure);
        }
        if (Files.size() > 1) {
            summarize();
        }
        return Status;
    }

private:
    void loadAll()
    {
        const std::size_t jobs = std::min<std::size_t>(jobsAtATime(Asked.Into, Asked.Jobs), Files.size());
        std::vector<std::thread> others;
        for (std::size_t i = 1; i < jobs; ++i) {
            others.emplace_back([this] { loadNext(); });
        }
        loadNext();
        for (std::thread& other : others) {
            other.join();
        }
    }

    /// Loads files until none is left.
    void loadNext()
    {
        for (std::size_t i = Next++; i < Files.size(); i = Next++) {
            try {
                // The exception of a single file determines the status of the program.
                const int status = Files.size() == 1 ? loadFile(Files[i])
                                                     : withErrorLine(Files[i], To, [&] { return loadFile(Files[i]); });
                const std::lock_guard guard(Lock);
                Status = worse(Status, status);
                Failed += status == statusFailed || status == statusUsage ? 1U : 0U;
                WithLosses += status == statusLoss ? 1U : 0U;
            } catch (...) {
                // After a signal the other threads stop by themselves.
                const std::lock_guard guard(Lock);
                Failure = std::current_exception();
                Next = Files.size();
            }
        }
    }

    int loadFile(const std::string& file)
    {
        requireKind(file, Asked.Source);
        const auto source = exchange::openSource(file, Asked.Source);
        const auto target = Into->target();
        return carry(*source, *target, {Asked, To, Rejects.get()});
    }

    void summarize()
    {
        To.note(shownName(Asked.Into) + ": " + std::to_string(Files.size() - Failed) + " of " +
                counted(Files.size(), "table") + " loaded" +
                (WithLosses > 0 ? ", " + std::to_string(WithLosses) + " not whole" : "") +
                (Failed > 0 ? ", " + std::to_string(Failed) + " failed" : ""));
    }

    const Options& Asked;
    Console& To;
    std::unique_ptr<RejectsFile> Rejects;
    std::vector<std::string> Files;
    std::optional<LoadDatabase> Into;
    std::atomic<std::size_t> Next = 0;

    std::mutex Lock;
    int Status = statusDone;
    std::size_t Failed = 0;
    std::size_t WithLosses = 0;
    std::exception_ptr Failure;
};

}  // namespace

int load(const Options& options, Console& console)
{
    if (options.Into.empty()) {
        throw UsageError("--into is missing");
    }
    finishOnSignal();
    return Load(options, console).run();
}

}  // namespace kd_tool

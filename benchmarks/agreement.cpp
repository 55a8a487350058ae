#include "agreement.h"

#include "redirect.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace kd_bench {

namespace {

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string told(const Tally& tally)
{
    return std::to_string(tally.Records) + " records, " + std::to_string(tally.Bytes) + " bytes";
}

/// The tally of one side, and its output.
struct Run {
    Tally Did;
    std::string Text;
};

Run run(const Workload& workload, Work work, const Files& files)
{
    const std::string printed = files.output(".printed");
    removeOutput(workload, files);
    Run run;
    {
        const Redirect toFile(printed);
        run.Did = work(files);
    }
    const bool writesScript = std::string_view(workload.Output) == ".sql";
    run.Text = workload.Prints ? contentOf(printed) : writesScript ? contentOf(files.output(".sql")) : "";
    std::filesystem::remove(printed);
    return run;
}

}  // namespace

std::string disagreement(const Workload& workload, const Files& files)
{
    const Run library = run(workload, workload.Library, files);
    const Run bare = run(workload, workload.Bare, files);
    const std::string name(workload.Name);
    if (library.Did.Records == 0 || library.Did != bare.Did) {
        return name + ": the library did " + told(library.Did) + ", the bare twin " + told(bare.Did);
    }
    return library.Text == bare.Text ? "" : name + ": the library and the bare twin wrote different texts";
}

}  // namespace kd_bench

// table_bench: every workload through the library and, for comparison, as a bare twin.
//   --workloads=NAME,...  only these
//   --records=N           records of a table (wide ones: a tenth); 100000
//   --seed=N              of the generator; 1
//   --folder=DIR          for the inputs and outputs; a new one under the folder for temporary files
// All other options are those of Google Benchmark (--help).

#include "agreement.h"
#include "generator.h"
#include "redirect.h"

#include <kd_lib/tokenizer.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sys/utsname.h>

namespace kd_bench {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t wideShare = 10;

struct Options {
    std::uint64_t Records = 100000;
    std::uint64_t Seed = 1;
    std::string Folder;
    std::vector<const Workload*> Chosen;

    std::uint64_t recordsOf(std::string_view table) const { return table == "wide" ? Records / wideShare : Records; }
};

/// Removes "NAME=" from the beginning of `argument`.
bool takeName(std::string_view& argument, std::string_view name)
{
    if (!argument.starts_with(name)) {
        return false;
    }
    argument.remove_prefix(name.size());
    return true;
}

std::uint64_t numberIn(std::string_view text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument("no number: " + std::string(text));
    }
    return number;
}

void choose(Options& options, std::string_view names)
{
    kd_lib::PieceReader pieces(names, ",");
    for (std::string_view name; pieces.next(name);) {
        options.Chosen.push_back(&workloadNamed(name));
    }
}

/// Removes this program's options from the arguments; Google Benchmark gets the rest.
Options parse(int& argc, char** argv)
{
    Options options;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        std::string_view argument = argv[i];
        if (takeName(argument, "--records=")) {
            options.Records = numberIn(argument);
        } else if (takeName(argument, "--seed=")) {
            options.Seed = numberIn(argument);
        } else if (takeName(argument, "--folder=")) {
            options.Folder = argument;
        } else if (takeName(argument, "--workloads=")) {
            choose(options, argument);
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    if (options.Chosen.empty()) {
        for (const Workload& workload : workloads()) {
            options.Chosen.push_back(&workload);
        }
    }
    return options;
}

/// A folder of this process, removed with its contents.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& parent)
        : Path((parent.empty() ? fs::temp_directory_path() : fs::path(parent)) /
               ("table_bench." + std::to_string(::getpid())))
    {
        fs::create_directories(Path / "out");
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        fs::remove_all(Path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    Files files(const char* table) const { return {Path, table, Path / "out"}; }

private:
    fs::path Path;
};

Profile profileOf(std::string_view table)
{
    return table == "people" ? Profile::Short : profileNamed(table);
}

/// Makes the input of a workload; a database is loaded from the table that it is named after.
void makeInput(const Workload& workload, const Files& files, const Options& options)
{
    const std::string path = files.input(workload.Input);
    if (fs::exists(path)) {
        return;
    }
    if (std::string_view(workload.Input) == ".db") {
        const Workload& load = workloadNamed("record_load");
        makeInput(load, files, options);
        load.Bare({files.Folder, files.Table, files.Folder});
        return;
    }
    writeTable(path, profileOf(workload.Table), options.recordsOf(workload.Table), options.Seed);
}

void measure(benchmark::State& state, const Workload& workload, Work work, const Files& files)
{
    const Redirect nowhere("/dev/null");
    Tally tally;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        removeOutput(workload, files);
        state.ResumeTiming();
        tally = work(files);
    }
    const auto rounds = static_cast<std::int64_t>(state.iterations());
    state.SetItemsProcessed(rounds * static_cast<std::int64_t>(tally.Records));
    state.SetBytesProcessed(rounds * static_cast<std::int64_t>(fs::file_size(files.input(workload.Input))));
}

void add(const Workload& workload, const std::string& side, Work work, const Files& files)
{
    const std::string name = std::string(workload.Name) + '/' + side;
    benchmark::RegisterBenchmark(
        name.c_str(), [&workload, work, files](benchmark::State& state) { measure(state, workload, work, files); })
        ->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime();
}

std::string processor()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

bool isOptimised()
{
#ifdef __OPTIMIZE__
    return std::string_view(KD_BENCH_SANITIZE).empty();
#else
    return false;
#endif
}

void banner(const Options& options)
{
    utsname system{};
    ::uname(&system);
    const std::string records =
        std::to_string(options.Records) + " records, wide tables " + std::to_string(options.recordsOf("wide"));
    benchmark::AddCustomContext("machine",
                                processor() + ", " + system.sysname + ' ' + system.release + ' ' + system.machine);
#ifdef __clang__
    benchmark::AddCustomContext("compiler", __VERSION__);
#else
    benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
    benchmark::AddCustomContext("build", KD_BENCH_BUILD);
    benchmark::AddCustomContext("sizes", records + ", seed " + std::to_string(options.Seed));
    if (!isOptimised()) {
        benchmark::AddCustomContext("warning", "this build is not optimised; its times say nothing");
        std::cerr << "***WARNING*** This build is not optimised; its times say nothing.\n";
    }
}

int run(int argc, char** argv)
{
    const Options options = parse(argc, argv);
    const ScratchFolder folder(options.Folder);
    banner(options);
    for (const Workload* workload : options.Chosen) {
        const Files files = folder.files(workload->Table);
        makeInput(*workload, files, options);
        const std::string problem = disagreement(*workload, files);
        if (!problem.empty()) {
            std::cerr << problem << '\n';
            return 1;
        }
        add(*workload, "library", workload->Library, files);
        add(*workload, "bare", workload->Bare, files);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace

}  // namespace kd_bench

int main(int argc, char** argv)
{
    // The printing of results reads from standard input whether to continue; at the end of input it continues.
    if (std::freopen("/dev/null", "r", stdin) == nullptr) {
        return 1;
    }
    try {
        return kd_bench::run(argc, argv);
    } catch (const std::exception& exception) {
        std::cerr << "table_bench: " << exception.what() << '\n';
        return 2;
    }
}

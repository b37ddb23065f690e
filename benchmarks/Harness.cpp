#include "Harness.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <vector>

namespace bench {

namespace {

std::vector<Comparison> &comparisons()
{
    static std::vector<Comparison> all;
    return all;
}

std::vector<std::function<void()>> &registrations()
{
    static std::vector<std::function<void()>> all;
    return all;
}

/// Name with arguments: "growth/peaks/1024".
std::string nameOf(const benchmark::BenchmarkReporter::Run &run)
{
    const auto &name = run.run_name;
    return name.args.empty() ? name.function_name : name.function_name + '/' + name.args;
}

/// Collects the time of every repetition: per iteration, or per item where an iteration has
/// several.
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.error_occurred) {
                std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
                std::exit(1);
            }
            if (run.run_type != Run::RT_Iteration)
                continue;
            // time of the processor, which other work on the machine hardly changes
            const bool isAsked =
                !run.run_name.time_type.empty(); // by UseRealTime(), UseManualTime()
            const double time = isAsked ? run.real_accumulated_time : run.cpu_accumulated_time;
            const auto items = run.counters.find(kItems);
            m_times[nameOf(run)].push_back(time / static_cast<double>(run.iterations)
                / (items == run.counters.end() ? 1.0 : items->second.value));
        }
    }

    void Finalize() override
    {
        for (auto &[name, times] : m_times)
            std::sort(times.begin(), times.end());
    }

    /// Median of the repetitions in seconds; 0 when the benchmark did not run.
    double median(const std::string &name) const
    {
        const auto found = m_times.find(name);
        return found == m_times.end() ? 0.0 : found->second[found->second.size() / 2];
    }

    /// Sorted, in seconds.
    const std::map<std::string, std::vector<double>> &times() const { return m_times; }

private:
    std::map<std::string, std::vector<double>> m_times;
};

#if defined(__clang__)
constexpr const char *kCompiler = "Clang " __clang_version__;
#elif defined(__GNUC__)
constexpr const char *kCompiler = "GCC " __VERSION__;
#else
constexpr const char *kCompiler = "another compiler";
#endif

/// Calls @p take with each row whose benchmarks both ran, and its ratio.
template <typename Take>
void forEachRatio(const Collector &collector, Take take)
{
    for (const Comparison &row : comparisons()) {
        const double slow = collector.median(row.slow);
        const double fast = collector.median(row.fast);
        if (slow > 0.0 && fast > 0.0) // else left out with --benchmark_filter
            take(row, slow / fast * row.factor);
    }
}

/// One line per comparison: name, ratio, floor. Returns false when a ratio is under its floor.
bool printSummary(const Collector &collector)
{
    bool isGood = true;
    forEachRatio(collector, [&](const Comparison &row, double ratio) {
        std::printf("%s\t%.2f\t%.2f\n", row.name.c_str(), ratio, row.floor);
        isGood = isGood && ratio >= row.floor;
    });
    return isGood;
}

/// All that docs/figures/report-performance needs, a fact a line, its fields between tabs.
bool writeData(const Collector &collector, const std::string &path)
{
    std::ofstream file(path);
    file.precision(5);
    file << "machine\tcompiler\t" << kCompiler << '\n';
    for (const auto &[name, times] : collector.times()) {
        const std::size_t quarter = times.size() / 4;
        file << "time\t" << name << '\t' << times[times.size() / 2] << '\t' << times[quarter]
             << '\t' << times[times.size() - 1 - quarter] << '\n';
    }
    forEachRatio(collector, [&](const Comparison &row, double ratio) {
        file << "ratio\t" << row.name << '\t' << row.slow << '\t' << row.fast << '\t' << ratio
             << '\t' << row.floor << '\n';
    });
    file.close();
    return !file.fail();
}

} // namespace

void compare(const Comparison &comparison)
{
    comparisons().push_back(comparison);
}

void requireEqual(bool isEqual, const std::string &what)
{
    if (isEqual)
        return;
    std::cerr << what << ": the library and the plain form differ\n";
    std::exit(1);
}

Registration::Registration(std::function<void()> add)
{
    registrations().push_back(std::move(add));
}

} // namespace bench

int main(int argc, char *argv[])
{
    // ours: --summary, and --data=FILE, which also summarizes
    bool isSummary = false;
    std::string data;
    const auto isOurs = [&](const char *argument) {
        constexpr const char *kData = "--data=";
        if (std::strncmp(argument, kData, std::strlen(kData)) == 0)
            data = argument + std::strlen(kData);
        else if (std::strcmp(argument, "--summary") != 0)
            return false;
        isSummary = true;
        return true;
    };
    argc = static_cast<int>(std::remove_if(argv + 1, argv + argc, isOurs) - argv);
    for (const auto &add : bench::registrations())
        add();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    if (!isSummary) {
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    bench::Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    if (!data.empty() && !bench::writeData(collector, data)) {
        std::cerr << data << ": cannot be written\n";
        return 2;
    }
    return bench::printSummary(collector) ? 0 : 1;
}

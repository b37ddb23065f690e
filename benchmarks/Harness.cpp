#include "Harness.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

/// Collects the time per iteration of every repetition.
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
            if (run.run_type == Run::RT_Iteration)
                m_times[run.run_name.function_name].push_back(
                    run.real_accumulated_time / static_cast<double>(run.iterations));
        }
    }

    /// Median of the repetitions in seconds; 0 when the benchmark did not run.
    double median(const std::string &name)
    {
        std::vector<double> times = m_times[name];
        if (times.empty())
            return 0.0;
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    }

private:
    std::map<std::string, std::vector<double>> m_times;
};

/// One line per comparison: name, ratio, floor. Returns false when a ratio is under its floor.
bool printSummary(Collector *collector)
{
    bool isGood = true;
    for (const Comparison &row : comparisons()) {
        const double slow = collector->median(row.slow);
        const double fast = collector->median(row.fast);
        if (slow <= 0.0 || fast <= 0.0)
            continue; // left out with --benchmark_filter
        const double ratio = slow / fast * row.factor;
        std::printf("%s\t%.2f\t%.2f\n", row.name.c_str(), ratio, row.floor);
        isGood = isGood && ratio >= row.floor;
    }
    return isGood;
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
    bool isSummary = false;
    const auto isOurs = [&isSummary](const char *argument) {
        const bool matches = std::strcmp(argument, "--summary") == 0;
        isSummary = isSummary || matches;
        return matches;
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
    return bench::printSummary(&collector) ? 0 : 1;
}

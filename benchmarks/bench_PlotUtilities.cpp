#include "Harness.h"
#include "PlainPlotUtilities.h"

#include <vex/PlotUtilities.h>

#include "detail/PlotCorrelation.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

namespace {

using vex::PlotBase;

/// A chromatogram with peaks, unevenly sampled; ends at intensity.
PlotBase signal(qsizetype points, unsigned seed)
{
    std::mt19937 random(seed);
    const auto uniform = [&random] { return static_cast<double>(random()) / 4294967296.0; };
    PlotBase plot;
    double x = 1.0 + 0.005 * uniform();
    for (qsizetype i = 0; i < points; ++i) {
        x += 0.009 * (0.75 + 0.5 * uniform());
        plot.points().append(QPointF(
            x, 1000.0 * (1.1 + std::sin(0.02 * static_cast<double>(i))) + 20.0 * uniform()));
    }
    return plot;
}

/// The same at random positions: nothing tells which of two signals has the next sample.
PlotBase randomSignal(qsizetype points, unsigned seed)
{
    PlotBase plot = signal(points, seed);
    std::mt19937 random(seed);
    std::vector<double> positions(static_cast<std::size_t>(points));
    for (double &x : positions)
        x = 0.009 * static_cast<double>(points) * (static_cast<double>(random()) / 4294967296.0);
    std::sort(positions.begin(), positions.end());
    for (qsizetype i = 0; i < points; ++i)
        plot.points()[i].setX(positions[static_cast<std::size_t>(i)]);
    return plot;
}

struct Pair
{
    explicit Pair(qsizetype points, PlotBase (*make)(qsizetype, unsigned) = signal)
        : a(make(points, 1))
        , b(make(points, 2))
    {
    }
    PlotBase a;
    PlotBase b;
};

bool sameBits(const QList<double> &p, const QList<double> &q)
{
    return p.size() == q.size()
        && std::memcmp(p.constData(), q.constData(), sizeof(double) * std::size_t(p.size())) == 0;
}

bool samePoints(const PlotBase &p, const PlotBase &q)
{
    const auto bytes = sizeof(QPointF) * static_cast<std::size_t>(p.points().size());
    return p.points().size() == q.points().size()
        && std::memcmp(p.points().constData(), q.points().constData(), bytes) == 0;
}

void requireEqual(const Pair &pair)
{
    using namespace vex::PlotUtilities;
    const PlotBase &a = pair.a;
    const PlotBase &b = pair.b;
    bench::requireEqual(*plain::guessSamplingInterval(a) == guessSamplingInterval(a).value()
            && sameBits(*plain::mergeDomains(a, b), mergeDomains(a, b, 0.0).value())
            && samePoints(*plain::subtract(a, b), subtract(a, b, 0.0).value())
            && *plain::relativeAreaOfError(a, b) == relativeAreaOfError(a, b, 0.0).value()
            && *plain::pearsonsCorrelation(a, b) == pearsonsCorrelation(a, b).value()
            && *plain::plotSame(a, b, 2.0, -2.0) == plotSame(a, b, 0.0, 2.0, -2.0).value(),
        "signals");
}

template <typename Slow, typename Fast>
void add(const std::string &name, Slow slow, Fast fast, double floor)
{
    benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(slow());
    });
    benchmark::RegisterBenchmark((name + "/vex").c_str(), [=](benchmark::State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(fast());
    });
    bench::compare({name, name + "/plain", name + "/vex", floor});
}

std::string sizeName(qsizetype points)
{
    return "/1e" + std::to_string(std::lround(std::log10(double(points))));
}

/// What walks along both signals for their values.
void addComparisons(const std::shared_ptr<const Pair> &pair, const std::string &kind, double floor,
    double sameFloor)
{
    using namespace vex::PlotUtilities;
    const PlotBase &a = pair->a;
    const PlotBase &b = pair->b;
    add(
        "subtract" + kind, [pair, &a, &b] { return plain::subtract(a, b); },
        [pair, &a, &b] { return subtract(a, b, 0.0); }, floor);
    add(
        "pearsonsCorrelation" + kind, [pair, &a, &b] { return plain::pearsonsCorrelation(a, b); },
        [pair, &a, &b] { return pearsonsCorrelation(a, b); }, floor);
    add(
        "relativeAreaOfError" + kind, [pair, &a, &b] { return plain::relativeAreaOfError(a, b); },
        [pair, &a, &b] { return relativeAreaOfError(a, b, 0.0); }, floor);
    add(
        "plotSame" + kind, [pair, &a, &b] { return plain::plotSame(a, b, 2.0, -2.0); },
        [pair, &a, &b] { return plotSame(a, b, 0.0, 2.0, -2.0); }, sameFloor);
}

void addAll(qsizetype points)
{
    using namespace vex::PlotUtilities;
    const auto pair = std::make_shared<const Pair>(points);
    requireEqual(*pair);
    const std::string size = sizeName(points);
    const PlotBase &a = pair->a;
    const PlotBase &b = pair->b;
    add(
        "mergeDomains" + size, [pair, &a, &b] { return plain::mergeDomains(a, b); },
        [pair, &a, &b] { return mergeDomains(a, b, 0.0); }, 10.0);
    addComparisons(pair, size, 10.0, 18.0);
    add(
        "guessSamplingInterval" + size, [pair, &a] { return plain::guessSamplingInterval(a); },
        [pair, &a] { return guessSamplingInterval(a); }, 20.0);

    const auto lists = std::make_shared<std::array<QList<double>, 2>>();
    for (qsizetype i = 0; i < points; ++i) {
        lists->at(0).append(a.points()[i].y());
        lists->at(1).append(b.points()[i].y());
    }
    bench::requireEqual(plain::correlation(lists->at(0), lists->at(1))
            == pearsonsCorrelation(lists->at(0), lists->at(1)).value(),
        "list correlation");
    add(
        "list correlation" + size,
        [lists] { return plain::correlation(lists->at(0), lists->at(1)); },
        [lists] { return pearsonsCorrelation(lists->at(0), lists->at(1)); }, 1.3);
}

/// Where the processor cannot guess what comes next.
/// @param floor, sameFloor  of what compares, and of plotSame()
void addRandom(qsizetype points, double floor, double sameFloor)
{
    using namespace vex::PlotUtilities;
    const auto pair = std::make_shared<const Pair>(points, randomSignal);
    requireEqual(*pair);
    addComparisons(pair, "/random" + sizeName(points), floor, sameFloor);
}

/// Time over the number of points, for the growth in the full listing.
void addGrowth(const std::string &name, std::function<void(const Pair &)> work)
{
    benchmark::RegisterBenchmark(("growth/" + name).c_str(),
        [=](benchmark::State &state) {
            const Pair pair(state.range(0));
            for (auto _ : state)
                work(pair);
            state.SetComplexityN(state.range(0));
        })
        ->RangeMultiplier(10)
        ->Range(1000, 10000000)
        ->Complexity();
}

const bench::Registration registration([] {
    for (const qsizetype points : {qsizetype(100000), qsizetype(1000000)})
        addAll(points);
    addRandom(100000, 17.0, 30.0);
    addRandom(1000000, 18.0, 22.0);
    using namespace vex::PlotUtilities;
    addGrowth("plotSame", [](const Pair &pair) {
        benchmark::DoNotOptimize(plotSame(pair.a, pair.b, 0.0, 2.0, -2.0));
    });
    addGrowth("mergeDomains",
        [](const Pair &pair) { benchmark::DoNotOptimize(mergeDomains(pair.a, pair.b, 0.0)); });
    addGrowth("guessSamplingInterval",
        [](const Pair &pair) { benchmark::DoNotOptimize(guessSamplingInterval(pair.a)); });
});

} // namespace

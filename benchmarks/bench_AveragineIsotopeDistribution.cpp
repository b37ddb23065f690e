#include "Harness.h"
#include "Kernels.h"
#include "PlainDistribution.h"
#include "PlainListModel.h"

#include <vex/AveragineIsotopeDistribution.h>
#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

using namespace Qt::StringLiterals;

namespace {

using vex::AveragineIsotopeDistribution;
using Parameters = AveragineIsotopeDistribution::Parameters;

// Shares of the multiply-add limit, SSE2 and AVX2: see docs/performance.md.
constexpr std::array kLimitFloors{1.0 / 2.5, 0.2};

struct TableCase
{
    std::string name;
    Parameters parameters;
    std::array<double, 2> floors; // SSE2, AVX2
};

/// Multiply-adds of all convolutions of a table.
double multiplyAddsOf(const Parameters &parameters)
{
    const vex::IsotopeWorkspace workspace(vex::IsotopeWorkspace::RatiosSet0);
    std::array<int, 5> before{};
    plain::Shares running{1.0};
    double sum = 0.0;
    for (int i = 0; i < parameters.avgDistCount; ++i) {
        for (std::size_t e = 0; e < 5; ++e) {
            const double atoms =
                i * parameters.massSpacing * workspace.atomFractions[e] / workspace.averageAtomMass;
            const int target = static_cast<int>(atoms + 0.5);
            for (; before[e] < target; ++before[e]) {
                const plain::Shares &abundances = workspace.isotopeAbundances[e];
                sum += static_cast<double>(running.size() * abundances.size());
                plain::convolveRepeatedly(parameters.interTrim, 1, abundances, &running);
            }
        }
    }
    return sum;
}

void requireEqualTables(const TableCase &table, const bench::KernelCase &kernel)
{
    vex::detail::setActiveKernel(kernel.kernel);
    const AveragineIsotopeDistribution fast(table.parameters);
    const plain::Distribution slow(table.parameters);
    bool isEqual = fast.patternCount() == static_cast<int>(slow.table.size());
    for (int i = 0; isEqual && i < fast.patternCount(); ++i) {
        isEqual = fast.isotopeIntensityFractions(i * table.parameters.massSpacing)
            == slow.table[static_cast<std::size_t>(i)];
    }
    bench::requireEqual(isEqual, "table " + table.name + ", " + kernel.name);
}

void addTables()
{
    const TableCase cases[] = {
        {"default", Parameters(), {4.2, 6.2}},
        {"accurate", Parameters::makeDefaultForAccurate(), {2.1, 2.2}},
    };
    for (const TableCase &table : cases) {
        const std::string name = "table/" + table.name;
        const Parameters parameters = table.parameters;
        benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
            for (auto _ : state)
                benchmark::DoNotOptimize(plain::Distribution(parameters));
        });
        for (const bench::KernelCase &kernel : bench::kernels()) {
            requireEqualTables(table, kernel);
            const std::string fast = name + '/' + kernel.name;
            benchmark::RegisterBenchmark(fast.c_str(), [=](benchmark::State &state) {
                vex::detail::setActiveKernel(kernel.kernel);
                for (auto _ : state)
                    benchmark::DoNotOptimize(AveragineIsotopeDistribution(parameters));
            });
            bench::compare({fast, name + "/plain", fast, table.floors[kernel.isWide ? 1 : 0]});
            if (table.name == "default")
                bench::compareWithLimit(
                    fast, kernel, multiplyAddsOf(parameters), kLimitFloors[kernel.isWide ? 1 : 0]);
        }
    }
}

void addLookUps()
{
    static const AveragineIsotopeDistribution fast;
    static const plain::Distribution slow{Parameters()};
    static const std::vector<std::pair<double, int>> questions = [] {
        std::mt19937 random(4);
        std::vector<std::pair<double, int>> result(4096);
        for (auto &[mass, peak] : result) {
            mass = 1e5 * static_cast<double>(random()) / 4294967296.0;
            peak = static_cast<int>(random() % 70);
        }
        return result;
    }();
    for (const auto &[mass, peak] : questions) {
        bench::requireEqual(
            fast.isotopeFractionInterpolated(mass, peak) == slow.interpolated(mass, peak)
                && fast.isotopeIntensityFractions(mass) == slow.nearest(mass),
            "look-up");
    }
    const auto add = [](const std::string &name, auto ask, double floor) {
        benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
            for (auto _ : state) {
                for (const auto &[mass, peak] : questions)
                    benchmark::DoNotOptimize(ask(slow, mass, peak));
            }
            state.counters[bench::kItems] = static_cast<double>(questions.size());
        });
        benchmark::RegisterBenchmark((name + "/vex").c_str(), [=](benchmark::State &state) {
            for (auto _ : state) {
                for (const auto &[mass, peak] : questions)
                    benchmark::DoNotOptimize(ask(fast, mass, peak));
            }
            state.counters[bench::kItems] = static_cast<double>(questions.size());
        });
        bench::compare({name, name + "/plain", name + "/vex", floor});
    };
    struct Interpolated
    {
        double operator()(const plain::Distribution &d, double mass, int peak) const
        {
            return d.interpolated(mass, peak);
        }
        double operator()(const AveragineIsotopeDistribution &d, double mass, int peak) const
        {
            return d.isotopeFractionInterpolated(mass, peak);
        }
    };
    struct Nearest
    {
        plain::Shares operator()(const plain::Distribution &d, double mass, int) const
        {
            return d.nearest(mass);
        }
        const plain::Shares *operator()(
            const AveragineIsotopeDistribution &d, double mass, int) const
        {
            return &d.isotopeIntensityFractions(mass);
        }
    };
    add("look-up, interpolated", Interpolated{}, 1.3);
    add("look-up, nearest pattern", Nearest{}, 1.7);
}

vex::MolecularFormula averagine()
{
    vex::MolecularFormula formula;
    using Type = vex::MolecularFormula::AtomType;
    formula.setMolecularFormula({{Type::C, 4.9384}, {Type::H, 7.7583}, {Type::N, 1.3577},
        {Type::O, 1.4773}, {Type::S, 0.0417}});
    return formula;
}

/// The list-based model next to the classic one: at most three times as slow for as many peaks.
void addListModel()
{
    for (const double mass : {1e3, 1e4, 2.5e4, 5e4, 1e5}) {
        for (const bench::KernelCase &kernel : bench::kernels()) {
            const auto add = [&](const std::string &name, auto model) {
                std::ignore = model.init(averagine());
                benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
                    vex::detail::setActiveKernel(kernel.kernel);
                    QList<double> intensities;
                    for (auto _ : state)
                        benchmark::DoNotOptimize(
                            model.peakIntensityRatiosFromMass(mass, &intensities).value());
                });
            };
            const std::string name =
                std::to_string(static_cast<int>(mass / 1e3)) + "kDa/" + kernel.name;
            add("classic/" + name, vex::AveragineIsotopeModel());
            add("list/" + name, vex::AveragineIsotopeModelRefactored(100));
            bench::compare({"list by classic/" + name, "classic/" + name, "list/" + name, 1.0 / 3});
        }
    }
}

struct ListCase
{
    double mass; // daltons
    int capacity;
    std::array<double, 2> floors; // SSE2, AVX2
};

/// The list-based model next to its plain form; beyond 457 kDa the thousands are no longer kept.
void addListModelByPlain()
{
    const ListCase cases[] = {{1e4, 100, {1.5, 2.2}}, {2.5e4, 100, {1.6, 2.4}},
        {5e4, 100, {1.8, 2.5}}, {1e5, 100, {1.5, 2.2}}, {1.5e5, 200, {1.8, 2.6}},
        {6e5, 1000, {7.0, 10.0}}, {1e6, 1000, {5.0, 9.0}}};
    for (const ListCase &asked : cases) {
        vex::AveragineIsotopeModelRefactored model(asked.capacity);
        std::ignore = model.init(averagine());
        QList<double> one;
        std::ignore = model.peakIntensityRatiosFromMass(model.merMass(), &one);
        const plain::ListModel slow(
            {one.cbegin(), one.cbegin() + 3}, model.merMass(), std::size_t(asked.capacity));
        const double mass = asked.mass;
        const std::string name = "listed/" + std::to_string(static_cast<int>(mass / 1e3))
            + "kDa of " + std::to_string(asked.capacity);
        benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
            for (auto _ : state)
                benchmark::DoNotOptimize(slow.sharesOf(mass));
        });
        for (const bench::KernelCase &kernel : bench::kernels()) {
            vex::detail::setActiveKernel(kernel.kernel);
            QList<double> shares;
            std::ignore = model.peakIntensityRatiosFromMass(mass, &shares);
            plain::Shares expected = slow.sharesOf(mass);
            expected.resize(std::size_t(asked.capacity), 0.0);
            bench::requireEqual(
                std::equal(shares.cbegin(), shares.cend(), expected.cbegin(), expected.cend(),
                    [](double a, double b) { return std::fabs(a - b) < 1e-12; }),
                name);
            const std::string fast = name + '/' + kernel.name;
            benchmark::RegisterBenchmark(fast.c_str(), [=](benchmark::State &state) {
                vex::detail::setActiveKernel(kernel.kernel);
                QList<double> intensities;
                for (auto _ : state)
                    benchmark::DoNotOptimize(
                        model.peakIntensityRatiosFromMass(mass, &intensities).value());
            });
            bench::compare({fast, name + "/plain", fast, asked.floors[kernel.isWide ? 1 : 0]});
        }
    }
}

/// Time over the number of patterns and the largest mass, for the growth in the full listing.
void addGrowth()
{
    benchmark::RegisterBenchmark("growth/table",
        [](benchmark::State &state) {
            vex::detail::setActiveKernel(vex::detail::fastestKernel());
            Parameters parameters;
            parameters.avgDistCount = static_cast<double>(state.range(0));
            for (auto _ : state)
                benchmark::DoNotOptimize(AveragineIsotopeDistribution(parameters));
            state.SetComplexityN(state.range(0));
        })
        ->RangeMultiplier(4)
        ->Range(64, 4096)
        ->Complexity();
}

const bench::Registration added([] {
    addTables();
    addLookUps();
    addListModel();
    addListModelByPlain();
    addGrowth();
});

} // namespace

#include "Harness.h"
#include "Kernels.h"
#include "PlainAveragine.h"

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/FormulaParser.h>
#include <vex/IsotopePatternCursor.h>
#include <vex/MolecularFormula.h>
#include <vex/ProteinMassConverter.h>

#include "algo/detail/PatternProduct.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using bench::KernelCase;
using bench::kernels;

const QString kAveragine = u"C49384H77583N13577O14773S417"_s;
constexpr std::array kMasses{1e3, 1e4, 2.5e4, 5e4, 1e5}; // daltons
constexpr double kWithinLimit = 3.0; // times the multiply-add limit
constexpr double kLimitFrom = 2.5e4; // daltons

// Floors of the ratios, SSE2 and AVX2.
constexpr std::array kSetUpFloors{6.0, 10.0};
constexpr std::array kPeaksFloors{8.0, 15.0};
struct FirstQueryCase
{
    double mass; // daltons
    std::array<double, 2> floors;
};
struct ManyCase
{
    int count;
    bool isAscending;
    double floor;
};
constexpr ManyCase kManyMasses[] = {
    {100000, true, 8.0}, {1000, true, 1.5}, {100000, false, 0.7}, {1000, false, 0.7}};
constexpr FirstQueryCase kFirstQueries[] = {
    {1e4, {8.0, 12.0}}, {2.5e4, {7.5, 10.0}}, {1e5, {5.0, 7.5}}};
constexpr std::array kConvolutionsFloors{4.0, 7.0};

vex::MolecularFormula averagine()
{
    QHash<vex::MolecularFormula::AtomType, double> counts;
    std::ignore = vex::FormulaParser::molecularFormulaHashFromString(kAveragine, &counts);
    vex::MolecularFormula formula;
    formula.setMolecularFormula(counts);
    return formula;
}

vex::AveragineIsotopeModel model()
{
    vex::AveragineIsotopeModel result;
    std::ignore = result.init(averagine());
    return result;
}

plain::AveragineModel plainModel()
{
    plain::AveragineModel result;
    result.init(averagine());
    return result;
}

bool sameBits(const QList<double> &a, const QList<double> &b)
{
    return a.size() == b.size()
        && std::memcmp(a.constData(), b.constData(), sizeof(double) * std::size_t(a.size())) == 0;
}

void requireEqualPatterns(const KernelCase &kernel)
{
    vex::detail::setActiveKernel(kernel.kernel);
    const auto fast = model();
    const auto slow = plainModel();
    QList<double> a;
    QList<double> b;
    for (double mass = 1.0; mass < 3e5; mass *= 1.01) {
        bench::requireEqual(fast.peakIntensityRatiosFromMass(mass, &a).value()
                    == slow.peakIntensityRatiosFromMass(mass, &b)
                && sameBits(a, b),
            "pattern, " + kernel.name);
    }
    bench::requireEqual(vex::ProteinMassConverter::averageMassToMono(12345.6, kAveragine)
            == plain::averageMassToMono(12345.6, kAveragine),
        "conversion, " + kernel.name);
}

std::string massName(double mass)
{
    return std::to_string(static_cast<int>(mass / 1e3)) + "kDa";
}

/// Blocks of 1000, 100, 10 and 1 mers of a mass.
std::array<int, 4> blocksOf(double mass, double merMass)
{
    std::array<int, 4> blocks{};
    double mers = 1000.0;
    for (int &count : blocks) {
        for (; mers > 1.0 ? mass >= mers * merMass : mass > 0.5 * merMass; mass -= mers * merMass)
            ++count;
        mers /= 10.0;
    }
    return blocks;
}

/// The convolutions of one query, without what the model keeps between queries.
struct Convolutions
{
    std::vector<vex::detail::Taps> taps;
    long multiplyAdds = 0; // with values that are not zero, and within the 100 peaks

    Convolutions(const plain::AveragineModel &source, double mass)
    {
        const auto blocks = blocksOf(mass, source.merMass());
        int size = 1;
        for (int i = 0; i < 4; ++i) {
            const auto block = vex::detail::tapsOf(source.pattern(3 - i));
            for (int n = 0; n < blocks[std::size_t(i)]; ++n) {
                for (int tap = 0; size > 1 && tap < block.count; ++tap)
                    multiplyAdds += std::min(size, plain::kPeaks - tap);
                size = std::min(size + block.count - 1, plain::kPeaks);
                taps.push_back(block);
            }
        }
    }
};

void addSetUp()
{
    benchmark::RegisterBenchmark("setup/plain", [](benchmark::State &state) {
        const auto formula = averagine();
        for (auto _ : state) {
            plain::AveragineModel result;
            result.init(formula);
            benchmark::DoNotOptimize(result);
        }
    });
    benchmark::RegisterBenchmark("convert/plain", [](benchmark::State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(plain::averageMassToMono(1e4, kAveragine));
    });
    for (const KernelCase &kernel : kernels()) {
        benchmark::RegisterBenchmark(
            ("setup/" + kernel.name).c_str(), [=](benchmark::State &state) {
                vex::detail::setActiveKernel(kernel.kernel);
                const auto formula = averagine();
                for (auto _ : state) {
                    vex::AveragineIsotopeModel result;
                    std::ignore = result.init(formula);
                    benchmark::DoNotOptimize(result);
                }
            });
        benchmark::RegisterBenchmark(
            ("convert/" + kernel.name).c_str(), [=](benchmark::State &state) {
                vex::detail::setActiveKernel(kernel.kernel);
                for (auto _ : state)
                    benchmark::DoNotOptimize(
                        vex::ProteinMassConverter::averageMassToMono(1e4, kAveragine));
            });
        bench::compare({"setup/" + kernel.name, "setup/plain", "setup/" + kernel.name,
            kSetUpFloors[kernel.isWide ? 1 : 0]});
        bench::compare({"convert/" + kernel.name, "convert/plain", "convert/" + kernel.name,
            kSetUpFloors[kernel.isWide ? 1 : 0]});
    }
}

void addPeaks(double mass)
{
    const std::string name = "peaks/" + massName(mass);
    benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
        const auto asked = plainModel();
        QList<double> intensities;
        for (auto _ : state)
            benchmark::DoNotOptimize(asked.peakIntensityRatiosFromMass(mass, &intensities));
    });
    for (const KernelCase &kernel : kernels()) {
        const std::string fast = name + '/' + kernel.name;
        benchmark::RegisterBenchmark(fast.c_str(), [=](benchmark::State &state) {
            vex::detail::setActiveKernel(kernel.kernel);
            const auto asked = model();
            QList<double> intensities;
            for (auto _ : state)
                benchmark::DoNotOptimize(
                    asked.peakIntensityRatiosFromMass(mass, &intensities).value());
        });
        bench::compare({fast, name + "/plain", fast, kPeaksFloors[kernel.isWide ? 1 : 0]});
    }
}

/// A model that is set up and answers once, as for a single protein.
void addFirstQuery()
{
    for (const FirstQueryCase &asked : kFirstQueries) {
        const double mass = asked.mass;
        const std::string name = "first/" + massName(mass);
        benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
            const auto formula = averagine();
            QList<double> intensities;
            for (auto _ : state) {
                plain::AveragineModel result;
                result.init(formula);
                benchmark::DoNotOptimize(result.peakIntensityRatiosFromMass(mass, &intensities));
            }
        });
        for (const KernelCase &kernel : kernels()) {
            const std::string fast = name + '/' + kernel.name;
            benchmark::RegisterBenchmark(fast.c_str(), [=](benchmark::State &state) {
                vex::detail::setActiveKernel(kernel.kernel);
                const auto formula = averagine();
                QList<double> intensities;
                for (auto _ : state) {
                    vex::AveragineIsotopeModel result;
                    std::ignore = result.init(formula);
                    benchmark::DoNotOptimize(
                        result.peakIntensityRatiosFromMass(mass, &intensities).value());
                }
            });
            bench::compare({fast, name + "/plain", fast, asked.floors[kernel.isWide ? 1 : 0]});
        }
    }
}

/// Masses of a mixture, 0.5 to 50 kDa.
std::vector<double> manyMasses(int count, bool isAscending)
{
    std::mt19937 random(count);
    std::vector<double> masses(static_cast<std::size_t>(count));
    for (double &mass : masses)
        mass = 500.0 + 49500.0 * static_cast<double>(random()) / 4294967296.0;
    if (isAscending)
        std::sort(masses.begin(), masses.end());
    return masses;
}

/// A cursor next to the model that it asks; both start with every iteration.
template <typename Model>
void addManyMasses(const std::string &modelName, const Model &model)
{
    for (const ManyCase &asked : kManyMasses) {
        const auto masses = manyMasses(asked.count, asked.isAscending);
        for (const KernelCase &kernel : kernels()) {
            const std::string name = "masses/" + modelName + '/' + std::to_string(asked.count)
                + (asked.isAscending ? " ascending/" : " in any order/") + kernel.name;
            const auto add = [&](const std::string &suffix, auto askerOf) {
                benchmark::RegisterBenchmark((name + suffix).c_str(), [=](benchmark::State &state) {
                    vex::detail::setActiveKernel(kernel.kernel);
                    QList<double> intensities;
                    for (auto _ : state) {
                        auto &&asker = askerOf(model);
                        for (const double mass : masses)
                            benchmark::DoNotOptimize(
                                asker.peakIntensityRatiosFromMass(mass, &intensities).value());
                    }
                    state.counters[bench::kItems] = static_cast<double>(masses.size());
                });
            };
            add("/model", [](const Model &source) -> const Model & { return source; });
            add("/cursor", [](const Model &source) { return vex::IsotopePatternCursor(source); });
            bench::compare({name, name + "/model", name + "/cursor", asked.floor});
        }
    }
}

vex::AveragineIsotopeModelRefactored listModel()
{
    vex::AveragineIsotopeModelRefactored result;
    std::ignore = result.init(averagine());
    return result;
}

/// How near the convolutions of a query come to what the processor can do at most.
void addLimits()
{
    for (const KernelCase &kernel : kernels()) {
        for (const double mass : kMasses) {
            if (mass < kLimitFrom)
                continue;
            const Convolutions convolutions(plainModel(), mass);
            const std::string name = "convolutions/" + massName(mass) + '/' + kernel.name;
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
                vex::detail::setActiveKernel(kernel.kernel);
                const auto source = plainModel();
                const Convolutions own(source, mass);
                for (auto _ : state) {
                    vex::detail::PatternProduct product;
                    for (const auto &taps : own.taps)
                        product.multiply(taps);
                    benchmark::DoNotOptimize(product.values());
                }
            });
            bench::compare({name, "peaks/" + massName(mass) + "/plain", name,
                kConvolutionsFloors[kernel.isWide ? 1 : 0]});
            bench::compareWithLimit(
                name, kernel, static_cast<double>(convolutions.multiplyAdds), 1.0 / kWithinLimit);
        }
    }
}

/// Masses and compositions that are hard to answer: no more than 10 ms each.
void addHardest()
{
    static const QStringList formulas{kAveragine, u"H1"_s, u"P1"_s, u"P1000000H1"_s, u"P100000C1"_s,
        u"P20000C1"_s, u"P3000C1"_s, u"P1000S1"_s, u"Na100C1"_s, u"C10H-9"_s, u"C1H-2"_s,
        u"C1e300H1"_s, u"C-1"_s, u"S1O-1"_s};
    constexpr std::array kHard{
        1e6, 1e9, 1e12, 1e15, 1e18, 1e100, 1.7e308, std::numeric_limits<double>::infinity()};
    benchmark::RegisterBenchmark("hardest",
        [=](benchmark::State &state) {
            vex::detail::setActiveKernel(vex::detail::convolveBaseline);
            QList<double> intensities;
            for (auto _ : state) {
                double worst = 0.0;
                for (const QString &formula : formulas) {
                    QHash<vex::MolecularFormula::AtomType, double> counts;
                    std::ignore =
                        vex::FormulaParser::molecularFormulaHashFromString(formula, &counts);
                    vex::MolecularFormula composition;
                    composition.setMolecularFormula(counts);
                    vex::AveragineIsotopeModel asked;
                    std::ignore = asked.init(composition);
                    for (const double mass : kHard) {
                        const std::clock_t start = std::clock();
                        benchmark::DoNotOptimize(
                            asked.peakIntensityRatiosFromMass(mass, &intensities).value());
                        worst = std::max(worst, double(std::clock() - start) / CLOCKS_PER_SEC);
                    }
                }
                state.SetIterationTime(worst);
            }
        })
        ->UseManualTime()
        ->Iterations(1);
    benchmark::RegisterBenchmark("hardest/allowed",
        [](benchmark::State &state) {
            for (auto _ : state)
                state.SetIterationTime(0.010);
        })
        ->UseManualTime()
        ->Iterations(1);
    bench::compare({"hardest mass, 10 ms allowed", "hardest/allowed", "hardest", 1.0});
}

/// Time over mass, for the growth in the full listing.
void addGrowth()
{
    benchmark::RegisterBenchmark("growth/peaks",
        [](benchmark::State &state) {
            vex::detail::setActiveKernel(vex::detail::fastestKernel());
            const auto asked = model();
            QList<double> intensities;
            for (auto _ : state)
                benchmark::DoNotOptimize(asked
                                             .peakIntensityRatiosFromMass(
                                                 static_cast<double>(state.range(0)), &intensities)
                                             .value());
            state.SetComplexityN(state.range(0));
        })
        ->RangeMultiplier(4)
        ->Range(1 << 10, 1 << 18)
        ->Complexity();
}

const bench::Registration registration([] {
    for (const KernelCase &kernel : kernels())
        requireEqualPatterns(kernel);
    addSetUp();
    for (const double mass : kMasses)
        addPeaks(mass);
    addFirstQuery();
    addManyMasses("classic", model());
    addManyMasses("list", listModel());
    addLimits();
    addHardest();
    addGrowth();
});

} // namespace

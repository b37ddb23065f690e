#include "Harness.h"
#include "Kernels.h"
#include "PlainMolecule.h"

#include <vex/AveragineIsotopeModel.h>
#include <vex/MolecularPattern.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

using bench::KernelCase;
using bench::kernels;

constexpr std::array kMasses{1e4, 5e4, 1.5e5, 1e6}; // daltons
constexpr double kPlainCut = 1e-30; // of the plain form, which would take minutes without
constexpr double kPlainFloor = 5.0;
// So many queries of the classic model may take as long, up to 150 kDa.
constexpr double kMostQueries = 25.0;

/// A protein of the composition of averagine, in whole counts.
vex::ChemicalFormula protein(double mass)
{
    const double units = mass / 111.0543;
    QString text;
    for (const auto &[symbol, count] :
        {std::pair(u'C', 4.9384), {u'H', 7.7583}, {u'N', 1.3577}, {u'O', 1.4773}, {u'S', 0.0417}})
        text += QChar(symbol) + QString::number(std::llround(count * units));
    return vex::ChemicalFormula::read(text).value();
}

vex::AveragineIsotopeModel classicModel()
{
    using Formula = vex::MolecularFormula;
    Formula averagine;
    averagine.setMolecularFormula({{Formula::C, 4.9384}, {Formula::H, 7.7583}, {Formula::N, 1.3577},
        {Formula::O, 1.4773}, {Formula::S, 0.0417}});
    vex::AveragineIsotopeModel model;
    std::ignore = model.init(averagine);
    return model;
}

/// Within 1e-11 of the highest peak and 1e-6 Da: at 1 MDa the plain form rounds off 1.6e-12.
bool isEqual(const vex::MolecularPattern &fast, const plain::Molecule<double> &slow)
{
    const double highest = *std::max_element(slow.shares.begin(), slow.shares.end());
    qint64 at = fast.firstMassNumber() - slow.massNumber;
    for (const auto &[share, mass] : fast.peaks()) {
        const auto i = static_cast<std::size_t>(at++);
        const double expected = double(slow.massNumber + at - 1) + slow.defects[i] / slow.shares[i];
        if (std::fabs(share - slow.shares[i]) > 1e-11 * highest
            || std::fabs(mass - expected) > 1e-6)
            return false;
    }
    return true;
}

void addMolecule(double mass)
{
    const auto formula = protein(mass);
    const std::string name = "molecule/" + std::to_string(static_cast<int>(mass / 1e3)) + "kDa";
    const auto slow = plain::molecule(formula, kPlainCut);
    benchmark::RegisterBenchmark((name + "/plain").c_str(), [=](benchmark::State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(plain::molecule(formula, kPlainCut));
    });
    for (const KernelCase &kernel : kernels()) {
        vex::detail::setActiveKernel(kernel.kernel);
        bench::requireEqual(
            isEqual(vex::MolecularPattern::holding(formula).value(), slow), name + kernel.name);
        const std::string fast = name + '/' + kernel.name;
        benchmark::RegisterBenchmark(fast.c_str(), [=](benchmark::State &state) {
            vex::detail::setActiveKernel(kernel.kernel);
            for (auto _ : state)
                benchmark::DoNotOptimize(vex::MolecularPattern::holding(formula).value());
        });
        bench::compare({fast, name + "/plain", fast, kPlainFloor});
        if (mass > 1.5e5)
            continue;
        benchmark::RegisterBenchmark((fast + "/classic").c_str(), [=](benchmark::State &state) {
            vex::detail::setActiveKernel(kernel.kernel);
            const auto model = classicModel();
            QList<double> intensities;
            for (auto _ : state)
                benchmark::DoNotOptimize(
                    model.peakIntensityRatiosFromMass(mass, &intensities).value());
        });
        bench::compare({fast + ", 25 classic queries", fast + "/classic", fast, 1.0, kMostQueries});
    }
}

const bench::Registration registration([] {
    for (const double mass : kMasses)
        addMolecule(mass);
});

} // namespace

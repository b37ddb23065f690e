#include <vex/AveragineIsotopeModel.h>

#include "algo/detail/ElementTable.h"
#include "algo/detail/HighestPeak.h"
#include "algo/detail/MerBlocks.h"
#include "algo/detail/PatternProduct.h"
#include "algo/detail/ThousandsChain.h"
#include "detail/Trace.h"

#include <QDebug>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/algo/AveragineIsotopeModel"};
namespace at {
constexpr auto patternEmpty = kSource.line(455); // chosen here
} // namespace at

static_assert(AveragineIsotopeModel::kPeakCount == detail::kPatternSize);

} // namespace

AveragineIsotopeModel::AveragineIsotopeModel()
{
    initElements();
}

void AveragineIsotopeModel::initElements()
{
    std::transform(detail::kElements.begin(), detail::kElements.end(), m_elements.begin(),
        [](const detail::ElementSlot &slot) {
            return Element{slot.masses, slot.abundances, slot.averageMass};
        });
}

Error AveragineIsotopeModel::init(const MolecularFormula &formula)
{
    std::array<double, MolecularFormula::kAtomTypeCount> counts{};
    for (std::size_t type = 0; type < counts.size(); ++type)
        counts[type] = formula.count(static_cast<MolecularFormula::AtomType>(type));
    initAverageMer(counts.data());
    return ErrorCode::NoError;
}

void AveragineIsotopeModel::initAverageMer(const double *counts)
{
    m_thousands = std::make_shared<detail::ThousandsChain>();
    std::copy_n(counts, m_composition.size(), m_composition.begin());
    detail::normalize(static_cast<int>(m_composition.size()), m_composition.data());

    m_merMass = 0.0;
    for (std::size_t type = 0; type < m_elements.size(); ++type)
        m_merMass += m_composition[type] * m_elements[type].averageMass;

    constexpr std::size_t kIsotopes = std::tuple_size_v<decltype(Element::abundances)>;
    std::array<double, kIsotopes> single{};
    for (std::size_t shift = 0; shift < kIsotopes; ++shift) {
        for (std::size_t type = 0; type < m_elements.size(); ++type)
            single[shift] += m_composition[type] * m_elements[type].abundances[shift];
    }
    detail::PatternProduct working;
    working.assign(single.data(), kIsotopes);
    working.normalize();
    std::copy_n(working.values(), kPeakCount, m_patterns[0].begin());

    for (std::size_t block = 0; block + 1 < m_patterns.size(); ++block) {
        working.multiply(detail::tapsOf(m_patterns[block].data()), 9);
        working.normalize();
        std::copy_n(working.values(), kPeakCount, m_patterns[block + 1].begin());
    }
}

void AveragineIsotopeModel::averageMer(double mass, detail::PatternProduct *pattern) const
{
    // Without a positive finite mass a mer takes nothing apart: the subtractions would not end.
    if (!(m_merMass > detail::kZero) || !std::isfinite(m_merMass))
        return;
    const detail::MerBlocks blocks = detail::merBlocksOf(mass, m_merMass);
    if (blocks.thousands > 0.0)
        multiplyThousands(blocks.thousands, pattern);
    if (std::isinf(blocks.thousands))
        return;
    const auto multiply = [this, pattern](int times, std::size_t block) {
        if (times > 0)
            pattern->multiply(detail::tapsOf(m_patterns[block].data()), times);
    };
    multiply(blocks.hundreds, 2);
    multiply(blocks.tens, 1);
    multiply(blocks.ones, 0);
}

void AveragineIsotopeModel::multiplyThousands(double times, detail::PatternProduct *pattern) const
{
    const detail::Taps taps = detail::tapsOf(m_patterns[3].data());
    if (m_thousands) // not in a model that was moved from
        times -= m_thousands->begin(taps, times, pattern);
    pattern->multiplyRepeatedly(taps, times);
}

Result<int> AveragineIsotopeModel::peakIntensityRatiosFromMass(
    double mass, QList<double> *intensities) const
{
    detail::PatternProduct pattern;
    averageMer(mass, &pattern);
    intensities->resize(kPeakCount);
    std::copy_n(pattern.values(), kPeakCount, intensities->begin());
    const int best = detail::indexOfHighest(pattern.values(), pattern.size());
    if (!intensities->isEmpty())
        return best;
    detail::logAt(at::patternEmpty, Q_FUNC_INFO).warning("Empty output peak intensities.");
    return detail::stamped(at::patternEmpty, Q_FUNC_INFO, Error(ErrorCode::GeneralFailure));
}

double AveragineIsotopeModel::signalCoverage(double mass) const
{
    detail::PatternProduct pattern;
    averageMer(mass, &pattern);
    return std::accumulate(pattern.values(), pattern.values() + pattern.size(), 0.0);
}

double AveragineIsotopeModel::adjustmentForSingleMer() const
{
    double adjustment = 0.0;
    for (std::size_t type = 0; type < m_elements.size(); ++type) {
        const Element &element = m_elements[type];
        double excess = 0.0;
        for (std::size_t isotope = 1; isotope < element.masses.size(); ++isotope)
            excess += (element.masses[isotope] - element.masses[0]) * element.abundances[isotope];
        adjustment += m_composition[type] * excess;
    }
    return adjustment;
}

double AveragineIsotopeModel::getMonoFromAverageMer(double averageMass) const
{
    if (std::fabs(m_merMass) <= detail::kZero)
        return 0.0;
    return averageMass - adjustmentForSingleMer() * (averageMass / m_merMass);
}

double AveragineIsotopeModel::getAverageFromMonoMass(double monoMass) const
{
    const double adjustment = adjustmentForSingleMer();
    const double scale = std::max({1.0, std::fabs(adjustment), std::fabs(m_merMass)});
    if (std::fabs(m_merMass - adjustment) > scale * detail::kZero)
        return m_merMass * monoMass / (m_merMass - adjustment);
    return 0.0;
}

} // namespace vex

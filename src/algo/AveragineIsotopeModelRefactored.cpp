#include <vex/AveragineIsotopeModelRefactored.h>

#include "algo/detail/ConvolutionKernel.h"
#include "algo/detail/ElementTable.h"
#include "algo/detail/ErrorUtils.h"
#include "algo/detail/HighestPeak.h"
#include "detail/Trace.h"

#include <QDebug>
#include <QVarLengthArray>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, chosen here: the element table ends at 489.
constexpr detail::TraceSource kSource{"src/algo/AveragineIsotopeModelRefactored"};
namespace at {
constexpr auto elementsRefused = kSource.line(501);
constexpr auto elementsNotTaken = kSource.line(502);
constexpr auto compositionRefused = kSource.line(503);
constexpr auto compositionNotTaken = kSource.line(504);
constexpr auto unitTooLong = kSource.line(505);
constexpr auto blockTooLong = kSource.line(506);
constexpr auto noCapacity = kSource.line(507);
} // namespace at

// What the patterns that are kept may lack at their ends: far below what 1e-12 would show, even
// after thousands of convolutions.
constexpr double kNegligible = 1e-20;
constexpr double kLeastCoverage = 0.01; // of the last of the thousands that are kept
constexpr int kMostThousands = 64;

Error refused(detail::TraceSite site, const char *function, const QString &reason)
{
    detail::logAt(site, function).critical("%s", qUtf8Printable(reason));
    return detail::stamped(site, function, Error(ErrorCode::GeneralFailure));
}

/// The first @p capacity entries of the convolution of @p a and @p b, without what is negligible at
/// the end. Both hold shares: no entry is negative.
QList<double> product(const QList<double> &a, const QList<double> &b, int capacity)
{
    const QList<double> &taps = a.size() < b.size() ? a : b;
    const QList<double> &values = a.size() < b.size() ? b : a;
    if (taps.isEmpty())
        return {};
    const qsizetype size = std::min<qsizetype>(a.size() + b.size() - 1, capacity);
    const qsizetype front = taps.size() - 1;
    const qsizetype blocks =
        (size + detail::kKernelBlock - 1) / detail::kKernelBlock * detail::kKernelBlock;
    QVarLengthArray<double, 512> padded(front + std::max(blocks, values.size()));
    std::fill_n(padded.begin(), front, 0.0);
    std::copy(values.begin(), values.end(), padded.begin() + front);
    std::fill(padded.begin() + front + values.size(), padded.end(), 0.0);
    QList<double> result(blocks);
    const auto used = static_cast<int>(std::min(taps.size(), size));
    detail::activeKernel()(taps.constData(), used, padded.constData() + front, result.data(),
        static_cast<int>(blocks));
    qsizetype end = size;
    while (end > 0 && result[end - 1] < kNegligible)
        --end;
    result.resize(end);
    return result;
}

/// @p base convolved with itself, @p exponent times in all; @p exponent is whole.
QList<double> power(QList<double> base, double exponent, int capacity)
{
    QList<double> result{1.0};
    while (true) {
        if (std::fmod(exponent, 2.0) == 1.0)
            result = product(result, base, capacity);
        exponent = std::floor(exponent / 2.0);
        if (!(exponent > 0.0) || result.isEmpty())
            return result;
        const QList<double> squared = product(base, base, capacity);
        if (squared.isEmpty())
            return {};
        if (squared == base) // the single peak 1.0, which no power changes
            return product(result, base, capacity);
        base = squared;
    }
}

double sumOf(const QList<double> &values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

} // namespace

AveragineIsotopeModelRefactored::AveragineIsotopeModelRefactored(int capacity)
    : m_capacity(capacity)
{
    for (const detail::ElementSlot &slot : detail::kElements) {
        Element element{{}, slot.averageMass, slot.masses[0]};
        for (const double abundance : slot.abundances) {
            if (abundance > 0.0)
                element.shares.append(abundance);
        }
        m_elements.append(element);
    }
}

/// Reads the table into one element per atom type; what is wrong with it, or nothing.
QString AveragineIsotopeModelRefactored::readElements(
    const ElementsIsoMassAndAbundances &elements, QList<Element> *result) const
{
    constexpr int kTypes = MolecularFormula::kAtomTypeCount;
    if (elements.numberOfElements() > kTypes)
        return u"The table holds %1 elements, there are %2 atom types."_s
            .arg(elements.numberOfElements())
            .arg(kTypes);
    result->resize(kTypes);
    for (int position = 0; position < elements.numberOfElements(); ++position) {
        QList<ElementsIsoMassAndAbundances::Isotope> isotopes;
        double sum = 0.0;
        for (int i = 0; i < elements.numberOfIsotopesForElement(position); ++i) {
            ElementsIsoMassAndAbundances::Isotope isotope;
            std::ignore = elements.elementIsoMassAbundanceFromIndex( // both are in the table
                position, i, &isotope.mass, &isotope.abundance);
            sum += isotope.abundance;
            if (!std::isfinite(sum) || isotope.abundance < 0.0)
                return u"Element %1, isotope %2: the abundance is %3."_s.arg(position).arg(i).arg(
                    isotope.abundance);
            if (isotope.abundance == 0.0)
                continue;
            if (!std::isfinite(isotope.mass) || !(isotope.mass > 0.0))
                return u"Element %1, isotope %2: the mass is %3."_s.arg(position).arg(i).arg(
                    isotope.mass);
            isotopes.append(isotope);
        }
        if (isotopes.isEmpty())
            return u"Element %1 has no abundance above 0."_s.arg(position);

        Element &element = (*result)[position];
        element.lightestMass = isotopes.constFirst().mass;
        for (const auto &isotope : std::as_const(isotopes))
            element.lightestMass = std::min(element.lightestMass, isotope.mass);
        for (const auto &isotope : std::as_const(isotopes)) {
            const double share = isotope.abundance / sum;
            element.averageMass += share * isotope.mass;
            // One place behind the capacity is enough to see that the element does not fit.
            const double shift = std::round(isotope.mass - element.lightestMass);
            const auto place =
                static_cast<qsizetype>(std::clamp(shift, 0.0, std::max(0.0, double(m_capacity))));
            if (element.shares.size() <= place)
                element.shares.resize(place + 1, 0.0);
            element.shares[place] += share;
        }
    }
    return {};
}

Error AveragineIsotopeModelRefactored::initElementsIsoMassAndAbundance(
    const ElementsIsoMassAndAbundances &elements)
{
    QList<Element> read;
    if (const QString reason = readElements(elements, &read); !reason.isEmpty())
        return refused(at::elementsRefused, Q_FUNC_INFO, reason);
    Unit unit;
    if (!m_counts.isEmpty()) {
        if (Error error = buildUnit(m_counts, read, &unit); error.hasError())
            return detail::stamped(at::elementsNotTaken, Q_FUNC_INFO, std::move(error));
    }
    m_elements = read;
    m_unit = unit;
    return ErrorCode::NoError;
}

Error AveragineIsotopeModelRefactored::init(const MolecularFormula &formula)
{
    QList<double> counts;
    for (int type = 0; type < MolecularFormula::kAtomTypeCount; ++type)
        counts.append(formula.count(static_cast<MolecularFormula::AtomType>(type)));
    Unit unit;
    if (Error error = buildUnit(counts, m_elements, &unit); error.hasError())
        return detail::stamped(at::compositionNotTaken, Q_FUNC_INFO, std::move(error));
    m_counts = counts;
    m_unit = unit;
    return ErrorCode::NoError;
}

Error AveragineIsotopeModelRefactored::buildUnit(
    const QList<double> &counts, const QList<Element> &elements, Unit *unit) const
{
    for (qsizetype type = 0; type < counts.size(); ++type) {
        const bool isCount = std::isfinite(counts[type]) && !(counts[type] < 0.0);
        if (!isCount || (counts[type] > 0.0 && elements[type].shares.isEmpty())) {
            return refused(at::compositionRefused, Q_FUNC_INFO,
                u"The composition holds %1 atoms of type %2%3."_s.arg(counts[type])
                    .arg(type)
                    .arg(isCount ? u", which has no isotopes"_s : QString()));
        }
    }
    const double atoms = sumOf(counts);
    if (!(atoms > 0.0) || !std::isfinite(atoms))
        return refused(
            at::compositionRefused, Q_FUNC_INFO, u"The composition holds %1 atoms."_s.arg(atoms));

    Pattern single;
    for (qsizetype type = 0; type < counts.size(); ++type) {
        const double fraction = counts[type] / atoms;
        if (fraction == 0.0)
            continue;
        const Element &element = elements[type];
        unit->averageMass += fraction * element.averageMass;
        unit->lightestMass += fraction * element.lightestMass;
        if (single.size() < element.shares.size())
            single.resize(element.shares.size(), 0.0);
        for (qsizetype shift = 0; shift < element.shares.size(); ++shift)
            single[shift] += fraction * element.shares[shift];
    }
    const double sum = sumOf(single); // 1 but for rounding
    for (double &share : single)
        share /= sum;
    if (Error error = checkOutOfBounds(single, m_capacity); error.hasError())
        return detail::stamped(at::unitTooLong, Q_FUNC_INFO, std::move(error));
    unit->ones.append(single);
    if (Error error = fillBlocks(unit); error.hasError())
        return detail::stamped(at::blockTooLong, Q_FUNC_INFO, std::move(error));
    return ErrorCode::NoError;
}

Error AveragineIsotopeModelRefactored::fillBlocks(Unit *unit) const
{
    const auto fill = [this](QList<Pattern> *multiples, qsizetype count, double leastCoverage) {
        while (multiples->size() < count && sumOf(multiples->constLast()) > leastCoverage) {
            Error error = checkOutOfBounds(multiples->constLast(), m_capacity);
            if (error.hasError())
                return error;
            multiples->append(product(multiples->constLast(), multiples->constFirst(), m_capacity));
        }
        return Error(ErrorCode::NoError);
    };
    QList<Pattern> *const blocks[] = {&unit->ones, &unit->tens, &unit->hundreds, &unit->thousands};
    for (int i = 0; i < 4; ++i) {
        if (i > 0)
            blocks[i]->append(
                product(blocks[i - 1]->constLast(), blocks[i - 1]->constFirst(), m_capacity));
        const bool isLast = i == 3;
        Error error = fill(blocks[i], isLast ? kMostThousands : 9, isLast ? kLeastCoverage : -1.0);
        if (error.hasError())
            return error;
    }
    return ErrorCode::NoError;
}

/// Without what is negligible at the end.
QList<double> AveragineIsotopeModelRefactored::patternOf(double mass) const
{
    // As the greedy decomposition rounds: half a unit is none, anything above it is one.
    const double units = std::ceil(mass / m_unit.averageMass - 0.5);
    if (m_unit.ones.isEmpty() || !(units > 0.0))
        return {1.0};
    const double thousands = std::floor(units / 1000.0);
    auto rest = static_cast<int>(std::fmod(units, 1000.0)); // 0 for an infinite mass
    // The short ones first: each product is cheap then.
    std::optional<Pattern> pattern;
    for (const QList<Pattern> *block : {&m_unit.ones, &m_unit.tens, &m_unit.hundreds}) {
        if (rest % 10 > 0) {
            const Pattern &next = (*block)[rest % 10 - 1];
            pattern = pattern ? product(*pattern, next, m_capacity) : next;
        }
        rest /= 10;
    }
    if (!(thousands > 0.0))
        return *pattern;
    const Pattern large = thousands <= static_cast<double>(m_unit.thousands.size())
        ? m_unit.thousands[static_cast<qsizetype>(thousands) - 1]
        : power(m_unit.thousands.constFirst(), thousands, m_capacity);
    return pattern ? product(large, *pattern, m_capacity) : large;
}

Result<int> AveragineIsotopeModelRefactored::peakIntensityRatiosFromMass(
    double mass, QList<double> *intensities) const
{
    intensities->clear();
    const Pattern pattern = patternOf(mass);
    if (Error error = checkOutOfBounds(pattern, m_capacity); error.hasError())
        return detail::stamped(at::noCapacity, Q_FUNC_INFO, std::move(error));
    intensities->resize(m_capacity); // new entries are 0.0
    std::copy(pattern.begin(), pattern.end(), intensities->begin());
    return detail::indexOfHighest(pattern.constData(), static_cast<int>(pattern.size()));
}

double AveragineIsotopeModelRefactored::signalCoverage(double mass) const
{
    return m_capacity < 1 ? 0.0 : sumOf(patternOf(mass));
}

double AveragineIsotopeModelRefactored::getMonoFromAverageMer(double averageMass) const
{
    if (m_unit.ones.isEmpty())
        return 0.0;
    return averageMass * (m_unit.lightestMass / m_unit.averageMass);
}

double AveragineIsotopeModelRefactored::getAverageFromMonoMass(double monoMass) const
{
    if (m_unit.ones.isEmpty())
        return 0.0;
    return monoMass * (m_unit.averageMass / m_unit.lightestMass);
}

} // namespace vex

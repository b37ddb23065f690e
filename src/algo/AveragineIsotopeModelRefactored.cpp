#include <vex/AveragineIsotopeModelRefactored.h>

#include "algo/detail/ElementTable.h"
#include "algo/detail/ErrorUtils.h"
#include "algo/detail/ListedElement.h"
#include "algo/detail/UnitPatterns.h"
#include "detail/Trace.h"

#include <QDebug>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, chosen here: the element table ends at 489.
constexpr detail::TraceSource kSource{"src/algo/AveragineIsotopeModelRefactored"};
namespace at {
constexpr auto elementsRefused = kSource.line(501);
constexpr auto elementsNotTaken = kSource.line(502);
constexpr auto countRefused = kSource.line(503);
constexpr auto compositionNotTaken = kSource.line(504);
constexpr auto unitTooLong = kSource.line(505);
constexpr auto atomsRefused = kSource.line(506);
constexpr auto noCapacity = kSource.line(507);
} // namespace at

Error refused(detail::TraceSite site, const char *function, const QString &reason)
{
    detail::logAt(site, function).critical("%s", qUtf8Printable(reason));
    return detail::stamped(site, function, Error(ErrorCode::GeneralFailure));
}

/// Reads the table into one element per atom type; what is wrong with it, or nothing.
QString readElements(const ElementsIsoMassAndAbundances &elements, int capacity,
    std::vector<detail::ListedElement> *result)
{
    const auto placeOf = [](int element, int isotope) {
        return u"Element %1, isotope %2"_s.arg(QString::number(element), QString::number(isotope));
    };
    constexpr int kTypes = MolecularFormula::kAtomTypeCount;
    if (elements.numberOfElements() > kTypes)
        return u"The table holds %1 elements, there are %2 atom types."_s.arg(
            QString::number(elements.numberOfElements()), QString::number(kTypes));
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
                return u"%1: the abundance is %2."_s.arg(
                    placeOf(position, i), QString::number(isotope.abundance));
            if (isotope.abundance == 0.0)
                continue;
            if (!std::isfinite(isotope.mass) || !(isotope.mass > 0.0))
                return u"%1: the mass is %2."_s.arg(
                    placeOf(position, i), QString::number(isotope.mass));
            isotopes.append(isotope);
        }
        if (isotopes.isEmpty())
            return u"Element %1 has no abundance above 0."_s.arg(position);

        detail::ListedElement &element = (*result)[static_cast<std::size_t>(position)];
        element.lightestMass = isotopes.constFirst().mass;
        for (const auto &isotope : std::as_const(isotopes))
            element.lightestMass = std::min(element.lightestMass, isotope.mass);
        for (const auto &isotope : std::as_const(isotopes)) {
            const double share = isotope.abundance / sum;
            element.averageMass += share * isotope.mass;
            // One place behind the capacity is enough to see that the element does not fit.
            const double shift = std::round(isotope.mass - element.lightestMass);
            const auto place =
                static_cast<std::size_t>(std::clamp(shift, 0.0, std::max(0.0, double(capacity))));
            if (element.shares.size() <= place)
                element.shares.resize(place + 1, 0.0);
            element.shares[place] += share;
        }
    }
    return {};
}

} // namespace

AveragineIsotopeModelRefactored::AveragineIsotopeModelRefactored(int capacity)
    : m_capacity(capacity)
{
    static const auto builtIn = [] {
        auto elements = std::make_shared<Elements>();
        for (const detail::ElementSlot &slot : detail::kElements) {
            const auto end = std::find(slot.abundances.begin(), slot.abundances.end(), 0.0);
            elements->push_back({{slot.abundances.begin(), end}, slot.averageMass, slot.masses[0]});
        }
        return elements;
    }();
    m_elements = builtIn;
}

Error AveragineIsotopeModelRefactored::initElementsIsoMassAndAbundance(
    const ElementsIsoMassAndAbundances &elements)
{
    const auto read = std::make_shared<Elements>();
    if (const QString reason = readElements(elements, m_capacity, read.get()); !reason.isEmpty())
        return refused(at::elementsRefused, Q_FUNC_INFO, reason);
    if (m_counts.isEmpty())
        m_elements = read;
    else if (Error error = setUp(m_counts, read); error.hasError())
        return detail::stamped(at::elementsNotTaken, Q_FUNC_INFO, std::move(error));
    return ErrorCode::NoError;
}

Error AveragineIsotopeModelRefactored::init(const MolecularFormula &formula)
{
    QList<double> counts;
    for (int type = 0; type < MolecularFormula::kAtomTypeCount; ++type)
        counts.append(formula.count(static_cast<MolecularFormula::AtomType>(type)));
    return detail::stamped(at::compositionNotTaken, Q_FUNC_INFO, setUp(counts, m_elements));
}

/// Takes both, or neither.
Error AveragineIsotopeModelRefactored::setUp(
    const QList<double> &counts, const std::shared_ptr<const Elements> &elements)
{
    const auto elementOf = [&elements](qsizetype type) -> const detail::ListedElement & {
        return (*elements)[static_cast<std::size_t>(type)];
    };
    for (qsizetype type = 0; type < counts.size(); ++type) {
        const bool isCount = std::isfinite(counts[type]) && !(counts[type] < 0.0);
        if (!isCount || (counts[type] > 0.0 && elementOf(type).shares.empty())) {
            return refused(at::countRefused, Q_FUNC_INFO,
                u"The composition holds %1 atoms of type %2%3."_s.arg(QString::number(counts[type]),
                    QString::number(type), isCount ? u", which has no isotopes"_s : QString()));
        }
    }
    const double atoms = std::accumulate(counts.begin(), counts.end(), 0.0);
    if (!(atoms > 0.0) || !std::isfinite(atoms))
        return refused(
            at::atomsRefused, Q_FUNC_INFO, u"The composition holds %1 atoms."_s.arg(atoms));

    double averageMass = 0.0;
    double lightestMass = 0.0;
    QList<double> unit;
    for (qsizetype type = 0; type < counts.size(); ++type) {
        const double fraction = counts[type] / atoms;
        if (fraction == 0.0)
            continue;
        const detail::ListedElement &element = elementOf(type);
        averageMass += fraction * element.averageMass;
        lightestMass += fraction * element.lightestMass;
        unit.resize(std::max(unit.size(), qsizetype(element.shares.size())), 0.0);
        for (std::size_t shift = 0; shift < element.shares.size(); ++shift)
            unit[qsizetype(shift)] += fraction * element.shares[shift];
    }
    if (Error error = checkOutOfBounds(unit, m_capacity); error.hasError()) {
        detail::logAt(at::unitTooLong, Q_FUNC_INFO)
            .critical("A unit of the composition has more isotope peaks than the capacity, %d.",
                m_capacity);
        return detail::stamped(at::unitTooLong, Q_FUNC_INFO, std::move(error));
    }
    const double sum = std::accumulate(unit.begin(), unit.end(), 0.0); // 1 but for rounding
    for (double &share : unit)
        share /= sum;
    m_unit = std::make_shared<detail::UnitPatterns>(
        std::vector<double>(unit.begin(), unit.end()), averageMass, lightestMass, m_capacity);
    m_counts = counts;
    m_elements = elements;
    return ErrorCode::NoError;
}

Result<int> AveragineIsotopeModelRefactored::peakIntensityRatiosFromMass(
    double mass, QList<double> *intensities) const
{
    if (m_capacity < 1) {
        intensities->clear();
        return refused(at::noCapacity, Q_FUNC_INFO, u"The capacity is %1 peaks."_s.arg(m_capacity));
    }
    intensities->resize(m_capacity);
    if (!m_unit) {
        intensities->fill(0.0);
        intensities->front() = 1.0;
        return 0;
    }
    auto pattern = m_unit->buffer();
    auto spare = m_unit->buffer();
    const detail::ShareBuffer &shares = m_unit->sharesOf(mass, &pattern, &spare);
    shares.writeTo(intensities->data());
    return shares.indexOfHighest();
}

double AveragineIsotopeModelRefactored::signalCoverage(double mass) const
{
    if (m_capacity < 1)
        return 0.0;
    if (!m_unit)
        return 1.0;
    auto pattern = m_unit->buffer();
    auto spare = m_unit->buffer();
    const detail::ShareBuffer &shares = m_unit->sharesOf(mass, &pattern, &spare);
    return std::min(1.0, std::accumulate(shares.values(), shares.values() + shares.size(), 0.0));
}

double AveragineIsotopeModelRefactored::getMonoFromAverageMer(double averageMass) const
{
    return m_unit ? averageMass * (m_unit->lightestMass() / m_unit->averageMass()) : 0.0;
}

double AveragineIsotopeModelRefactored::getAverageFromMonoMass(double monoMass) const
{
    return m_unit ? monoMass * (m_unit->averageMass() / m_unit->lightestMass()) : 0.0;
}

double AveragineIsotopeModelRefactored::merMass() const
{
    return m_unit ? m_unit->averageMass() : 0.0;
}

} // namespace vex

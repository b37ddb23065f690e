#include <vex/ElementsIsoMassAndAbundances.h>

#include "algo/detail/ErrorUtils.h"
#include "detail/Trace.h"

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/algo/AveragineIsotopeModelRefactored"};
namespace at {
constexpr auto elementOutside = kSource.line(450);
constexpr auto isotopeOutside = kSource.line(451);
constexpr auto insertedSizesDiffer = kSource.line(469);
constexpr auto setSizesDiffer = kSource.line(489);
} // namespace at

/// Appends the pairs of both lists, which are equally long.
void append(const QList<double> &masses, const QList<double> &abundances,
    ElementsIsoMassAndAbundances::Element *element)
{
    for (qsizetype i = 0; i < masses.size(); ++i)
        element->isotopes.append({masses[i], abundances[i]});
}

} // namespace

Error ElementsIsoMassAndAbundances::insertIsoMassAndAbundance(
    const QList<double> &masses, const QList<double> &abundances)
{
    Error error = notSameSizeReturn(masses, abundances, Error(ErrorCode::GeneralFailure));
    if (error.hasError())
        return detail::stamped(at::insertedSizesDiffer, Q_FUNC_INFO, std::move(error));
    Element element;
    append(masses, abundances, &element);
    m_elements.append(element);
    return ErrorCode::NoError;
}

Error ElementsIsoMassAndAbundances::setIsoMassAndAbundanceForElement(
    int, const QList<double> &masses, const QList<double> &abundances)
{
    // Deliberate: what passes the check reports success and is dropped.
    Error error = notSameSizeReturn(masses, abundances, Error(ErrorCode::GeneralFailure));
    return detail::stamped(at::setSizesDiffer, Q_FUNC_INFO, std::move(error));
}

Error ElementsIsoMassAndAbundances::elementIsoMassAbundanceFromIndex(
    int element, int isotope, double *mass, double *abundance) const
{
    Error error = ErrorUtils::indexInRange(m_elements, element, Error(ErrorCode::GeneralFailure));
    if (error.hasError())
        return detail::stamped(at::elementOutside, Q_FUNC_INFO, std::move(error));
    const QList<Isotope> &isotopes = m_elements[element].isotopes;
    error = ErrorUtils::indexInRange(isotopes, isotope, Error(ErrorCode::GeneralFailure));
    if (error.hasError())
        return detail::stamped(at::isotopeOutside, Q_FUNC_INFO, std::move(error));
    *mass = isotopes[isotope].mass;
    *abundance = isotopes[isotope].abundance;
    return ErrorCode::NoError;
}

} // namespace vex

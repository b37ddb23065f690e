#include <vex/MolecularMass.h>

#include "algo/detail/ElementTable.h"

namespace vex {

namespace {

template <typename MassOf>
double sumOver(const MolecularFormula &formula, MassOf massOf)
{
    double sum = 0.0;
    for (std::size_t type = 0; type < detail::kElements.size(); ++type) {
        const double count = formula.count(static_cast<MolecularFormula::AtomType>(type));
        sum += count * massOf(detail::kElements[type]);
    }
    return sum;
}

} // namespace

double MolecularMass::average(const MolecularFormula &formula)
{
    return sumOver(formula, [](const detail::ElementSlot &slot) { return slot.averageMass; });
}

double MolecularMass::monoisotopic(const MolecularFormula &formula)
{
    return sumOver(formula, [](const detail::ElementSlot &slot) { return slot.masses[0]; });
}

} // namespace vex

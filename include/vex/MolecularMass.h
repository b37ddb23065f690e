#pragma once

#include <vex/Export.h>
#include <vex/MolecularFormula.h>

namespace vex {

/// Masses of a composition, from the element table of AveragineIsotopeModel (docs/constants.md).
///
/// Sums run in the order of MolecularFormula::AtomType.
class VEX_EXPORT MolecularMass
{
public:
    /// Average mass in daltons: each element's isotope masses weighted by their abundance.
    static double average(const MolecularFormula &formula);

    /// Mass in daltons of the molecule that holds only the lightest isotope of each element.
    static double monoisotopic(const MolecularFormula &formula);
};

} // namespace vex

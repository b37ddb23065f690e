#pragma once

#include <QtGlobal>

#include <array>
#include <string_view>

#include <vex/Export.h>

namespace vex {

/// Atom counts of the amino-acid residues (amino acid minus water) and of a few building blocks.
///
/// Given by the interface: B repeats N, Z repeats Q, X stands for an average residue, U carries no
/// selenium. "1" is water, "2" one hydrogen atom, "3" one carbon atom.
class VEX_EXPORT ResidueCompositions
{
public:
    /// Counts of C, H, N, O and S, in this order (not that of MolecularFormula::AtomType).
    using AtomCounts = std::array<qint32, 5>;

    /// The atom counts of @p code, such as "A"; null when the table lacks it. Case matters.
    static const AtomCounts *find(std::string_view code);
};

} // namespace vex

#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <vex/Export.h>
#include <vex/ResidueCompositions.h>

namespace vex {

/// What the precomputed isotope patterns are grown from: the composition of averagine and the
/// isotopes of its elements.
///
/// Every sequence of elements is in the order C, H, N, O, S, which is not that of
/// MolecularFormula::AtomType. The values are given by the interface; docs/constants.md compares
/// them with published ones.
struct VEX_EXPORT IsotopeWorkspace
{
    /// Sets of isotope abundances; every value above 1 stands for RatiosSet2.
    enum IsotopeCompositionRatios : int {
        RatiosSet0 = 0, ///< the set of AveragineIsotopeDistribution
        RatiosSet1 = 1, ///< Deliberate: sulfur-36 stands at the +3 position
        RatiosSet2 = 2, ///< Deliberate: the abundances of sulfur add up to 1.0006
    };

    /// Fills the record; the auxiliary lists stay empty.
    IsotopeWorkspace(IsotopeCompositionRatios ratios);

    /// Fraction of each element among the atoms of averagine. Deliberate: they add up to 1.0001.
    std::vector<double> atomFractions;
    /// For each element the abundances of its isotopes by nominal mass shift, lightest first.
    std::vector<std::vector<double>> isotopeAbundances;
    std::vector<double> auxiliaryC; ///< for the caller's use; the library never looks at it
    std::vector<double> auxiliaryH; ///< for the caller's use; the library never looks at it
    std::vector<double> auxiliaryN; ///< for the caller's use; the library never looks at it
    std::vector<double> auxiliaryO; ///< for the caller's use; the library never looks at it
    std::vector<double> auxiliaryS; ///< for the caller's use; the library never looks at it
    /// Average mass of one averagine atom in daltons.
    double averageAtomMass;
    /// Atom counts by residue code, from the table of ResidueCompositions.
    std::map<std::string, std::reference_wrapper<const ResidueCompositions::AtomCounts>>
        residueCompositions;
};

/// Adds atoms to an isotope pattern: convolves it with the element's abundances once per atom and
/// cuts off, after each atom, the entries at its end that are below @p trimThreshold.
///
/// The threshold is absolute, and only the end is cut: index 0 stays the monoisotopic peak. A
/// pattern that is cut to nothing gives the warning "isoVector is empty" in the log, for each
/// further atom of the same element again, and stays empty.
///
/// @param trimThreshold  share of the signal below which an entry at the end is cut
/// @param workspace      the abundances; a missing list is empty, one behind the fifth not used
/// @param atomsToAdd     at least five counts in the order C, H, N, O, S; below 1 adds none
/// @param pattern        replaced by the grown one; index 0 is the monoisotopic peak
/// @param atomTotals     at least five; accumulates the counts, whatever became of the pattern
VEX_EXPORT void constructNextIsotope(double trimThreshold, const IsotopeWorkspace &workspace,
    const std::vector<int> &atomsToAdd, std::vector<double> &pattern, std::vector<int> &atomTotals);

} // namespace vex

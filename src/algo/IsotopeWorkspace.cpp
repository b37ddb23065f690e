#include <vex/IsotopeWorkspace.h>

#include "algo/detail/IsotopeGrowth.h"
#include "algo/detail/ResidueTable.h"

namespace vex {

namespace {

using Abundances = std::vector<std::vector<double>>;

constexpr std::size_t kElements = 5; // C, H, N, O, S

// Given by the interface, as is the order of the isotopes.
Abundances abundancesOf(IsotopeWorkspace::IsotopeCompositionRatios ratios)
{
    switch (ratios) {
    case IsotopeWorkspace::RatiosSet0:
        return {{0.9893, 0.0107}, {0.999885, 0.000115}, {0.99636, 0.00364},
            {0.99757, 0.00038, 0.00205}, {0.9499, 0.0075, 0.0425, 0.0, 0.0001}};
    case IsotopeWorkspace::RatiosSet1:
        // Deliberate: sulfur-36 stands at the +3 position.
        return {{0.9889, 0.0111}, {0.9998, 0.0002}, {0.9963, 0.0037}, {0.9976, 0.0004, 0.002},
            {0.9502, 0.0075, 0.0421, 0.0002, 0.0}};
    default:
        // Deliberate: the abundances of sulfur add up to 1.0006.
        return {{0.9893, 0.0107}, {0.999885, 0.000115}, {0.99632, 0.00368},
            {0.99757, 0.00038, 0.00205}, {0.9499, 0.0076, 0.0429, 0.0, 0.0002}};
    }
}

} // namespace

IsotopeWorkspace::IsotopeWorkspace(IsotopeCompositionRatios ratios)
    : atomFractions{0.3171, 0.4982, 0.0872, 0.0949, 0.0027} // Deliberate: the sum is 1.0001
    , isotopeAbundances(abundancesOf(ratios))
    , averageAtomMass(7.1371)
{
    for (const detail::ResidueRecord &record : detail::kResidues)
        residueCompositions.emplace(record.code, record.atoms);
}

void constructNextIsotope(double trimThreshold, const IsotopeWorkspace &workspace,
    const std::vector<int> &atomsToAdd, std::vector<double> &pattern, std::vector<int> &atomTotals)
{
    detail::GrowingPattern growing(pattern);
    const Abundances &lists = workspace.isotopeAbundances; // anybody's to change
    const std::vector<double> none;
    for (std::size_t element = 0; element < kElements; ++element) {
        const std::vector<double> &abundances = element < lists.size() ? lists[element] : none;
        growing.addAtoms(atomsToAdd[element], abundances, trimThreshold);
        atomTotals[element] += atomsToAdd[element];
    }
    pattern = growing.values();
}

} // namespace vex

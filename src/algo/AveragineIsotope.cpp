#include <vex/IsotopeWorkspace.h>
#include <vex/ResidueCompositions.h>

#include "algo/IsotopeGrowth.h"

namespace vex {

namespace {

/// One line of the residue table.
struct ResidueCompositionRecord
{
    char code[12]; // at most 11 characters; empty ends the table
    ResidueCompositions::AtomCounts atoms;
};

// Given by the interface.
constexpr ResidueCompositionRecord kResidues[] = {
    // C, H, N, O, S
    {"A", {3, 5, 1, 1, 0}},
    {"R", {6, 12, 4, 1, 0}},
    {"N", {4, 6, 2, 2, 0}},
    {"D", {4, 5, 1, 3, 0}},
    {"B", {4, 6, 2, 2, 0}},
    {"C", {3, 5, 1, 1, 1}},
    {"E", {5, 7, 1, 3, 0}},
    {"Q", {5, 8, 2, 2, 0}},
    {"Z", {5, 8, 2, 2, 0}},
    {"G", {2, 3, 1, 1, 0}},
    {"H", {6, 7, 3, 1, 0}},
    {"I", {6, 11, 1, 1, 0}},
    {"L", {6, 11, 1, 1, 0}},
    {"K", {6, 12, 2, 1, 0}},
    {"M", {5, 9, 1, 1, 1}},
    {"F", {9, 9, 1, 1, 0}},
    {"P", {5, 7, 1, 1, 0}},
    {"S", {3, 5, 1, 2, 0}},
    {"T", {4, 7, 1, 2, 0}},
    {"U", {3, 5, 1, 1, 0}},
    {"W", {11, 10, 2, 1, 0}},
    {"Y", {9, 9, 1, 2, 0}},
    {"X", {6, 10, 1, 1, 0}},
    {"V", {5, 9, 1, 1, 0}},
    {"1", {0, 2, 0, 1, 0}},
    {"2", {0, 1, 0, 0, 0}},
    {"3", {1, 0, 0, 0, 0}},
    {"", {}},
};

using Abundances = std::vector<std::vector<double>>; // C, H, N, O, S

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
    for (const ResidueCompositionRecord *record = kResidues; record->code[0] != '\0'; ++record)
        residueCompositions.emplace(record->code, record->atoms);
}

void constructNextIsotope(double trimThreshold, const IsotopeWorkspace &workspace,
    const std::vector<int> &atomsToAdd, std::vector<double> &pattern, std::vector<int> &atomTotals)
{
    detail::GrowingPattern growing(pattern);
    for (std::size_t element = 0; element < workspace.isotopeAbundances.size(); ++element) {
        growing.addAtoms(atomsToAdd[element], workspace.isotopeAbundances[element], trimThreshold);
        atomTotals[element] += atomsToAdd[element];
    }
    pattern = growing.values();
}

const ResidueCompositions::AtomCounts *ResidueCompositions::find(std::string_view code)
{
    for (const ResidueCompositionRecord *record = kResidues; record->code[0] != '\0'; ++record) {
        if (code == record->code)
            return &record->atoms;
    }
    return nullptr;
}

} // namespace vex

#pragma once

#include <vex/MolecularFormula.h>

#include <array>

namespace vex::detail {

/// Isotopes of one element; positions are nominal mass shifts, empty ones 0.0.
struct ElementSlot
{
    std::array<double, 4> masses{}; // daltons
    std::array<double, 4> abundances{}; // fractions
    double averageMass = 0.0; // daltons, sum of mass times abundance
};

constexpr ElementSlot elementSlot(std::array<double, 4> masses, std::array<double, 4> abundances)
{
    ElementSlot slot{masses, abundances, 0.0};
    for (std::size_t i = 0; i < masses.size(); ++i)
        slot.averageMass += masses[i] * abundances[i];
    return slot;
}

/// One slot per MolecularFormula::AtomType, in its order. Given by the interface, digit for digit;
/// docs/constants.md compares each value with the published one.
inline constexpr std::array<ElementSlot, MolecularFormula::kAtomTypeCount> kElements{
    elementSlot({12.0, 13.0033548}, {0.9893, 0.0107}), // C
    elementSlot({1.007825, 2.0141078}, {0.999885, 0.000115}), // H
    elementSlot({15.9949146, 16.9991315, 17.9991604}, {0.99757, 0.00038, 0.00205}), // O
    elementSlot({14.003074, 15.001089}, {0.99632, 0.00368}), // N
    elementSlot({31.9720707, 32.9714585, 33.9678668}, {0.9493, 0.0076, 0.0431}), // S
    elementSlot({30.9737615}, {1.0}), // P
    elementSlot({22.98976967}, {1.0}), // Na
    ElementSlot{}, // Reserved
};

} // namespace vex::detail

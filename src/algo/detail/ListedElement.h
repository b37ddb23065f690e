#pragma once

#include <vector>

namespace vex::detail {

/// Isotopes of one element of the list-based model.
struct ListedElement
{
    std::vector<double> shares; ///< by nominal mass shift, of the sum 1; empty without isotopes
    double averageMass = 0.0; ///< daltons
    double lightestMass = 0.0; ///< daltons
};

} // namespace vex::detail

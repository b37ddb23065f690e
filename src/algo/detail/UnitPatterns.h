#pragma once

#include <vector>

namespace vex::detail {

/// Shares of the signal by nominal mass shift, as far as a capacity reaches.
struct CutPattern
{
    std::vector<double> shares; ///< without what is negligible at the end
    double lost = 0.0; ///< share of the signal beyond the capacity
};

/// Patterns of one unit of a composition and of its multiples, made once, and from them those of
/// every mass.
class UnitPatterns
{
public:
    /// @param unit          shares of one unit, of the sum 1, at most @p capacity of them
    /// @param averageMass   of one unit, in daltons
    /// @param lightestMass  of one unit of the lightest isotopes, in daltons
    /// @param capacity      number of peaks, at least 1
    UnitPatterns(std::vector<double> unit, double averageMass, double lightestMass, int capacity);

    double averageMass() const { return m_averageMass; }
    double lightestMass() const { return m_lightestMass; }

    /// The shares of a molecule of @p mass (in daltons), without what is negligible at the end.
    std::vector<double> sharesOf(double mass) const;

private:
    double m_averageMass;
    double m_lightestMass;
    std::size_t m_capacity;
    // 1 to 9 units, 10 to 90, 100 to 900, and 1000, 2000 and so on.
    std::vector<CutPattern> m_blocks[4];
    CutPattern m_thousand; // with an end fine enough for powers
};

} // namespace vex::detail

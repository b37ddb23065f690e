#pragma once

#include "algo/detail/ShareBuffer.h"

#include <array>
#include <vector>

namespace vex::detail {

/// How many thousands, hundreds, tens and single units a mass is made of.
struct UnitCounts
{
    /// @param units  whole, at least 0
    explicit UnitCounts(double units);

    double thousands; // infinite for an infinite mass
    std::array<int, 3> digits; // hundreds, tens, ones; 0 to 9
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

    /// How many units a mass is made of, as the greedy decomposition rounds: half a unit is none,
    /// anything above is one.
    double unitsOf(double mass) const;

    /// A pattern to write to, at first the single peak 1.0.
    ShareBuffer buffer() const { return {m_longestFactor, m_capacity}; }

    /// Makes @p pattern that of @p thousands.
    void assignThousands(double thousands, ShareBuffer *pattern) const;

    /// The factor for @p digit hundreds (@p place 0), tens (1) or ones (2); @p digit is at least 1.
    const CutPattern &factor(std::size_t place, int digit) const
    {
        return m_blocks[2 - place][static_cast<std::size_t>(digit) - 1];
    }

    /// Leaves the shares of a molecule of @p mass (in daltons) in one of two fresh buffers.
    const ShareBuffer &sharesOf(double mass, ShareBuffer *pattern, ShareBuffer *spare) const;

private:
    double m_averageMass;
    double m_lightestMass;
    std::size_t m_capacity;
    // 1 to 9 units, 10 to 90, 100 to 900, and 1000, 2000 and so on.
    std::vector<CutPattern> m_blocks[4];
    CutPattern m_mostThousands; // the last of them, with ends fine enough for powers
    std::size_t m_longestFactor = 1; // entries of what is not a number of thousands
};

} // namespace vex::detail

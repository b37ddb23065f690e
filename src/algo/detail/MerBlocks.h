#pragma once

namespace vex::detail {

/// How many blocks of 1000, 100, 10 and 1 mers a mass is made of.
struct MerBlocks
{
    double thousands = 0.0; // whole; infinite for a mass that no subtraction brings to an end
    int hundreds = 0;
    int tens = 0;
    int ones = 0; // up to 10: half a mer and less is left out, anything above is one more

    bool operator==(const MerBlocks &) const = default;
};

/// Takes @p mass apart as the plain loop does, which subtracts one block after another and rounds
/// each difference.
///
/// Blocks of a mass that is neither infinite nor NaN grow with it: first the thousands, then the
/// hundreds, and so on.
/// @param merMass  of one mer, finite and above 0
MerBlocks merBlocksOf(double mass, double merMass);

/// How many whole halves of a mer fit into @p mass, if that alone tells the blocks; -1 otherwise.
///
/// It does not for a mass next to where another block begins, at a whole number of mers or at a
/// half, nor for one of 1e6 mers and more, below 0, or NaN.
inline int wholeHalvesOf(double mass, double merMass)
{
    // Up to here the plain loop takes at most 1000 + 9 + 9 + 10 differences, each off by half a
    // unit in the last place of the mass: 2.4e-7 halves in all.
    constexpr double kMostHalves = 2e6;
    constexpr double kDoubtful = 1e-6;
    const double halves = 2.0 * (mass / merMass);
    if (!(halves >= 0.0 && halves < kMostHalves))
        return -1;
    const int whole = static_cast<int>(halves);
    const double part = halves - whole;
    return part < kDoubtful || part > 1.0 - kDoubtful ? -1 : whole;
}

/// Takes @p block off @p mass as long as @p mass is not below it, rounding each subtraction.
///
/// Equal to the plain loop, in steps that grow with the mass: where all results share one exponent,
/// each subtraction takes off the same amount.
/// @return how often; infinite when the plain loop would never end
double subtractRepeatedly(double *mass, double block);

} // namespace vex::detail

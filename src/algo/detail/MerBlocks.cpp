#include "algo/detail/MerBlocks.h"

#include <cmath>
#include <limits>

namespace vex::detail {

namespace {

MerBlocks bySubtraction(double mass, double merMass)
{
    MerBlocks blocks;
    blocks.thousands = subtractRepeatedly(&mass, 1000.0 * merMass);
    if (std::isinf(blocks.thousands))
        return blocks;
    blocks.hundreds = static_cast<int>(subtractRepeatedly(&mass, 100.0 * merMass));
    blocks.tens = static_cast<int>(subtractRepeatedly(&mass, 10.0 * merMass));
    for (; mass > 0.5 * merMass; mass -= merMass)
        ++blocks.ones;
    return blocks;
}

} // namespace

MerBlocks merBlocksOf(double mass, double merMass)
{
    const int whole = wholeHalvesOf(mass, merMass);
    if (whole < 0)
        return bySubtraction(mass, merMass);
    const int mers = whole / 2;
    const int thousands = mers / 1000;
    return {double(thousands), mers / 100 % 10, mers / 10 % 10, mers % 10 + whole % 2};
}

double subtractRepeatedly(double *mass, double block)
{
    constexpr double kPlainSteps = 1024.0;
    double times = 0.0;
    for (; *mass >= block && times < kPlainSteps; ++times)
        *mass -= block;
    while (*mass >= block) {
        const double next = *mass - block;
        if (!(next < *mass))
            return std::numeric_limits<double>::infinity();
        *mass = next; // after one step ties round the same way, so the following steps are equal
        ++times;
        const double afterNext = next - block;
        if (!(afterNext < next)) // the first step took the odd half of a tie, no other will
            return std::numeric_limits<double>::infinity();
        const double floor = std::ldexp(1.0, std::ilogb(next)); // smallest value of this exponent
        if (!(afterNext > floor))
            continue;
        const double step = next - afterNext;
        const double steps = std::floor((next - floor) / step) - 1.0;
        if (steps >= 1.0) {
            *mass = next - steps * step;
            times += steps;
        }
    }
    return times;
}

} // namespace vex::detail

#pragma once

#include <vector>

#include <vex_common_core_mini/Export.h>

/// Numeric helpers of the suite.
namespace vex::core {

/// Writes the full linear convolution of @p a and @p b to @p out.
///
/// out[k] is the sum of b[j] * a[k - j] over all j for which both exist, added in ascending j onto
/// 0.0. Made for a short @p b; any lengths will do.
///
/// @param a, b  factors; either may be @p out
/// @param out   replaced: a.size() + b.size() - 1 values, none when either is empty
/// @return false when either is empty
VEX_COMMON_CORE_MINI_EXPORT bool convForReal(
    const std::vector<double> &a, const std::vector<double> &b, std::vector<double> &out);

} // namespace vex::core

#pragma once

#include <QtGlobal>

#include <bit>
#include <cmath>
#include <limits>

namespace vex::test {

inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The same number to the last bit; one NaN is as good as another.
inline bool sameBits(double a, double b)
{
    return std::bit_cast<quint64>(a) == std::bit_cast<quint64>(b)
        || (std::isnan(a) && std::isnan(b));
}

} // namespace vex::test

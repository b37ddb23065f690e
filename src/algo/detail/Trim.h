#pragma once

#include <cstddef>

namespace vex::detail {

/// How many of @p size values are left without those at the end that are below @p threshold. NaN is
/// not below.
template <typename Size>
Size trimmedSize(const double *values, Size size, double threshold)
{
    while (size > 0 && values[static_cast<std::size_t>(size) - 1] < threshold)
        --size;
    return size;
}

} // namespace vex::detail

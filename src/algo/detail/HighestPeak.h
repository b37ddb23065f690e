#pragma once

#include <algorithm>

namespace vex::detail {

/// Index of the greatest value above 0, the first of equals; -1 when there is none.
inline int indexOfHighest(const double *values, int count)
{
    // Four running maxima: one would make each comparison wait for the one before.
    double highest[4] = {};
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        for (int lane = 0; lane < 4; ++lane)
            highest[lane] = values[i + lane] > highest[lane] ? values[i + lane] : highest[lane];
    }
    for (; i < count; ++i)
        highest[0] = std::max(highest[0], values[i]);
    const double best = *std::max_element(highest, highest + 4);
    if (!(best > 0.0))
        return -1;
    return static_cast<int>(std::find(values, values + count, best) - values);
}

} // namespace vex::detail

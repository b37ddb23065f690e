#pragma once

namespace vex::detail {

// Given by the interface.
constexpr double kPlotZero = 1e-12; // magnitudes up to here count as 0
constexpr double kSamePosition = 1e-6; // positions closer than this count as one

} // namespace vex::detail

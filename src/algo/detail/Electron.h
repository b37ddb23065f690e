#pragma once

namespace vex::detail {

/// In daltons. CODATA 2018: Tiesinga et al., Reviews of Modern Physics 93 (2021) 025010.
inline constexpr double kElectronMass = 0.000548579909065;

} // namespace vex::detail

#pragma once

namespace vex::detail {

/// True when the processor and the operating system run AVX2 code.
bool cpuHasAvx2();

} // namespace vex::detail

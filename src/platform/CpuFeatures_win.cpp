#include "platform/CpuFeatures.h"

#include <windows.h>

namespace vex::detail {

bool cpuHasAvx2()
{
    constexpr DWORD kAvx2InstructionsAvailable =
        40; // PF_AVX2_INSTRUCTIONS_AVAILABLE, newer headers
    return IsProcessorFeaturePresent(kAvx2InstructionsAvailable) != FALSE;
}

} // namespace vex::detail

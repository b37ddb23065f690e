#include "platform/CpuFeatures.h"

namespace vex::detail {

bool cpuHasAvx2()
{
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

} // namespace vex::detail

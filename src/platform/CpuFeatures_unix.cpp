#include "platform/CpuFeatures.h"

#if (defined(__x86_64__) || defined(__i386__)) && __has_include(<sys/platform/x86.h>)
#    include <sys/platform/x86.h>
#endif

namespace vex::detail {

bool cpuHasAvx2()
{
#if defined(CPU_FEATURE_ACTIVE)
    // What the C library has found out already. __builtin_cpu_supports() would ask the processor
    // once more whenever this library is loaded, which in a virtual machine takes 40 microseconds.
    return CPU_FEATURE_ACTIVE(AVX2) != 0;
#elif defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

} // namespace vex::detail

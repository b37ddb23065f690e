#include "algo/detail/ConvolutionKernel.h"

#include "platform/CpuFeatures.h"

#include <atomic>

namespace vex::detail {

namespace {

std::atomic<ConvolutionKernel> &activeSlot()
{
    static std::atomic<ConvolutionKernel> slot = fastestKernel();
    return slot;
}

} // namespace

ConvolutionKernel fastestKernel()
{
#if defined(VEX_HAVE_AVX2_KERNEL)
    if (cpuHasAvx2())
        return convolveAvx2;
#endif
    return convolveBaseline;
}

ConvolutionKernel activeKernel()
{
    return activeSlot().load(std::memory_order_relaxed);
}

GrowthKernel activeGrowthKernel()
{
#if defined(VEX_HAVE_AVX2_KERNEL)
    if (activeKernel() == convolveAvx2)
        return growAvx2;
#endif
    return growBaseline;
}

void setActiveKernel(ConvolutionKernel kernel)
{
    activeSlot().store(kernel, std::memory_order_relaxed);
}

} // namespace vex::detail

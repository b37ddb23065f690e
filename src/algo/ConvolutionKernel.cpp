// Compiled once for each instruction set, as the function VEX_KERNEL. Nothing may be included here
// that defines inline functions: the linker could keep the copy that another processor cannot run.
#include "algo/ConvolutionKernel.h"

namespace vex::detail {

namespace {

constexpr int kTapsPerPass = 6; // as many factors and partial sums as stay in 16 registers

/// Adds the products with @p taps factors; the compiler vectorises over k, never within one sum.
template <int taps, bool first>
inline void pass(const double *__restrict factors, const double *__restrict in,
    double *__restrict out, int count)
{
    for (int k = 0; k < count; ++k) {
        double sum = first ? 0.0 : out[k];
        for (int i = 0; i < taps; ++i)
            sum += factors[i] * in[k - i];
        out[k] = sum;
    }
}

template <bool first, int taps = kTapsPerPass>
inline void passOf(int tapCount, const double *factors, const double *in, double *out, int count)
{
    if constexpr (taps > 0) {
        if (tapCount == taps)
            pass<taps, first>(factors, in, out, count);
        else
            passOf<first, taps - 1>(tapCount, factors, in, out, count);
    }
}

} // namespace

void VEX_KERNEL(const double *taps, int tapCount, const double *in, double *out, int blocks)
{
    if (tapCount <= kTapsPerPass) {
        passOf<true>(tapCount, taps, in, out, blocks);
        return;
    }
    pass<kTapsPerPass, true>(taps, in, out, blocks);
    int done = kTapsPerPass;
    for (; done + kTapsPerPass <= tapCount; done += kTapsPerPass)
        pass<kTapsPerPass, false>(taps + done, in - done, out, blocks);
    passOf<false>(tapCount - done, taps + done, in - done, out, blocks);
}

} // namespace vex::detail

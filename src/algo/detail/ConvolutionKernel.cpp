// Compiled once for each instruction set, as the functions VEX_KERNEL and VEX_GROWTH_KERNEL.
// Nothing may be included here that defines inline functions: the linker could keep the copy that
// another processor cannot run.
#include "algo/detail/ConvolutionKernel.h"

namespace vex::detail {

namespace {

// As many factors as stay in 16 registers, with what is worked on; without AVX a product overwrites
// one of its factors, which takes copies.
#ifdef __AVX__
constexpr int kTapsPerPass = 10;
#else
constexpr int kTapsPerPass = 6;
#endif

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

template <bool first, int taps = 1>
inline void passOf(int tapCount, const double *factors, const double *in, double *out, int count)
{
    if constexpr (taps <= kTapsPerPass) {
        if (tapCount == taps)
            pass<taps, first>(factors, in, out, count);
        else
            passOf<first, taps + 1>(tapCount, factors, in, out, count);
    }
}

/// Entry @p k of the convolution of @p taps factors with @p size values.
template <int taps>
inline double entry(const double *factors, const double *values, int size, int k)
{
    double sum = 0.0;
    for (int i = 0; i < taps; ++i)
        sum += k - i >= 0 && k - i < size ? factors[i] * values[k - i] : 0.0;
    return sum;
}

/// pass<2, true>() of pass<2, true>(). Each value in between is worked out twice: that is cheaper
/// than to store it and read it again.
inline void passTwice(const double *__restrict factors, const double *__restrict in,
    double *__restrict out, int count)
{
    for (int k = 0; k < count; ++k) {
        const double once = factors[0] * in[k] + factors[1] * in[k - 1];
        const double onceBefore = factors[0] * in[k - 1] + factors[1] * in[k - 2];
        out[k] = factors[0] * once + factors[1] * onceBefore;
    }
}

inline int smaller(int a, int b)
{
    return a < b ? a : b;
}

/// Length of a convolution without the entries at its end that are below the threshold.
template <int taps>
inline int trimmedSize(const double *factors, const double *values, int size, double threshold)
{
    int result = size + taps - 1;
    while (result > 0 && entry<taps>(factors, values, size, result - 1) < threshold)
        --result;
    return result;
}

inline void take(GrowingBuffers *buffers, int size)
{
    double *const values = buffers->values;
    buffers->values = buffers->spare;
    buffers->spare = values;
    buffers->size = size;
}

/// One convolution.
template <int taps>
inline void growOnce(const double *factors, double threshold, GrowingBuffers *buffers)
{
    const double *in = buffers->values;
    const int before = buffers->size;
    // The end first: it decides how long the pattern will be, before anything is written.
    const int size = trimmedSize<taps>(factors, in, before, threshold);
    pass<taps, true>(factors, in, buffers->spare, smaller(size, before));
    for (int k = before; k < size; ++k) // pass() took what lies behind the values for some
        buffers->spare[k] = entry<taps>(factors, in, before, k);
    take(buffers, size);
}

/// Two convolutions with two factors, unless the pattern changes its length: then none.
inline bool growTwice(const double *factors, double threshold, GrowingBuffers *buffers)
{
    const double *in = buffers->values;
    const int size = buffers->size;
    if (size < 3)
        return false;
    const double *end = in + size;
    // The last two entries of the first convolution, and how both convolutions would go on.
    const double last = factors[0] * end[-1] + factors[1] * end[-2];
    const double lastButOne = factors[0] * end[-2] + factors[1] * end[-3];
    const bool keepsLength = factors[1] * end[-1] < threshold && !(last < threshold)
        && factors[1] * last < threshold
        && !(factors[0] * last + factors[1] * lastButOne < threshold);
    if (!keepsLength)
        return false;
    passTwice(factors, in, buffers->spare, size);
    take(buffers, size);
    return true;
}

template <int taps>
int grow(const double *factors, int count, double threshold, GrowingBuffers *buffers)
{
    while (count > 0) {
        if constexpr (taps == 2) {
            if (count > 1 && growTwice(factors, threshold, buffers)) {
                count -= 2;
                continue;
            }
        }
        growOnce<taps>(factors, threshold, buffers);
        --count;
        if (buffers->size == 0)
            break;
    }
    return count;
}

} // namespace

int VEX_GROWTH_KERNEL(
    const double *taps, int tapCount, int count, double threshold, GrowingBuffers *buffers)
{
    switch (tapCount) {
    case 1:
        return grow<1>(taps, count, threshold, buffers);
    case 2:
        return grow<2>(taps, count, threshold, buffers);
    case 3:
        return grow<3>(taps, count, threshold, buffers);
    case 4:
        return grow<4>(taps, count, threshold, buffers);
    default:
        return grow<5>(taps, count, threshold, buffers);
    }
}

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

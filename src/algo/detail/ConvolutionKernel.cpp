// Compiled once for each instruction set, as the functions VEX_KERNEL and VEX_GROWTH_KERNEL.
// Nothing may be included here that defines inline functions: the linker could keep the copy that
// another processor cannot run. The intrinsics are no such functions.
#include "algo/detail/ConvolutionKernel.h"

#if defined(__AVX2__)
#    include <immintrin.h>
#elif defined(__SSE2__) || defined(_M_X64)
#    include <emmintrin.h>
#endif

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

// A few values side by side, and the same ones moved up by one or two places: what is moved in
// comes from the values before. Loading them from memory again would wait for the stores of the
// convolution before, which lie across.
#if defined(__AVX2__)
using Lanes = __m256d;
constexpr int kLanes = 4;
inline Lanes all(double value)
{
    return _mm256_set1_pd(value);
}
inline Lanes load(const double *from)
{
    return _mm256_loadu_pd(from);
}
inline void store(double *to, Lanes values)
{
    _mm256_storeu_pd(to, values);
}
inline Lanes plus(Lanes a, Lanes b)
{
    return _mm256_add_pd(a, b);
}
inline Lanes times(Lanes a, Lanes b)
{
    return _mm256_mul_pd(a, b);
}
inline Lanes movedByTwo(Lanes before, Lanes values)
{
    return _mm256_permute2f128_pd(before, values, 0x21);
}
inline Lanes movedByOne(Lanes before, Lanes values)
{
    return _mm256_shuffle_pd(movedByTwo(before, values), values, 0x5);
}
#elif defined(__SSE2__) || defined(_M_X64)
using Lanes = __m128d;
constexpr int kLanes = 2;
inline Lanes all(double value)
{
    return _mm_set1_pd(value);
}
inline Lanes load(const double *from)
{
    return _mm_loadu_pd(from);
}
inline void store(double *to, Lanes values)
{
    _mm_storeu_pd(to, values);
}
inline Lanes plus(Lanes a, Lanes b)
{
    return _mm_add_pd(a, b);
}
inline Lanes times(Lanes a, Lanes b)
{
    return _mm_mul_pd(a, b);
}
inline Lanes movedByTwo(Lanes before, Lanes)
{
    return before;
}
inline Lanes movedByOne(Lanes before, Lanes values)
{
    return _mm_shuffle_pd(before, values, 1);
}
#else
struct Lanes
{
    double value, before; // the one in front is needed to move by two
};
constexpr int kLanes = 1;
inline Lanes all(double value)
{
    return {value, value};
}
inline Lanes load(const double *from)
{
    return {from[0], from[-1]};
}
inline void store(double *to, Lanes values)
{
    *to = values.value;
}
inline Lanes plus(Lanes a, Lanes b)
{
    return {a.value + b.value, a.before + b.before};
}
inline Lanes times(Lanes a, Lanes b)
{
    return {a.value * b.value, a.before * b.before};
}
inline Lanes movedByTwo(Lanes before, Lanes)
{
    return {before.before, 0.0};
}
inline Lanes movedByOne(Lanes before, Lanes)
{
    return before;
}
#endif

static_assert(kKernelBlock % kLanes == 0);

/// Entry @p k of the convolution of @p taps factors with @p size values.
template <int taps>
inline double entry(const double *factors, const double *values, int size, int k)
{
    double sum = 0.0;
    for (int i = 0; i < taps; ++i)
        sum += k - i >= 0 && k - i < size ? factors[i] * values[k - i] : 0.0;
    return sum;
}

/// The first @p count entries of a convolution, rounded up to whole blocks. Where in front of @p in
/// there are zeros and behind it values of no meaning, entries behind those have no meaning either.
template <int taps>
inline void sums(const double *__restrict factors, const double *__restrict in,
    double *__restrict out, int count)
{
    if constexpr (taps == 2 || taps == 3) {
        const Lanes first = all(factors[0]);
        const Lanes second = all(factors[1]);
        const Lanes third = all(factors[taps - 1]);
        Lanes before = all(0.0);
        for (int k = 0; k < count; k += kLanes) {
            const Lanes values = load(in + k);
            Lanes sum = plus(times(first, values), times(second, movedByOne(before, values)));
            if constexpr (taps == 3)
                sum = plus(sum, times(third, movedByTwo(before, values)));
            store(out + k, sum);
            before = values;
        }
    } else {
        for (int k = 0; k < count; ++k) {
            double sum = factors[0] * in[k];
            for (int i = 1; i < taps; ++i)
                sum += factors[i] * in[k - i];
            out[k] = sum;
        }
    }
}

/// sums<2>() of sums<2>().
inline void sumsTwice(const double *__restrict factors, const double *__restrict in,
    double *__restrict out, int count)
{
    const Lanes first = all(factors[0]);
    const Lanes second = all(factors[1]);
    Lanes before = all(0.0);
    Lanes onceBefore = all(0.0);
    for (int k = 0; k < count; k += kLanes) {
        const Lanes values = load(in + k);
        const Lanes once = plus(times(first, values), times(second, movedByOne(before, values)));
        const Lanes twice = plus(times(first, once), times(second, movedByOne(onceBefore, once)));
        store(out + k, twice);
        before = values;
        onceBefore = once;
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
    sums<taps>(factors, in, buffers->spare, smaller(size, before));
    for (int k = before; k < size; ++k) // sums() took what lies behind the values for some
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
    sumsTwice(factors, in, buffers->spare, size);
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

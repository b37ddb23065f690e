#pragma once

namespace vex::detail {

/// Number of peaks of an isotope pattern of the averagine model.
inline constexpr int kPatternSize = 100;

/// Outputs that a kernel writes at a time.
inline constexpr int kKernelBlock = 4;

/// First outputs of the convolution of @p taps with a pattern.
///
/// out[k] = taps[0] * in[k] + taps[1] * in[k - 1] + ..., added in this order onto 0.0 and never
/// fused, so every kernel gives the same bits.
///
/// @param taps     tapCount finite factors, tapCount >= 1
/// @param in       readable from -(tapCount - 1), zeros in front of 0, up to blocks
/// @param out      replaced from 0 up to blocks; must not overlap in
/// @param blocks   number of outputs, a multiple of kKernelBlock
using ConvolutionKernel = void (*)(
    const double *taps, int tapCount, const double *in, double *out, int blocks);

/// Most taps of a GrowthKernel; the elements of averagine have at most five isotopes.
inline constexpr int kMostGrowthTaps = 5;

/// Two buffers that a GrowthKernel writes in turn, and the pattern in the first of them.
///
/// Both have kMostGrowthTaps - 1 zeros in front.
struct GrowingBuffers
{
    double *values;
    double *spare;
    int size; // of the pattern, at least 1; what lies behind is of no meaning
};

/// Convolves a pattern with @p taps @p count times; after each time, the entries at its end that
/// are below @p threshold are cut off.
///
/// Sums are those of a ConvolutionKernel. Ends early when nothing is left.
/// @param taps      tapCount values of at least 0, 1 to kMostGrowthTaps
/// @param buffers   values of at least 0; with room for count * (tapCount - 1) more, and
///                  kKernelBlock behind those; values and spare may have changed places
/// @return how often the pattern was still to be convolved
using GrowthKernel = int (*)(
    const double *taps, int tapCount, int count, double threshold, GrowingBuffers *buffers);

// The kernels for every processor of the platform.
void convolveBaseline(const double *taps, int tapCount, const double *in, double *out, int blocks);
int growBaseline(
    const double *taps, int tapCount, int count, double threshold, GrowingBuffers *buffers);
// The same source compiled for AVX2; declared on every platform, defined where it is built.
void convolveAvx2(const double *taps, int tapCount, const double *in, double *out, int blocks);
int growAvx2(
    const double *taps, int tapCount, int count, double threshold, GrowingBuffers *buffers);

/// The fastest kernel that this processor runs, found once.
ConvolutionKernel fastestKernel();

/// The kernel that the models use; fastestKernel() unless a test or a benchmark chose another.
ConvolutionKernel activeKernel();

/// The one for the same processors as activeKernel().
GrowthKernel activeGrowthKernel();

/// Makes the models use @p kernel. Not for use while another thread asks a model.
void setActiveKernel(ConvolutionKernel kernel);

} // namespace vex::detail

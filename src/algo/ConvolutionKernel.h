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

/// The kernel for every processor of the platform.
void convolveBaseline(const double *taps, int tapCount, const double *in, double *out, int blocks);
/// The same source compiled for AVX2; declared on every platform, defined where it is built.
void convolveAvx2(const double *taps, int tapCount, const double *in, double *out, int blocks);

/// The fastest kernel that this processor runs, found once.
ConvolutionKernel fastestKernel();

/// The kernel that the models use; fastestKernel() unless a test or a benchmark chose another.
ConvolutionKernel activeKernel();

/// Makes the models use @p kernel. Not for use while another thread asks a model.
void setActiveKernel(ConvolutionKernel kernel);

} // namespace vex::detail

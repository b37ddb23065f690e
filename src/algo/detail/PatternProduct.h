#pragma once

#include "algo/detail/ConvolutionKernel.h"

#include <QtGlobal>

namespace vex::detail {

/// Magnitudes up to here count as 0.
inline constexpr double kZero = 1e-12;

/// A stored pattern as the first operand of a convolution: its entries up to the first below 1e-4.
struct Taps
{
    const double *factors = nullptr;
    int count = 0;
    bool finite = true;
};

/// The entries of @p pattern (kPatternSize values) that a convolution uses.
Taps tapsOf(const double *pattern);

/// Scales @p n values to the sum 1, unless their sum is 0 (up to 1e-12); returns their former sum.
double normalize(int n, double *values);

/// The working pattern of the averagine model: kPatternSize values, the first operand of no
/// convolution.
///
/// Only the used length is touched: values beyond it are zeros that are neither stored nor
/// multiplied.
class PatternProduct
{
public:
    /// The single peak 1.0.
    PatternProduct();
    Q_DISABLE_COPY_MOVE(PatternProduct)

    /// Makes a fresh pattern a copy of @p size values; those behind them count as 0.
    void assign(const double *values, int size);

    /// Makes any pattern the single peak 1.0.
    void restart();

    /// Makes any pattern the convolution of @p taps with @p pattern, which stays the same.
    void assignProduct(PatternProduct *pattern, const Taps &taps);

    /// Replaces the pattern by the convolution of @p taps with it, @p times over.
    void multiply(const Taps &taps, int times = 1);

    /// The same for any number of @p times, which may be infinite.
    ///
    /// Ends early when the pattern no longer changes. Past kExactMultiplyAdds the rest is taken as
    /// a power of the series, see docs/design/0002.
    void multiplyRepeatedly(const Taps &taps, double times);

    /// Scales the pattern to the sum 1, unless its sum is 0.
    void normalize();

    /// Used length; values beyond it are 0.
    int size() const { return m_size; }
    /// All kPatternSize values.
    const double *values() const { return m_values; }

    /// Multiply-adds that multiplyRepeatedly() spends on exact convolutions.
    static constexpr double kExactMultiplyAdds = 1.6e7;

private:
    static constexpr int kFront =
        104; // room for the zeros in front: one less than the longest taps
    static constexpr int kUsualFront = 24; // as many as most compositions need
    static constexpr int kStride = kFront + kPatternSize + kKernelBlock;

    void multiplyPlain(const Taps &taps);
    void multiplyByPower(const Taps &taps, double exponent);
    void fillFront(int count);

    // Zeros from m_front before to kPatternSize behind the start of both, but for the values: a
    // pattern only grows, so the spare, which holds the one before, has zeros wherever the next
    // will need them.
    alignas(64) double m_storage[2 * kStride];
    double *m_values = m_storage + kFront;
    double *m_spare = m_storage + kStride + kFront;
    int m_size = 1;
    int m_front = kUsualFront;
    bool m_isUnit = true;
    ConvolutionKernel m_kernel = activeKernel();
};

} // namespace vex::detail

#include "algo/detail/PatternProduct.h"

#include "detail/Companions.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

namespace vex::detail {

namespace {

constexpr double kSmallestTap = 0.0001; // given by the interface

constexpr int roundedUp(int count)
{
    return (count + kKernelBlock - 1) / kKernelBlock * kKernelBlock;
}

/// In ascending order. Each sum waits for the one before, so the end of a pattern is left out where
/// it changes nothing.
double sumOf(int n, const double *values)
{
    constexpr double kTiny = 1e-17;
    int size = n;
    while (size > 0 && std::fabs(values[size - 1]) < kTiny)
        --size;
    double sum = 0.0;
    for (int i = 0; i < size; ++i)
        sum += values[i];
    if (kTiny < 0x1p-54 * sum) // each of the rest is rounded away
        return sum;
    for (int i = size; i < n; ++i)
        sum += values[i];
    return sum;
}

} // namespace

Taps tapsOf(const double *pattern)
{
    Taps taps{pattern, 0, true};
    for (; taps.count < kPatternSize && !(pattern[taps.count] < kSmallestTap); ++taps.count)
        taps.finite &= pattern[taps.count] <= std::numeric_limits<double>::max(); // false for NaN
    return taps;
}

double normalize(int n, double *values)
{
    const double sum = sumOf(n, values);
    if (std::fabs(sum) <= kZero)
        return sum;
    const double factor = 1.0 / sum;
    for (int i = 0; i < n; ++i)
        values[i] *= factor;
    return sum;
}

PatternProduct::PatternProduct()
{
    std::fill(m_values - m_front, m_values + kPatternSize, 0.0);
    std::fill(m_spare - m_front, m_spare + kPatternSize, 0.0);
    m_values[0] = 1.0;
}

void PatternProduct::assign(const double *values, int size)
{
    m_values[0] = 0.0;
    std::copy_n(values, size, m_values);
    m_size = size;
    m_isUnit = false;
}

void PatternProduct::restart()
{
    std::fill_n(m_values, kPatternSize, 0.0);
    std::fill_n(m_spare, kPatternSize, 0.0);
    m_values[0] = 1.0;
    m_size = 1;
    m_isUnit = true;
}

void PatternProduct::assignProduct(PatternProduct *pattern, const Taps &taps)
{
    if (pattern->m_isUnit || taps.count == 0 || !taps.finite) {
        restart();
        if (!pattern->m_isUnit)
            assign(pattern->m_values, pattern->m_size);
        multiply(taps);
        return;
    }
    m_size = std::min(pattern->m_size + taps.count - 1, kPatternSize);
    m_isUnit = false;
    const int blocks = roundedUp(m_size);
    pattern->fillFront(taps.count - 1);
    pattern->m_kernel(taps.factors, taps.count, pattern->m_values, m_values, blocks);
    std::fill(m_values + blocks, m_values + kPatternSize, 0.0);
    std::fill(m_spare + blocks, m_spare + kPatternSize, 0.0);
}

void PatternProduct::fillFront(int count)
{
    if (m_front < count) {
        std::fill(m_values - count, m_values - m_front, 0.0);
        std::fill(m_spare - count, m_spare - m_front, 0.0);
        m_front = count;
    }
}

void PatternProduct::multiply(const Taps &taps, int times)
{
    if (times < 1)
        return;
    if (taps.count == 0) {
        std::fill_n(m_values, kPatternSize, 0.0);
        std::fill_n(m_spare, kPatternSize, 0.0);
        m_size = 0;
        m_isUnit = false;
        return;
    }
    if (!taps.finite) {
        for (; times > 0; --times)
            multiplyPlain(taps);
        return;
    }
    if (m_isUnit) { // a convolution with the single peak 1.0 is a copy
        std::copy_n(taps.factors, taps.count, m_values);
        m_size = taps.count;
        m_isUnit = false;
        --times;
    }
    fillFront(taps.count - 1);
    for (; times > 0; --times) {
        m_size = std::min(m_size + taps.count - 1, kPatternSize);
        m_kernel(taps.factors, taps.count, m_values, m_spare, roundedUp(m_size));
        std::swap(m_values, m_spare);
    }
}

void PatternProduct::normalize()
{
    const double sum = detail::normalize(m_size, m_values);
    if (std::isnan(sum)) { // then the zeros behind become NaN as well
        std::fill(m_values + m_size, m_values + kPatternSize, sum);
        m_size = kPatternSize;
    }
}

void PatternProduct::multiplyPlain(const Taps &taps)
{
    // The kernels also multiply with the zeros around the pattern; an infinite factor forbids that.
    std::vector<double> product;
    core::convForReal(
        {m_values, m_values + kPatternSize}, {taps.factors, taps.factors + taps.count}, product);
    std::copy_n(product.begin(), kPatternSize, m_spare);
    std::swap(m_values, m_spare);
    m_size = kPatternSize;
    m_isUnit = false;
}

void PatternProduct::multiplyRepeatedly(const Taps &taps, double times)
{
    constexpr int kCheckInterval = 32; // convolutions between two looks whether anything changed
    constexpr int kCallCost = 50; // multiply-adds that the rest of a convolution is worth
    double spent = 0.0;
    int sinceCheck = 0;
    for (double done = 0.0; done < times; ++done) {
        if (spent > kExactMultiplyAdds) {
            multiplyByPower(taps, times - done);
            return;
        }
        const int size = m_size;
        multiply(taps);
        spent += static_cast<double>(taps.count) * m_size + kCallCost;
        if (++sinceCheck < kCheckInterval)
            continue;
        sinceCheck = 0;
        const auto bytes = sizeof(double) * static_cast<std::size_t>(size);
        if (m_size == size && std::memcmp(m_values, m_spare, bytes) == 0)
            return;
    }
}

void PatternProduct::multiplyByPower(const Taps &taps, double exponent)
{
    // Coefficients q of p(x)^n: q[0] is p[0]^n, and k p[0] q[k] the sum over i of
    // (i (n + 1) - k) p[i] q[k - i] (Knuth, The Art of Computer Programming 2, section 4.7).
    // In parts, so that p[0]^n neither vanishes nor overflows before the product does.
    constexpr double kLargestLog = 600.0;
    const double *p = taps.factors;
    const double logFirst = std::fabs(std::log(p[0]));
    while (exponent > 0.0 && m_size > 0) {
        const double n = exponent * logFirst > kLargestLog ? kLargestLog / logFirst : exponent;
        double power[kPatternSize];
        power[0] = std::pow(p[0], n);
        for (int k = 1; k < kPatternSize; ++k) {
            double sum = 0.0;
            for (int i = 1; i <= k && i < taps.count; ++i)
                sum += (i * (n + 1.0) - k) * p[i] * power[k - i];
            power[k] = sum / (k * p[0]);
        }
        multiplyPlain({power, kPatternSize, true});
        exponent -= n;
        const double sum = std::accumulate(m_values, m_values + kPatternSize, 0.0);
        if (sum == 0.0 || !std::isfinite(sum))
            return;
    }
}

} // namespace vex::detail

#include "algo/detail/IsotopeGrowth.h"

#include "algo/detail/Trim.h"
#include "detail/Companions.h"

#include <QDebug>

#include <algorithm>
#include <cmath>
#include <memory>

namespace vex::detail {

namespace {

constexpr int kAtomsAtOnce = 64; // between two looks whether the room suffices

void warnOfEmptiness()
{
    qWarning("isoVector is empty");
}

/// Finite and not negative, a negative zero included: what the kernels add as written.
bool isPlainShare(double value)
{
    return std::isfinite(value) && !std::signbit(value);
}

bool areShares(const std::vector<double> &values)
{
    return std::all_of(values.begin(), values.end(), isPlainShare);
}

} // namespace

bool memoryTrim(std::vector<double> &isoVector, double threshold)
{
    isoVector.resize(trimmedSize(isoVector.data(), isoVector.size(), threshold));
    if (!isoVector.empty())
        return true;
    warnOfEmptiness();
    return false;
}

bool convolveRepeatedly(double threshold, int count, const std::vector<double> &abundances,
    std::vector<double> &pattern)
{
    if (abundances.empty() || pattern.empty() || count < 1)
        return false;
    GrowingPattern growing(pattern);
    const bool isLeft = growing.addAtoms(count, abundances, threshold);
    pattern = growing.values();
    return isLeft;
}

GrowingPattern::GrowingPattern(const std::vector<double> &pattern)
{
    assign(pattern);
}

void GrowingPattern::assign(const std::vector<double> &pattern)
{
    m_isPlain = !areShares(pattern);
    m_buffers.size = 0;
    reserve(static_cast<int>(pattern.size()));
    std::copy(pattern.begin(), pattern.end(), m_buffers.values);
    m_buffers.size = static_cast<int>(pattern.size());
}

void GrowingPattern::reserve(int size)
{
    if (m_room >= size && m_room > 0)
        return;
    const std::vector<double> before = values();
    m_room = std::max(2 * size, 256) / kFront * kFront;
    const std::size_t stride = std::size_t(m_room) + 2 * std::size_t(kFront);
    m_storage.assign(2 * stride + kFront, 0.0);
    void *start = m_storage.data();
    std::size_t space = m_storage.size() * sizeof(double);
    std::align(kFront * sizeof(double), 2 * stride * sizeof(double), start, space);
    m_buffers.values = static_cast<double *>(start) + kFront;
    m_buffers.spare = m_buffers.values + stride;
    std::copy(before.begin(), before.end(), m_buffers.values);
}

AtomShares::AtomShares(const std::vector<double> &given)
    : abundances(&given)
    , isForKernel(given.size() <= kMostGrowthTaps && areShares(given))
{
}

bool GrowingPattern::addAtoms(int count, const AtomShares &shares, double threshold)
{
    const std::vector<double> &abundances = *shares.abundances;
    if (abundances.empty() || m_buffers.size == 0 || count < 1)
        return false;
    if (m_isPlain || !shares.isForKernel) {
        addAtomsPlainly(count, abundances, threshold);
        return m_buffers.size > 0;
    }
    const auto taps = static_cast<int>(abundances.size());
    int left = 0;
    while (count > 0 && m_buffers.size > 0) {
        const int atOnce = std::min(count, kAtomsAtOnce);
        reserve(m_buffers.size + atOnce * (taps - 1));
        left = m_kernel(abundances.data(), taps, atOnce, threshold, &m_buffers);
        count -= atOnce;
    }
    if (m_buffers.size > 0)
        return true;
    warnOfEmptiness();
    for (left += count; left > 0; --left)
        warnOfEmptiness();
    return false;
}

void GrowingPattern::addAtomsPlainly(
    int count, const std::vector<double> &abundances, double threshold)
{
    std::vector<double> pattern = values();
    std::vector<double> convolved;
    for (; count > 0; --count) {
        core::convForReal(pattern, abundances, convolved);
        pattern.swap(convolved);
        memoryTrim(pattern, threshold);
    }
    assign(pattern);
}

std::vector<double> GrowingPattern::values() const
{
    return {m_buffers.values, m_buffers.values + m_buffers.size};
}

void GrowingPattern::appendTrimmed(
    double threshold, std::vector<std::vector<double>> *patterns) const
{
    const int size = trimmedSize(m_buffers.values, m_buffers.size, threshold);
    if (size == 0)
        warnOfEmptiness();
    patterns->emplace_back(m_buffers.values, m_buffers.values + size);
}

} // namespace vex::detail

#include "algo/detail/UnitPatterns.h"

#include "algo/detail/ConvolutionKernel.h"
#include "algo/detail/HighestPeak.h"
#include "algo/detail/Trim.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace vex::detail {

namespace {

// What a pattern may lack at its ends: of what is answered, and of what is still to be raised to a
// power, where 1e-20 would show as 5e-11.
constexpr double kNegligible = 1e-20;
constexpr double kNegligibleInPowers = 1e-25;
constexpr double kMostLost = 0.99; // of the last of the thousands that are kept
constexpr std::size_t kMostThousands = 64;

constexpr std::size_t roundedUp(std::size_t count)
{
    return (count + kKernelBlock - 1) / kKernelBlock * kKernelBlock;
}

/// All entries of the convolution of @p a and @p b, whose shares add up as they do.
std::vector<double> product(const std::vector<double> &a, const std::vector<double> &b)
{
    const std::vector<double> &taps = a.size() < b.size() ? a : b;
    const std::vector<double> &values = a.size() < b.size() ? b : a;
    if (taps.empty())
        return {};
    const std::size_t size = a.size() + b.size() - 1;
    const std::size_t front = taps.size() - 1;
    QVarLengthArray<double, 512> padded(qsizetype(front + roundedUp(size)));
    double *const start = std::fill_n(padded.data(), front, 0.0);
    std::fill(std::copy(values.begin(), values.end(), start), padded.data() + padded.size(), 0.0);
    std::vector<double> result(roundedUp(size));
    activeKernel()(taps.data(), static_cast<int>(taps.size()), start, result.data(),
        static_cast<int>(result.size()));
    result.resize(size);
    return result;
}

/// Takes off what is below @p negligible at both ends.
void trim(double negligible, CutPattern *pattern)
{
    std::vector<double> &shares = pattern->shares;
    shares.resize(trimmedSize(shares.data(), shares.size(), negligible));
    const auto begin = std::find_if(
        shares.begin(), shares.end(), [=](double share) { return !(share < negligible); });
    pattern->first += static_cast<std::size_t>(begin - shares.begin());
    shares.erase(shares.begin(), begin);
}

double sumOf(const double *begin, const double *end)
{
    return std::accumulate(begin, end, 0.0);
}

/// The product with its sum set right, so that a power of it does not raise the error of rounding
/// to the same power.
CutPattern exactProduct(const CutPattern &a, const CutPattern &b, std::size_t capacity)
{
    CutPattern result{product(a.shares, b.shares), a.first + b.first, 0.0};
    std::vector<double> &shares = result.shares;
    const std::size_t room = capacity - std::min(capacity, result.first);
    const std::size_t kept = std::min(shares.size(), room);
    result.lost = a.lost + b.lost - a.lost * b.lost
        + sumOf(shares.data() + kept, shares.data() + shares.size());
    shares.resize(kept);
    trim(kNegligibleInPowers, &result);
    if (result.lost > 0.5) // not known well enough, and there is not much left to raise
        return result;
    const double factor = (1.0 - result.lost) / sumOf(shares.data(), shares.data() + shares.size());
    for (double &share : shares)
        share *= factor;
    return result;
}

/// @p base convolved with itself, @p exponent times in all; @p exponent is whole, at least 1, or
/// infinite.
CutPattern power(CutPattern base, double exponent, std::size_t capacity)
{
    CutPattern result{{1.0}};
    while (true) {
        if (std::fmod(exponent, 2.0) == 1.0)
            result = exactProduct(result, base, capacity);
        exponent = std::floor(exponent / 2.0);
        if (!(exponent > 0.0) || result.shares.empty())
            return result;
        CutPattern squared = exactProduct(base, base, capacity);
        if (squared.shares.empty())
            return squared;
        // The single peak 1.0, which no power changes.
        if (squared.first == base.first && squared.shares == base.shares)
            return exactProduct(result, base, capacity);
        base = std::move(squared);
    }
}

} // namespace

void ShareBuffer::assign(const CutPattern &pattern)
{
    m_first = pattern.first;
    m_size = pattern.shares.size();
    std::copy(pattern.shares.begin(), pattern.shares.end(), values());
}

void ShareBuffer::assignProduct(ShareBuffer *pattern, const CutPattern &factor)
{
    if (pattern->m_first == 0 && pattern->m_size == 1 && *pattern->values() == 1.0) {
        assign(factor);
        return;
    }
    m_first = pattern->m_first + factor.first;
    m_size = 0;
    if (pattern->m_size == 0 || factor.shares.empty() || m_first >= m_capacity)
        return;
    const std::size_t size =
        std::min(pattern->m_size + factor.shares.size() - 1, m_capacity - m_first);
    const std::size_t blocks = roundedUp(size);
    const std::size_t count = std::min(factor.shares.size(), size);
    double *const from = pattern->values(); // between zeros, as far as the kernel reads
    std::fill(from - (count - 1), from, 0.0);
    std::fill(from + pattern->m_size, from + std::max(pattern->m_size, blocks), 0.0);
    activeKernel()(
        factor.shares.data(), static_cast<int>(count), from, values(), static_cast<int>(blocks));
    m_size = trimmedSize(values(), size, kNegligible);
}

void ShareBuffer::writeTo(double *shares) const
{
    const std::size_t front = m_size == 0 ? 0 : m_first;
    double *const end = std::copy_n(values(), m_size, std::fill_n(shares, front, 0.0));
    std::fill(end, shares + m_capacity, 0.0);
}

int ShareBuffer::indexOfHighest() const
{
    const int highest = detail::indexOfHighest(values(), static_cast<int>(m_size));
    return highest < 0 ? highest : highest + static_cast<int>(m_first);
}

UnitPatterns::UnitPatterns(
    std::vector<double> unit, double averageMass, double lightestMass, int capacity)
    : m_averageMass(averageMass)
    , m_lightestMass(lightestMass)
    , m_capacity(static_cast<std::size_t>(capacity))
{
    m_blocks[0].push_back({std::move(unit)});
    for (int i = 0; i < 4; ++i) {
        std::vector<CutPattern> &block = m_blocks[i];
        if (i > 0)
            block.push_back(
                exactProduct(m_blocks[i - 1].back(), m_blocks[i - 1].front(), m_capacity));
        const bool isLast = i == 3;
        while (block.size() < (isLast ? kMostThousands : 9)
            && !(isLast && block.back().lost > kMostLost))
            block.push_back(exactProduct(block.back(), block.front(), m_capacity));
    }
    m_mostThousands = m_blocks[3].back();
    for (std::vector<CutPattern> &block : m_blocks) {
        for (CutPattern &pattern : block) {
            trim(kNegligible, &pattern);
            pattern.shares.shrink_to_fit();
            if (&block != &m_blocks[3])
                m_longestFactor = std::max(m_longestFactor, pattern.shares.size());
        }
    }
}

UnitCounts::UnitCounts(double units)
    : thousands(std::floor(units / 1000.0))
{
    constexpr double kExactlyDivided = 1e15; // up to here the rounded quotient has the right floor
    const double whole = 1000.0 * thousands;
    const int rest = units < kExactlyDivided ? static_cast<int>(units - whole)
        : std::isfinite(units)               ? static_cast<int>(std::fmod(units, 1000.0))
                                             : 0;
    digits = {rest / 100, rest / 10 % 10, rest % 10};
}

double UnitPatterns::unitsOf(double mass) const
{
    const double units = std::ceil(mass / m_averageMass - 0.5);
    return units > 0.0 ? units : 0.0;
}

void UnitPatterns::assignThousands(double thousands, ShareBuffer *pattern) const
{
    const std::vector<CutPattern> &kept = m_blocks[3];
    const auto most = static_cast<double>(kept.size());
    if (thousands <= most) {
        pattern->assign(kept[static_cast<std::size_t>(thousands) - 1]);
        return;
    }
    CutPattern result = power(m_mostThousands, std::floor(thousands / most), m_capacity);
    const double rest = std::isfinite(thousands) ? std::fmod(thousands, most) : 0.0;
    if (rest > 0.0)
        result = exactProduct(result, kept[static_cast<std::size_t>(rest) - 1], m_capacity);
    trim(kNegligible, &result);
    pattern->assign(result);
}

const ShareBuffer &UnitPatterns::sharesOf(
    double mass, ShareBuffer *pattern, ShareBuffer *spare) const
{
    const UnitCounts counts(unitsOf(mass));
    if (counts.thousands > 0.0)
        assignThousands(counts.thousands, pattern);
    for (std::size_t place = 0; place < counts.digits.size(); ++place) {
        if (counts.digits[place] == 0)
            continue;
        spare->assignProduct(pattern, factor(place, counts.digits[place]));
        std::swap(pattern, spare);
    }
    return *pattern;
}

} // namespace vex::detail

#include "algo/detail/UnitPatterns.h"

#include "algo/detail/ConvolutionKernel.h"
#include "algo/detail/Trim.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

namespace vex::detail {

namespace {

using Shares = std::vector<double>;

// What a pattern may lack at its end: of what is answered, and of what is still to be raised to a
// power, where 1e-20 would show as 5e-11.
constexpr double kNegligible = 1e-20;
constexpr double kNegligibleInPowers = 1e-25;
constexpr double kMostLost = 0.99; // of the last of the thousands that are kept
constexpr std::size_t kMostThousands = 64;

/// The first @p capacity entries of the convolution of @p a and @p b, without those at the end that
/// are below @p negligible. Both hold shares: no entry is negative.
Shares product(const Shares &a, const Shares &b, std::size_t capacity, double negligible)
{
    const Shares &taps = a.size() < b.size() ? a : b;
    const Shares &values = a.size() < b.size() ? b : a;
    if (taps.empty())
        return {};
    const std::size_t size = std::min(a.size() + b.size() - 1, capacity);
    const std::size_t front = taps.size() - 1;
    const std::size_t blocks = (size + kKernelBlock - 1) / kKernelBlock * kKernelBlock;
    QVarLengthArray<double, 512> padded(qsizetype(front + std::max(blocks, values.size())));
    double *const start = std::fill_n(padded.data(), front, 0.0);
    std::fill(std::copy(values.begin(), values.end(), start), padded.data() + padded.size(), 0.0);
    Shares result(blocks);
    activeKernel()(taps.data(), static_cast<int>(std::min(taps.size(), size)), start, result.data(),
        static_cast<int>(blocks));
    result.resize(trimmedSize(result.data(), size, negligible));
    return result;
}

double sumOf(const double *begin, const double *end)
{
    return std::accumulate(begin, end, 0.0);
}

/// The product with its sum set right, so that a power of it does not raise the error of rounding
/// to the same power.
CutPattern exactProduct(const CutPattern &a, const CutPattern &b, std::size_t capacity)
{
    Shares shares =
        product(a.shares, b.shares, a.shares.size() + b.shares.size(), kNegligibleInPowers);
    const std::size_t kept = std::min(shares.size(), capacity);
    const double beyond = sumOf(shares.data() + kept, shares.data() + shares.size());
    CutPattern result{std::move(shares), a.lost + b.lost - a.lost * b.lost + beyond};
    result.shares.resize(trimmedSize(result.shares.data(), kept, kNegligibleInPowers));
    if (result.lost > 0.5) // not known well enough, and there is not much left to raise
        return result;
    const double factor = (1.0 - result.lost)
        / sumOf(result.shares.data(), result.shares.data() + result.shares.size());
    for (double &share : result.shares)
        share *= factor;
    return result;
}

/// @p base convolved with itself, @p exponent times in all; @p exponent is whole, or infinite.
Shares power(CutPattern base, double exponent, std::size_t capacity)
{
    CutPattern result{{1.0}, 0.0};
    while (true) {
        if (std::fmod(exponent, 2.0) == 1.0)
            result = exactProduct(result, base, capacity);
        exponent = std::floor(exponent / 2.0);
        if (!(exponent > 0.0) || result.shares.empty())
            return result.shares;
        CutPattern squared = exactProduct(base, base, capacity);
        if (squared.shares.empty())
            return {};
        if (squared.shares == base.shares) // the single peak 1.0, which no power changes
            return exactProduct(result, base, capacity).shares;
        base = std::move(squared);
    }
}

} // namespace

UnitPatterns::UnitPatterns(
    std::vector<double> unit, double averageMass, double lightestMass, int capacity)
    : m_averageMass(averageMass)
    , m_lightestMass(lightestMass)
    , m_capacity(static_cast<std::size_t>(capacity))
{
    m_blocks[0].push_back({std::move(unit), 0.0});
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
    m_thousand = m_blocks[3].front();
    for (std::vector<CutPattern> &block : m_blocks) {
        for (auto &[shares, lost] : block) {
            shares.resize(trimmedSize(shares.data(), shares.size(), kNegligible));
            shares.shrink_to_fit();
        }
    }
}

std::vector<double> UnitPatterns::sharesOf(double mass) const
{
    // As the greedy decomposition rounds: half a unit is none, anything above it is one.
    const double units = std::ceil(mass / m_averageMass - 0.5);
    if (!(units > 0.0))
        return {1.0};
    const double thousands = std::floor(units / 1000.0);
    int rest = std::isfinite(units) ? static_cast<int>(std::fmod(units, 1000.0)) : 0;
    // The short ones first: each product is cheap then.
    std::optional<Shares> shares;
    const auto multiply = [&](const Shares &factor) {
        shares = shares ? product(*shares, factor, m_capacity, kNegligible) : factor;
    };
    for (int block = 0; block < 3; ++block) {
        if (rest % 10 > 0)
            multiply(m_blocks[block][static_cast<std::size_t>(rest % 10) - 1].shares);
        rest /= 10;
    }
    const std::vector<CutPattern> &kept = m_blocks[3];
    if (thousands > static_cast<double>(kept.size()))
        multiply(power(m_thousand, thousands, m_capacity));
    else if (thousands > 0.0)
        multiply(kept[static_cast<std::size_t>(thousands) - 1].shares);
    return *shares;
}

} // namespace vex::detail

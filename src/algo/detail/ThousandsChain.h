#pragma once

#include "algo/detail/PatternProduct.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace vex::detail {

/// What every query of the averagine model begins with: the pattern after 1, 2, ... blocks of 1000
/// mers.
///
/// A query that needs more of them than there are adds them; a thread that comes meanwhile does
/// without, and begins with those that there are. What has been filled never changes.
class ThousandsChain
{
public:
    static constexpr int kLength =
        24; // 170 kDa of averagine, where 100 peaks hold 27 % of the signal

    ThousandsChain() { } // leaves the patterns as they are: only filled ones are read

    /// Makes @p pattern, a fresh one, that of as many blocks as there are, @p times at most.
    /// @param taps   of one block, the same in every call
    /// @param times  whole, at least 1
    /// @return how many blocks that is; 0 while another thread fills in the first ones
    int begin(const Taps &taps, double times, PatternProduct *pattern)
    {
        const int wanted = static_cast<int>(std::min(times, double{kLength}));
        if (m_filled.load(std::memory_order_acquire) < wanted
            && !m_isFilling.test_and_set(std::memory_order_acquire)) {
            fill(taps, wanted, pattern);
            m_isFilling.clear(std::memory_order_release);
            return wanted;
        }
        const int begun = std::min(m_filled.load(std::memory_order_acquire), wanted);
        take(begun, pattern);
        return begun;
    }

private:
    /// Adds what is missing of the first @p count blocks, and makes @p pattern that of all of them.
    void fill(const Taps &taps, int count, PatternProduct *pattern)
    {
        int filled = std::min(m_filled.load(std::memory_order_relaxed), count);
        take(filled, pattern);
        for (; filled < count; ++filled) {
            pattern->multiply(taps);
            const auto next = static_cast<std::size_t>(filled);
            std::copy_n(pattern->values(), pattern->size(), m_patterns[next].begin());
            m_sizes[next] = pattern->size();
            m_filled.store(filled + 1, std::memory_order_release);
        }
    }

    void take(int count, PatternProduct *pattern) const
    {
        if (count == 0)
            return;
        const auto last = static_cast<std::size_t>(count) - 1;
        pattern->assign(m_patterns[last].data(), m_sizes[last]);
    }

    std::array<std::array<double, kPatternSize>, kLength> m_patterns;
    std::array<int, kLength> m_sizes;
    std::atomic<int> m_filled = 0; // patterns; grows
    std::atomic_flag m_isFilling; // by one thread at a time
};

} // namespace vex::detail

#pragma once

#include "algo/detail/PatternProduct.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace vex::detail {

/// What every query of the averagine model begins with: the pattern after 1, 2, ... blocks of 1000
/// mers.
///
/// Filled by the first query that needs it; a thread that comes meanwhile does without.
class ThousandsChain
{
public:
    static constexpr int kLength =
        24; // 170 kDa of averagine, where 100 peaks hold 27 % of the signal

    ThousandsChain() { } // leaves the patterns as they are: only filled ones are read

    /// Makes @p pattern that of as many blocks as there are, @p times at most.
    /// @param taps  of one block, the same in every call
    /// @return how many blocks that is; 0 while another thread fills the chain
    double begin(const Taps &taps, double times, PatternProduct *pattern)
    {
        State empty = Empty;
        if (m_state.load(std::memory_order_acquire) == Empty
            && m_state.compare_exchange_strong(empty, Filling, std::memory_order_relaxed))
            fill(taps);
        if (m_state.load(std::memory_order_acquire) != Filled)
            return 0.0;
        const double stored = std::min(times, double{kLength});
        const auto last = static_cast<std::size_t>(stored) - 1;
        pattern->assign(m_patterns[last].data(), m_sizes[last]);
        return stored;
    }

private:
    enum State {
        Empty,
        Filling,
        Filled
    };

    void fill(const Taps &taps)
    {
        PatternProduct working;
        for (std::size_t i = 0; i < m_patterns.size(); ++i) {
            working.multiply(taps);
            std::copy_n(working.values(), working.size(), m_patterns[i].begin());
            m_sizes[i] = working.size();
        }
        m_state.store(Filled, std::memory_order_release);
    }

    std::array<std::array<double, kPatternSize>, kLength> m_patterns;
    std::array<int, kLength> m_sizes;
    std::atomic<State> m_state = Empty;
};

} // namespace vex::detail

#pragma once

#include "PlainDistribution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace plain {

/// The list-based isotope model written out: lists of 1 to 9 units, tens, hundreds and of up to 64
/// thousands, a fresh list for every product, ends below 1e-20 left out. Beyond the thousands it
/// squares.
class ListModel
{
public:
    ListModel(const Shares &unit, double unitMass, std::size_t capacity)
        : m_unitMass(unitMass)
        , m_capacity(capacity)
    {
        Shares base = unit;
        for (std::vector<Shares> &block : m_blocks) {
            block.push_back(base);
            while (block.size() < (&block == &m_blocks[3] ? 64 : 9))
                block.push_back(product(block.back(), base));
            base = product(block.back(), base);
        }
    }

    /// Shares of the signal at @p mass, without those at the end that are negligible.
    Shares sharesOf(double mass) const
    {
        const auto units = static_cast<std::size_t>(std::ceil(mass / m_unitMass - 0.5));
        Shares result{1.0};
        std::size_t rest = units % 1000;
        for (std::size_t block = 0; block < 3; ++block, rest /= 10) {
            if (rest % 10 > 0)
                result = product(result, m_blocks[block][rest % 10 - 1]);
        }
        const std::size_t thousands = units / 1000;
        if (thousands > m_blocks[3].size())
            return product(result, power(thousands));
        return thousands > 0 ? product(result, m_blocks[3][thousands - 1]) : result;
    }

private:
    Shares product(const Shares &a, const Shares &b) const
    {
        const Shares &taps = a.size() < b.size() ? a : b;
        const Shares &values = a.size() < b.size() ? b : a;
        Shares result(std::min(a.size() + b.size() - 1, m_capacity));
        for (std::size_t k = 0; k < result.size(); ++k) {
            const std::size_t from = k < values.size() ? 0 : k - values.size() + 1;
            double sum = 0.0;
            for (std::size_t i = from; i <= k && i < taps.size(); ++i)
                sum += taps[i] * values[k - i];
            result[k] = sum;
        }
        memoryTrim(&result, 1e-20);
        return result;
    }

    Shares power(std::size_t thousands) const
    {
        Shares result{1.0};
        for (Shares base = m_blocks[3][0];; base = product(base, base)) {
            if (thousands % 2 == 1)
                result = product(result, base);
            thousands /= 2;
            if (thousands == 0)
                return result;
        }
    }

    double m_unitMass;
    std::size_t m_capacity;
    std::array<std::vector<Shares>, 4> m_blocks;
};

} // namespace plain

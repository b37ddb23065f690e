#pragma once

#include <vex/AveragineIsotopeDistribution.h>
#include <vex/IsotopeWorkspace.h>

#include <algorithm>
#include <cmath>
#include <vector>

/// The precomputed distribution written out step by step: what the library's answers and times are
/// compared with. A fresh list for every atom, sums in ascending index of the second factor.
namespace plain {

using Shares = std::vector<double>;

inline Shares convolve(const Shares &a, const Shares &b)
{
    if (a.empty() || b.empty())
        return {};
    Shares out(a.size() + b.size() - 1);
    for (std::size_t k = 0; k < out.size(); ++k) {
        double sum = 0.0;
        for (std::size_t j = 0; j < b.size(); ++j) {
            if (k >= j && k - j < a.size())
                sum += b[j] * a[k - j];
        }
        out[k] = sum;
    }
    return out;
}

/// Returns how often an empty list was found or left: the warnings of the library.
inline int memoryTrim(Shares *values, double threshold)
{
    while (!values->empty() && values->back() < threshold)
        values->pop_back();
    return values->empty() ? 1 : 0;
}

inline int convolveRepeatedly(
    double threshold, int count, const Shares &abundances, Shares *pattern)
{
    int warnings = 0;
    if (abundances.empty() || pattern->empty())
        return warnings;
    for (int i = 0; i < count; ++i) {
        *pattern = convolve(*pattern, abundances);
        warnings += memoryTrim(pattern, threshold);
    }
    return warnings;
}

/// A table and its look-ups, for parameters that make sense.
struct Distribution
{
    explicit Distribution(const vex::AveragineIsotopeDistribution::Parameters &given)
        : parameters(given)
    {
        const vex::IsotopeWorkspace workspace(vex::IsotopeWorkspace::RatiosSet0);
        int before[5] = {};
        Shares running{1.0};
        for (int i = 0; static_cast<double>(i) < parameters.avgDistCount; ++i) {
            for (std::size_t e = 0; e < 5; ++e) {
                const double atoms = i * parameters.massSpacing * workspace.atomFractions[e]
                    / workspace.averageAtomMass;
                const int target = static_cast<int>(atoms > 0.0 ? atoms + 0.5 : atoms - 0.5);
                convolveRepeatedly(parameters.interTrim, target - before[e],
                    workspace.isotopeAbundances[e], &running);
                before[e] = target;
            }
            Shares copy = running;
            memoryTrim(&copy, parameters.finalTrim);
            table.push_back(copy);
        }
    }

    int indexFloor(double mass, double *fraction) const
    {
        const int n = static_cast<int>(table.size());
        if (n == 0)
            return -1;
        const double position = mass / parameters.massSpacing;
        int k = static_cast<int>(std::floor(position));
        *fraction = 0.0;
        if (k < 0)
            k = 0;
        else if (k >= n)
            k = n - 1;
        else if (k < n - 1)
            *fraction = position - k;
        return k;
    }

    double interpolated(double mass, int isotope) const
    {
        if (isotope < 0 || mass < 0.0)
            return 0.0;
        double fraction = 0.0;
        const int k = indexFloor(mass, &fraction);
        if (k < 0 || k >= static_cast<int>(table.size()) - 1)
            return 0.0;
        const auto at = [&](int row) {
            const Shares &pattern = table[static_cast<std::size_t>(row)];
            return isotope < static_cast<int>(pattern.size())
                ? pattern[static_cast<std::size_t>(isotope)]
                : 0.0;
        };
        return (1.0 - fraction) * at(k) + fraction * at(k + 1);
    }

    /// The nearest pattern, copied.
    Shares nearest(double mass) const
    {
        const double position = mass / parameters.massSpacing;
        const int k = static_cast<int>(position > 0.0 ? position + 0.5 : position - 0.5);
        return table[static_cast<std::size_t>(
            std::clamp(k, 0, static_cast<int>(table.size()) - 1))];
    }

    vex::AveragineIsotopeDistribution::Parameters parameters;
    std::vector<Shares> table;
};

} // namespace plain

#pragma once

#include "algo/detail/ConvolutionKernel.h"

#include <vector>

namespace vex::detail {

/// Cuts the entries at the end of @p isoVector that are below @p threshold.
///
/// @return false, with the warning "isoVector is empty", when nothing was there or is left
bool memoryTrim(std::vector<double> &isoVector, double threshold);

/// Convolves @p pattern with @p abundances @p count times, each time followed by memoryTrim().
///
/// An emptied pattern is trimmed, and warned of, for each time that is left.
/// @return false when nothing is left, or when there was nothing to do
bool convolveRepeatedly(double threshold, int count, const std::vector<double> &abundances,
    std::vector<double> &pattern);

/// The isotope abundances of one element, looked at once.
struct AtomShares
{
    // implicit: a list of abundances is meant wherever one is given
    AtomShares(const std::vector<double> &abundances);

    const std::vector<double> *abundances; // the caller's
    bool isForKernel; // few, finite and not negative
};

/// A pattern to which atoms are added, element after element: convolveRepeatedly() without the
/// copying between elements.
class GrowingPattern
{
public:
    explicit GrowingPattern(const std::vector<double> &pattern);

    /// convolveRepeatedly() on this pattern.
    bool addAtoms(int count, const AtomShares &shares, double threshold);

    /// A copy of the pattern.
    std::vector<double> values() const;

    /// Appends a copy of the pattern after memoryTrim(); the pattern itself stays.
    void appendTrimmed(double threshold, std::vector<std::vector<double>> *patterns) const;

private:
    static constexpr int kFront = 8; // zeros in front, a cache line of them; as much room behind

    void assign(const std::vector<double> &pattern);
    void reserve(int size);
    void addAtomsPlainly(int count, const std::vector<double> &abundances, double threshold);

    std::vector<double> m_storage; // two buffers of the same size
    GrowingBuffers m_buffers{};
    int m_room = 0; // for values in each buffer
    bool m_isPlain = false; // holds values that the kernels are not made for
    GrowthKernel m_kernel = activeGrowthKernel();
};

} // namespace vex::detail

#pragma once

#include "algo/detail/ConvolutionKernel.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vex::detail {

/// Shares of the signal by nominal mass shift, as far as a capacity reaches.
struct CutPattern
{
    std::vector<double> shares; ///< without what is negligible at both ends
    std::size_t first = 0; ///< shift of the first of them
    double lost = 0.0; ///< share of the signal beyond the capacity
};

/// The working pattern of the list-based model: the first @p capacity entries of a product, without
/// what is negligible at its end. On the stack, unless the capacity is large.
class ShareBuffer
{
public:
    /// The single peak 1.0.
    /// @param longest   most entries of a factor of assignProduct()
    /// @param capacity  at least 1
    ShareBuffer(std::size_t longest, std::size_t capacity)
        : m_front(longest)
        , m_capacity(capacity)
        , m_storage(qsizetype(longest + capacity + kKernelBlock))
    {
        values()[0] = 1.0;
    }

    /// Becomes @p pattern.
    void assign(const CutPattern &pattern);

    /// Becomes the product of @p pattern, which stays the same, with @p factor.
    void assignProduct(ShareBuffer *pattern, const CutPattern &factor);

    /// Writes as many shares as the capacity.
    void writeTo(double *shares) const;

    /// The first of equals; -1 when all are 0.
    int indexOfHighest() const;

    /// Number of values; those behind count as 0.
    std::size_t size() const { return m_size; }
    const double *values() const { return m_storage.data() + m_front; }

private:
    double *values() { return m_storage.data() + m_front; }

    std::size_t m_front; // room before the values, for zeros that the kernel reads
    std::size_t m_capacity;
    std::size_t m_first = 0;
    std::size_t m_size = 1;
    QVarLengthArray<double, 256> m_storage;
};

} // namespace vex::detail

#pragma once

#include "algo/detail/ConvolutionKernel.h"

#include <string>
#include <vector>

namespace bench {

/// A convolution kernel that this processor runs.
struct KernelCase
{
    std::string name;
    vex::detail::ConvolutionKernel kernel;
    double (*limit)(const double *operands);
    bool isWide; ///< AVX2, for which floors are higher
};

/// The kernels that this processor runs, the baseline first.
std::vector<KernelCase> kernels();

/// Adds a row: the share of the multiply-add limit that benchmark @p name reaches.
void compareWithLimit(
    const std::string &name, const KernelCase &kernel, double multiplyAdds, double floor);

} // namespace bench

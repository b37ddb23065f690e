#pragma once

#include <vex/Result.h>

#include <QList>

namespace vex::PlotUtilities {

/// Pearson's correlation of two lists; 0 for empty ones, and where one of them is flat: when the
/// sum of its squared deviations is at most 1e-12.
///
/// Sums run in the order of the lists.
/// @par Errors  InvalidInput for lists of different size
Result<double> pearsonsCorrelation(const QList<double> &x, const QList<double> &y);

} // namespace vex::PlotUtilities

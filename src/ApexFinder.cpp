#include <vex/ApexFinder.h>

#include "detail/PlotThresholds.h"

#include <cmath>
#include <limits>

namespace vex {

double ApexFinder::findApexTime(const PlotBase &plot, double start, double end)
{
    constexpr double kInset = 0.01; // given by the interface
    constexpr double kSmallest = std::numeric_limits<double>::min();
    const double lowest = (start + kInset) + kSmallest;
    const double highest = (end - kInset) - kSmallest;
    const QPointF apex = plot.getMaxTimeIntensity(lowest, highest);
    return std::fabs(apex.y()) <= detail::kPlotZero ? (start + end) * 0.5 : apex.x();
}

double ApexFinder::findApexTime(const PlotBase &plot, QPointF startPoint, QPointF endPoint)
{
    return findApexTime(plot, startPoint.x(), endPoint.x());
}

} // namespace vex

#pragma once

#include <QPointF>

#include <vex/Export.h>
#include <vex/PlotBase.h>

namespace vex {

/// The time of a chromatogram's most intense point.
class VEX_EXPORT ApexFinder
{
public:
    /// x of the most intense sample between @p start + 0.01 and @p end - 0.01; the middle of the
    /// range when no sample lies there, or when the greatest intensity is at most 1e-12 in
    /// magnitude.
    ///
    /// The inset is in the unit of x: 0.01 minutes for a chromatogram in minutes. So a sample on
    /// the edge of the range is never chosen, and a range narrower than 0.02 gives its middle.
    /// @param plot        x in minutes
    /// @param start, end  minutes
    static double findApexTime(const PlotBase &plot, double start, double end);

    /// The same for the x of two points; their y count for nothing.
    static double findApexTime(const PlotBase &plot, QPointF startPoint, QPointF endPoint);
};

} // namespace vex

#pragma once

#include <QList>
#include <QPointF>

#include <vex_common_stable/Export.h>

namespace vex {

/// A sampled signal: a chromatogram (x is time) or a spectrum (x is a position such as m/z).
///
/// The points are kept in the order in which they are appended, which is to be ascending in x;
/// nothing here checks or sorts them. Between two samples the signal is the straight line, outside
/// the first and the last one it is 0. Units are the caller's.
class VEX_COMMON_STABLE_EXPORT PlotBase
{
public:
    /// How an area is integrated.
    enum ComputeAreaMethod {
        Trapezoid = 0, ///< under the straight lines between samples
    };

    /// A signal without points.
    PlotBase() = default;
    /// Copies the points.
    PlotBase(const PlotBase &) = default;
    /// Takes the points over.
    PlotBase(PlotBase &&) = default;
    virtual ~PlotBase();
    /// Copies the points.
    PlotBase &operator=(const PlotBase &) = default;
    /// Takes the points over.
    PlotBase &operator=(PlotBase &&) = default;

    /// The samples, x then y; to read and to append to.
    QList<QPointF> &points() { return m_points; }
    /// The samples, x then y.
    const QList<QPointF> &points() const { return m_points; }

    /// The signal's value at @p x: a sample's own y, of several with the same x the first one's;
    /// the line between two samples; 0 outside, and for NaN.
    ///
    /// @param x              any
    /// @param interpolation  1, the line; no other is known
    /// @param outside        0, zero outside; no other is known
    double evaluate(double x, int interpolation, int outside) const;

    /// The integral of the signal from @p start to @p end, in units of x times units of y; 0 for an
    /// empty or inverted range.
    ///
    /// Pieces are added in ascending x.
    /// @param start, end      units of x
    /// @param convertsUnits   not used: there are no units to convert
    /// @param method          Trapezoid
    double computeAreaNoUnitConversion(
        double start, double end, bool convertsUnits, ComputeAreaMethod method) const;

    /// The sample of greatest y among those with start <= x <= end, the first of equals.
    ///
    /// A y that is NaN is passed over. (0, 0) when there is no such sample, as in an empty or
    /// inverted range; a range that holds negative samples only gives the greatest of them.
    /// @param start, end  units of x
    QPointF getMaxTimeIntensity(double start, double end) const;

private:
    QList<QPointF> m_points;
};

} // namespace vex

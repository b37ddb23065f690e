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

    /// Gives the values of two signals, those of evaluate(x, 1, 0), at many positions in ascending
    /// order: it goes along the samples instead of searching for each position.
    ///
    /// Both signals ascend, outlive the cursor and stay as they are.
    class VEX_COMMON_STABLE_EXPORT PairCursor
    {
    public:
        /// Stands before the first samples.
        PairCursor(const PlotBase &a, const PlotBase &b);

        /// Writes the values at @p x.
        ///
        /// @param x      ascending, none below an earlier one of this cursor, none NaN
        /// @param ya,yb  replaced, of the first and of the second signal
        /// @param count  number of positions
        void evaluate(const double *x, double *ya, double *yb, qsizetype count);

    private:
        struct Place
        {
            explicit Place(const QList<QPointF> &points);
            template <typename Line>
            double goTo(double x, Line line);

            const QPointF *next; // the first sample that is not below the last position
            const QPointF *begin;
            const QPointF *end;
        };

        Place m_a;
        Place m_b;
    };

    /// The integral of the signal from @p start to @p end, in units of x times units of y; 0 for an
    /// empty or inverted range.
    ///
    /// Pieces are added in ascending x. Infinite where the area of a piece, or a sum on the way, is
    /// beyond the range of double.
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

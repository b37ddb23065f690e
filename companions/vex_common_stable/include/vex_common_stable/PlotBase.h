#pragma once

#include <QList>
#include <QPointF>

#include <array>

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

    /// Gives the values of two signals, those of evaluate(x, 1, 0), at many positions whose places
    /// among the samples are known: nothing is searched for.
    ///
    /// Both signals ascend, outlive the object and stay as they are.
    class VEX_COMMON_STABLE_EXPORT PairValues
    {
    public:
        /// Of two signals.
        PairValues(const PlotBase &a, const PlotBase &b);

        /// Writes the values at @p x. Fastest where most positions are samples of a signal.
        ///
        /// @param x             none NaN
        /// @param nextA, nextB  the first sample of each signal that is not below the position; the
        ///                      end of its samples when there is none
        /// @param ya, yb        replaced, of the first and of the second signal
        /// @param count         number of positions
        void evaluate(const double *x, const QPointF *const *nextA, const QPointF *const *nextB,
            double *ya, double *yb, qsizetype count) const;

    private:
        struct Samples
        {
            explicit Samples(const QList<QPointF> &points);
            bool isEnd(const QPointF *next) const { return next == end; }
            template <typename Line>
            double valueAt(double x, const QPointF *next, Line line) const;

            const QPointF *begin;
            const QPointF *end;
        };

        std::array<Samples, 2> m_samples;
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

    /// Adds up the area under points that come some at a time and are not kept: to the last bit
    /// what computeAreaNoUnitConversion() gives for all of them, from the first to the last one.
    class VEX_COMMON_STABLE_EXPORT AreaSum
    {
    public:
        /// Goes on from the last point before, if any.
        ///
        /// @param x, y   points; each x is finite and above the one before
        /// @param count  number of points
        void add(const double *x, const double *y, qsizetype count);

        /// The area so far; 0 for fewer than two points.
        double area() const { return m_area; }

    private:
        bool m_isBegun = false;
        double m_lastX = 0.0;
        double m_lastY = 0.0;
        double m_area = 0.0;
    };

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

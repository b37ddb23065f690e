#include <vex/PlotUtilities.h>

#include "detail/Lists.h"
#include "detail/PlotCorrelation.h"
#include "detail/PlotPairWalk.h"
#include "detail/PlotThresholds.h"
#include "detail/Trace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <span>

using namespace Qt::StringLiterals;

namespace vex::PlotUtilities {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber. Lines 114, 133,
// 144, 172, 267, 326 and 333 are for what passes the failure of a merge on. There is none: of two
// signals that need a sampling interval the longer one has two points at least.
constexpr detail::TraceSource kSource{"src/PlotUtilities"};
namespace at {
constexpr auto tooFewPoints = kSource.line(341); // chosen here
constexpr auto sizesDiffer = kSource.line(342); // chosen here
} // namespace at

using detail::kPlotZero;
using detail::PlotPairWalk;
using Points = QList<QPointF>;
using Values = PlotPairWalk::Values;

bool isZeroPlot(const PlotBase &plot)
{
    return std::none_of(plot.points().cbegin(), plot.points().cend(),
        [](const QPointF &point) { return std::fabs(point.y()) > kPlotZero; });
}

bool isClose(double p, double q)
{
    return std::fabs(p - q) <= kPlotZero * std::max({1.0, std::fabs(p), std::fabs(q)});
}

constexpr auto distance = [](double p, double q) { return std::fabs(p - q); };

/// Appends the points (x, height(a, b)).
template <typename Height>
void appendPoints(PlotBase *plot, Values x, Values a, Values b, Height height)
{
    std::array<QPointF, PlotPairWalk::kMost> points;
    for (std::size_t i = 0; i < x.size(); ++i)
        points[i] = QPointF(x[i], height(a[i], b[i]));
    detail::append(&plot->points(), std::span<const QPointF>(points).first(x.size()));
}

/// The points (x, height(a(x), b(x))) at the common positions.
template <typename Height>
PlotBase combined(const PlotBase &a, const PlotBase &b, Height height)
{
    PlotPairWalk walk(a, b);
    PlotBase plot;
    plot.points() = detail::listWithRoom<QPointF>(walk.most());
    walk.forEach([&](Values x, Values ya, Values yb) { appendPoints(&plot, x, ya, yb, height); });
    return plot;
}

/// The relative area of error, from the magnitude of the difference.
double relativeArea(const PlotBase &difference, const PlotBase &a, const PlotBase &b)
{
    const Points &points = difference.points();
    if (points.size() < 2)
        return 0.0;
    const auto areaOf = [start = points.constFirst().x(), end = points.constLast().x()](
                            const PlotBase &plot) {
        // the companion's name for it is its own
        constexpr auto method = PlotBase::ComputeAreaMethod(0);
        return plot.computeAreaNoUnitConversion(start, end, false, method);
    };
    const double area = areaOf(difference);
    const double areaA = areaOf(PlotUtilities::abs(a));
    const double areaB = areaOf(PlotUtilities::abs(b));
    if (std::fabs(areaA) > kPlotZero && std::fabs(areaB) > kPlotZero)
        return area / std::min(areaA, areaB);
    if (std::fabs(areaA) <= kPlotZero && std::fabs(areaB) <= kPlotZero)
        return 0.0;
    return area / std::max(areaA, areaB);
}

/// A power of two that takes magnitudes of 2 and more in @p values to below 2.
double scaleOf(const QList<double> &values)
{
    double largest = 0.0;
    for (const double value : values)
        largest = std::max(largest, std::fabs(value));
    return std::ldexp(1.0, -std::max(0, std::ilogb(largest)));
}

/// Sums of the products and squares of the deviations from the means.
struct Deviations
{
    double xy = 0.0;
    double xx = 0.0;
    double yy = 0.0;
};

/// Those of two lists of one size times a power of two each, which leaves the digits as they are.
Deviations deviationsOf(
    const QList<double> &x, const QList<double> &y, double scaleX, double scaleY)
{
    // Sums side by side, each in the order of the list.
    double sumX = 0.0;
    double sumY = 0.0;
    for (qsizetype i = 0; i < x.size(); ++i) {
        sumX += x[i] * scaleX;
        sumY += y[i] * scaleY;
    }
    const double meanX = sumX / static_cast<double>(x.size());
    const double meanY = sumY / static_cast<double>(x.size());
    Deviations sums;
    for (qsizetype i = 0; i < x.size(); ++i) {
        const double dx = x[i] * scaleX - meanX;
        const double dy = y[i] * scaleY - meanY;
        sums.xy += dx * dy;
        sums.xx += dx * dx;
        sums.yy += dy * dy;
    }
    return sums;
}

} // namespace

PlotBase abs(const PlotBase &plot)
{
    PlotBase result;
    Points &points = result.points();
    points = plot.points(); // shared, and stays so where there is nothing to change
    const auto isNegative = [](const QPointF &point) { return std::signbit(point.y()); };
    if (std::none_of(points.cbegin(), points.cend(), isNegative))
        return result;
    detail::detach(&points);
    for (QPointF &point : points)
        point.setY(std::fabs(point.y()));
    return result;
}

Result<bool> centroidedPlotSame(const PlotBase &a, const PlotBase &b)
{
    const Points &p = a.points();
    const Points &q = b.points();
    return p.size() == q.size()
        && std::equal(p.cbegin(), p.cend(), q.cbegin(), [](const QPointF &s, const QPointF &t) {
               return isClose(s.x(), t.x()) && isClose(s.y(), t.y());
           });
}

Result<double> guessSamplingInterval(const PlotBase &plot)
{
    if (plot.points().size() < 2) {
        return detail::stamped(at::tooFewPoints, Q_FUNC_INFO,
            Error(ErrorCode::InvalidInput,
                u"Can't guess sampling interval with less than 2 points"_s));
    }
    return detail::medianGap(plot.points());
}

Error removeCloseValues(QList<double> *values, double tolerance)
{
    if (values->isEmpty())
        return ErrorCode::NoError;
    detail::detach(values);
    double *const list = values->data();
    qsizetype kept = 1;
    for (qsizetype i = 1; i < values->size(); ++i) {
        if (!(std::fabs(list[i] - list[kept - 1]) < tolerance))
            list[kept++] = list[i];
    }
    values->resize(kept);
    return ErrorCode::NoError;
}

Result<QList<double>> mergeDomains(const PlotBase &a, const PlotBase &b, double)
{
    PlotPairWalk walk(a, b);
    auto positions = detail::listWithRoom<double>(walk.most());
    for (Values x = walk.next(); !x.empty(); x = walk.next())
        detail::append(&positions, x);
    return positions;
}

Result<PlotBase> subtract(const PlotBase &a, const PlotBase &b, double)
{
    return combined(a, b, std::minus());
}

Result<double> relativeAreaOfError(const PlotBase &a, const PlotBase &b, double)
{
    return relativeArea(combined(a, b, distance), a, b);
}

Result<double> pearsonsCorrelation(const QList<double> &x, const QList<double> &y)
{
    if (x.size() != y.size()) {
        return detail::stamped(at::sizesDiffer, Q_FUNC_INFO,
            Error(ErrorCode::InvalidInput,
                u"Cannot calculate correlation of different sized vectors."_s));
    }
    if (x.isEmpty())
        return 0.0;
    double scaleX = 1.0;
    double scaleY = 1.0;
    Deviations sums = deviationsOf(x, y, scaleX, scaleY);
    if (!std::isfinite(sums.xx * sums.yy)) { // beyond the range of double: once more, scaled down
        scaleX = scaleOf(x);
        scaleY = scaleOf(y);
        sums = deviationsOf(x, y, scaleX, scaleY);
    }
    if (sums.xx <= kPlotZero * scaleX * scaleX || sums.yy <= kPlotZero * scaleY * scaleY)
        return 0.0;
    return sums.xy / std::sqrt(sums.xx * sums.yy);
}

Result<double> pearsonsCorrelation(const PlotBase &a, const PlotBase &b)
{
    PlotPairWalk walk(a, b);
    auto first = detail::listWithRoom<double>(walk.most());
    auto second = detail::listWithRoom<double>(walk.most());
    walk.forEach([&](Values, Values ya, Values yb) {
        detail::append(&first, ya);
        detail::append(&second, yb);
    });
    return pearsonsCorrelation(first, second);
}

Result<bool> plotSame(const PlotBase &a, const PlotBase &b, double, double maxRelativeAreaOfError,
    double minCorrelation)
{
    const bool isZeroA = isZeroPlot(a); // an empty signal is one
    const bool isZeroB = isZeroPlot(b);
    if (isZeroA || isZeroB)
        return isZeroA && isZeroB;
    return compareSignals(a, b, maxRelativeAreaOfError, minCorrelation).value().isSame;
}

Result<SignalVerdict> compareSignals(
    const PlotBase &a, const PlotBase &b, double maxRelativeAreaOfError, double minCorrelation)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const bool isZeroA = isZeroPlot(a);
    const bool isZeroB = isZeroPlot(b);
    PlotPairWalk walk(a, b); // one for both measures
    PlotBase difference;
    difference.points() = detail::listWithRoom<QPointF>(walk.most());
    auto first = detail::listWithRoom<double>(walk.most());
    auto second = detail::listWithRoom<double>(walk.most());
    walk.forEach([&](Values x, Values ya, Values yb) {
        appendPoints(&difference, x, ya, yb, distance);
        detail::append(&first, ya);
        detail::append(&second, yb);
    });
    SignalVerdict verdict;
    verdict.relativeAreaOfError = relativeArea(difference, a, b);
    verdict.correlation = pearsonsCorrelation(first, second).value();
    verdict.domainSize = first.size();
    verdict.overlapStart = kNaN;
    verdict.overlapEnd = kNaN;
    if (!a.points().isEmpty() && !b.points().isEmpty()) {
        verdict.overlapStart = std::max(a.points().constFirst().x(), b.points().constFirst().x());
        verdict.overlapEnd = std::min(a.points().constLast().x(), b.points().constLast().x());
    }
    if (isZeroA != isZeroB)
        verdict.rule = SignalVerdict::OneWithoutIntensity;
    else if (isZeroA)
        verdict.rule = SignalVerdict::BothWithoutIntensity;
    else if (verdict.relativeAreaOfError > maxRelativeAreaOfError)
        verdict.rule = SignalVerdict::AreaOfError;
    else if (minCorrelation > verdict.correlation)
        verdict.rule = SignalVerdict::Correlation;
    verdict.isSame = verdict.rule == SignalVerdict::BothWithoutIntensity
        || verdict.rule == SignalVerdict::WithinBoth;
    return verdict;
}

QList<SignalFinding> checkSignal(const PlotBase &plot, qsizetype most)
{
    QList<SignalFinding> findings;
    const Points &points = plot.points();
    for (qsizetype i = 0; i < points.size() && findings.size() < most; ++i) {
        const double x = points[i].x();
        if (!std::isfinite(x))
            findings.append({SignalFinding::PositionNotFinite, i});
        else if (i > 0 && x < points[i - 1].x())
            findings.append({SignalFinding::Descending, i});
        else if (i > 0 && x == points[i - 1].x())
            findings.append({SignalFinding::RepeatedPosition, i});
        if (!std::isfinite(points[i].y()) && findings.size() < most)
            findings.append({SignalFinding::ValueNotFinite, i});
    }
    return findings;
}

} // namespace vex::PlotUtilities

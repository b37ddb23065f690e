#include <vex/PlotUtilities.h>

#include "detail/Lists.h"
#include "detail/PlotCorrelation.h"
#include "detail/PlotPairWalk.h"
#include "detail/PlotThresholds.h"
#include "detail/Trace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

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

/// The area under the magnitude of the difference of two signals, position by position.
/// @tparam AreaSum  adds up areas
template <typename AreaSum>
class AreaOfError
{
public:
    explicit AreaOfError(AreaSum sum)
        : m_sum(std::move(sum))
    {
    }

    void add(Values x, Values ya, Values yb)
    {
        std::array<double, PlotPairWalk::kMost> height;
        for (std::size_t i = 0; i < x.size(); ++i)
            height[i] = std::fabs(ya[i] - yb[i]);
        m_sum.add(x.data(), height.data(), qsizetype(x.size()));
        if (m_count == 0)
            m_start = x.front();
        m_end = x.back();
        m_count += qsizetype(x.size());
    }

    /// Number of positions.
    qsizetype count() const { return m_count; }

    /// The area so far in parts of that of @p a or @p b.
    double relativeTo(const PlotBase &a, const PlotBase &b) const
    {
        if (m_count < 2)
            return 0.0;
        const double areaA = detail::areaOf(PlotUtilities::abs(a), m_start, m_end);
        const double areaB = detail::areaOf(PlotUtilities::abs(b), m_start, m_end);
        if (std::fabs(areaA) > kPlotZero && std::fabs(areaB) > kPlotZero)
            return m_sum.area() / std::min(areaA, areaB);
        if (std::fabs(areaA) <= kPlotZero && std::fabs(areaB) <= kPlotZero)
            return 0.0;
        return m_sum.area() / std::max(areaA, areaB);
    }

private:
    AreaSum m_sum;
    qsizetype m_count = 0;
    double m_start = 0.0;
    double m_end = 0.0;
};

/// Gives what measure() makes of the area of error along @p walk, which adds nothing yet.
template <typename Measure>
auto withAreaOfError(const PlotPairWalk &walk, Measure measure)
{
    if (walk.isAscending())
        return measure(AreaOfError(detail::areaSumOf<PlotBase>(walk.most())));
    return measure(AreaOfError(detail::StoredArea<PlotBase>(walk.most())));
}

// Pairs of values come in lists or along a walk, which takes two passes: `pass(visit)` is a
// function that calls visit(x, y) with some values of either signal at a time until it had all.

/// By what the values are multiplied: powers of two, which leave their digits as they are.
struct Scales
{
    double x = 1.0;
    double y = 1.0;
};

/// Takes magnitudes of 2 and more to below 2.
template <typename Pass>
Scales scalesOf(const Pass &pass)
{
    const auto largestOf = [](double largest, Values values) {
        for (const double value : values)
            largest = std::max(largest, std::fabs(value));
        return largest;
    };
    Scales largest{0.0, 0.0};
    pass([&](Values x, Values y) { largest = {largestOf(largest.x, x), largestOf(largest.y, y)}; });
    const auto scaleOf = [](double most) {
        return std::ldexp(1.0, -std::max(0, std::ilogb(most)));
    };
    return {scaleOf(largest.x), scaleOf(largest.y)};
}

/// Sums side by side, each in the order of the values.
struct Sums
{
    double x = 0.0;
    double y = 0.0;
    qsizetype count = 0;

    void add(Values valuesX, Values valuesY, Scales scales = {})
    {
        for (std::size_t i = 0; i < valuesX.size(); ++i) {
            x += valuesX[i] * scales.x;
            y += valuesY[i] * scales.y;
        }
        count += qsizetype(valuesX.size());
    }
};

/// Sums of the products and squares of the deviations from the means.
struct Deviations
{
    double xy = 0.0;
    double xx = 0.0;
    double yy = 0.0;
};

template <typename Pass>
Deviations deviationsOf(const Pass &pass, const Sums &sums, Scales scales)
{
    const double meanX = sums.x / static_cast<double>(sums.count);
    const double meanY = sums.y / static_cast<double>(sums.count);
    Deviations deviations;
    pass([&, scales](Values x, Values y) {
        Deviations next = deviations; // of its own, so that it stays in registers
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double dx = x[i] * scales.x - meanX;
            const double dy = y[i] * scales.y - meanY;
            next.xy += dx * dy;
            next.xx += dx * dx;
            next.yy += dy * dy;
        }
        deviations = next;
    });
    return deviations;
}

/// Pearson's correlation.
/// @param sums  of all values
template <typename Pass>
double correlationOf(const Pass &pass, const Sums &sums)
{
    if (sums.count == 0)
        return 0.0;
    Scales scales;
    Deviations deviations = deviationsOf(pass, sums, scales);
    if (!std::isfinite(deviations.xx * deviations.yy)) { // beyond double: once more, scaled down
        scales = scalesOf(pass);
        Sums scaled;
        pass([&](Values x, Values y) { scaled.add(x, y, scales); });
        deviations = deviationsOf(pass, scaled, scales);
    }
    if (deviations.xx <= kPlotZero * scales.x * scales.x
        || deviations.yy <= kPlotZero * scales.y * scales.y)
        return 0.0;
    return deviations.xy / std::sqrt(deviations.xx * deviations.yy);
}

/// The measures of plotSame().
struct Measures
{
    double relativeAreaOfError;
    double correlation;
    qsizetype domainSize;
};

/// Goes along @p walk once for both measures, and a second time for the correlation alone. The
/// values at the first positions are kept for that, so that only long signals pay for the second
/// time; lists of all values would be the most memory that a comparison takes.
template <typename AreaSum>
Measures measuresOf(
    PlotPairWalk *walk, AreaOfError<AreaSum> area, const PlotBase &a, const PlotBase &b)
{
    constexpr qsizetype kKept = 1 << 18; // twice 2 MB
    const qsizetype room = std::min(walk->most(), kKept + qsizetype(PlotPairWalk::kMost));
    auto first = detail::listWithRoom<double>(room);
    auto second = detail::listWithRoom<double>(room);
    Sums sums;
    walk->forEach(
        [&](Values x, Values ya, Values yb) {
            area.add(x, ya, yb);
            sums.add(ya, yb);
            detail::append(&first, ya);
            detail::append(&second, yb);
        },
        kKept);
    const PlotPairWalk rest = *walk;
    walk->forEach([&](Values x, Values ya, Values yb) {
        area.add(x, ya, yb);
        sums.add(ya, yb);
    });
    const auto pass = [&](auto visit) {
        visit(first, second);
        PlotPairWalk(rest).forEach([&](Values, Values ya, Values yb) { visit(ya, yb); });
    };
    const double correlation = correlationOf(pass, sums);
    return {area.relativeTo(a, b), correlation, area.count()};
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
    PlotPairWalk walk(a, b);
    PlotBase difference;
    difference.points() = detail::listWithRoom<QPointF>(walk.most());
    walk.forEach([&](Values x, Values ya, Values yb) {
        std::array<QPointF, PlotPairWalk::kMost> points;
        for (std::size_t i = 0; i < x.size(); ++i)
            points[i] = QPointF(x[i], ya[i] - yb[i]);
        detail::append(&difference.points(), std::span<const QPointF>(points).first(x.size()));
    });
    return difference;
}

Result<double> relativeAreaOfError(const PlotBase &a, const PlotBase &b, double)
{
    PlotPairWalk walk(a, b);
    return withAreaOfError(walk, [&](auto area) {
        walk.forEach([&](Values x, Values ya, Values yb) { area.add(x, ya, yb); });
        return area.relativeTo(a, b);
    });
}

Result<double> pearsonsCorrelation(const QList<double> &x, const QList<double> &y)
{
    if (x.size() != y.size()) {
        return detail::stamped(at::sizesDiffer, Q_FUNC_INFO,
            Error(ErrorCode::InvalidInput,
                u"Cannot calculate correlation of different sized vectors."_s));
    }
    Sums sums;
    sums.add(x, y);
    return correlationOf([&](auto visit) { visit(x, y); }, sums);
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
    const Measures measures =
        withAreaOfError(walk, [&](auto area) { return measuresOf(&walk, std::move(area), a, b); });
    SignalVerdict verdict;
    verdict.relativeAreaOfError = measures.relativeAreaOfError;
    verdict.correlation = measures.correlation;
    verdict.domainSize = measures.domainSize;
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

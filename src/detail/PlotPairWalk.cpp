#include "detail/PlotPairWalk.h"

#include "detail/Lists.h"
#include "detail/PlotThresholds.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace vex::detail {

namespace {

using Points = QList<QPointF>;

/// Ascending, NaN last: an order for every double.
bool isBefore(double p, double q)
{
    return p < q || (std::isnan(q) && !std::isnan(p));
}

/// True for points, one at least, that are ascending and finite, so that nothing computed from the
/// positions is NaN.
bool ascends(const Points &points)
{
    bool result = std::isfinite(points.constFirst().x()) && std::isfinite(points.constLast().x());
    for (qsizetype i = 1; i < points.size() && result; ++i)
        result = points[i - 1].x() <= points[i].x(); // false for NaN
    return result;
}

double gapBehind(const QPointF *point)
{
    return std::fabs(point[1].x() - point[0].x());
}

/// The positions beyond the ends of signals that do not end at 0, or between two single points.
std::vector<double> positionsBesides(const Points &a, const Points &b)
{
    if (a.size() == 1 && b.size() == 1)
        return {(b.constFirst().x() + a.constFirst().x()) * 0.5};
    const auto ends = {a.constFirst(), a.constLast(), b.constFirst(), b.constLast()};
    if (std::none_of(ends.begin(), ends.end(),
            [](const QPointF &end) { return std::fabs(end.y()) > kPlotZero; }))
        return {};
    const double lowest = std::min(a.constFirst().x(), b.constFirst().x());
    const double highest = std::max(a.constLast().x(), b.constLast().x());
    const double dx = medianGap(a.size() > b.size() ? a : b); // not both are single points
    std::vector<double> positions{a.constFirst().x() - dx, a.constLast().x() + dx,
        b.constFirst().x() - dx, b.constLast().x() + dx};
    for (double &position : positions)
        position = std::max(std::min(position, highest), lowest);
    std::sort(positions.begin(), positions.end(), isBefore);
    return positions;
}

} // namespace

double medianGap(const Points &points)
{
    const QPointF *const point = points.constData();
    const qsizetype count = points.size() - 1;
    const qsizetype middle = count / 2;
    constexpr qsizetype kSample = 1024;
    constexpr qsizetype kMargin = 64; // four times how far off the middle of a sample usually is
    qsizetype below = 0;
    const auto gaps = std::make_unique_for_overwrite<double[]>(std::size_t(count));
    qsizetype kept = 0;
    if (count > 8 * kSample) {
        // A sample tells between which gaps the middle one lies; only those are looked at.
        std::array<double, kSample> sample;
        for (qsizetype i = 0; i < kSample; ++i)
            sample[std::size_t(i)] = gapBehind(point + i * (count / kSample));
        std::sort(sample.begin(), sample.end(), isBefore);
        const double low = sample[kSample / 2 - kMargin];
        const double high = sample[kSample / 2 + kMargin];
        double *const between = gaps.get();
        for (qsizetype i = 0; i < count; ++i) {
            const double gap = gapBehind(point + i);
            between[kept] = gap;
            kept += static_cast<qsizetype>(gap >= low) & static_cast<qsizetype>(gap <= high);
            below += gap < low;
        }
        if (middle >= below && middle < below + kept && low == high)
            return low;
    }
    if (middle < below || middle >= below + kept) { // a small list, or a sample that misled
        below = 0;
        kept = count;
        for (qsizetype i = 0; i < count; ++i)
            gaps[std::size_t(i)] = gapBehind(point + i);
    }
    double *const found = gaps.get() + (middle - below);
    std::nth_element(gaps.get(), found, gaps.get() + kept, isBefore);
    return *found;
}

PlotPairWalk::PlotPairWalk(const PlotBase &a, const PlotBase &b)
    : m_a(a)
    , m_b(b)
    , m_isAscending(!a.points().isEmpty() && !b.points().isEmpty() && ascends(a.points())
          && ascends(b.points()))
    , m_tolerance(kSamePosition)
    , m_last(std::numeric_limits<double>::quiet_NaN()) // so the first position is kept
{
    const bool isPair = !a.points().isEmpty() && !b.points().isEmpty();
    m_others = listWithRoom<double>(m_isAscending ? 4 : most());
    if (isPair)
        append<double>(&m_others, positionsBesides(a.points(), b.points()));
    else
        m_tolerance = 0.0; // Deliberate: the positions of one signal alone stay as they stand
    if (m_isAscending) {
        m_first = {a.points().constData(), std::size_t(a.points().size())};
        m_second = {b.points().constData(), std::size_t(b.points().size())};
    } else {
        for (const Points *points : {&a.points(), &b.points()}) {
            for (const QPointF &point : *points)
                m_others.append(point.x());
        }
        if (isPair)
            std::sort(m_others.begin(), m_others.end(), isBefore);
    }
}

PlotPairWalk::Values PlotPairWalk::next()
{
    std::size_t kept = 0;
    constexpr std::size_t kFull = kMost - 4; // beyond it is room for four of m_others
    double last = m_last;
    const double tolerance = m_tolerance;
    const double *r = m_others.constData() + m_othersTaken;
    const double *const rEnd = m_others.constData() + m_others.size();
    const QPointF *p = m_first.data();
    const QPointF *q = m_second.data();
    const QPointF *const pEnd = p + m_first.size();
    const QPointF *const qEnd = q + m_second.size();
    const auto keep = [&](double x) { // as removeCloseValues() does; nothing jumps
        const bool isKept = !(std::fabs(x - last) < tolerance);
        m_positions[kept] = x;
        m_nextA[kept] = p; // all before it are below x: one as high would have dropped x
        m_nextB[kept] = q;
        kept += isKept;
        last = isKept ? x : last;
    };
    const auto take = [&](double x) {
        while (r != rEnd && *r < x)
            keep(*r++);
        keep(x);
    };
    for (;;) { // as many steps at a time as can be done without a look at the ends
        const auto steps = std::min({std::ptrdiff_t(kFull - kept), pEnd - p, qEnd - q});
        if (steps <= 0)
            break;
        for (auto step = steps; step > 0; --step) {
            const bool takesSecond = q->x() < p->x();
            take(takesSecond ? q->x() : p->x());
            q += takesSecond;
            p += !takesSecond;
        }
    }
    if (q == qEnd) {
        for (; p != pEnd && kept < kFull; ++p)
            take(p->x());
    }
    if (p == pEnd) {
        for (; q != qEnd && kept < kFull; ++q)
            take(q->x());
    }
    if (p == pEnd && q == qEnd) {
        while (r != rEnd && kept < kFull)
            keep(*r++);
    }
    m_first = {p, pEnd};
    m_second = {q, qEnd};
    m_othersTaken = r - m_others.constData();
    m_last = last;
    return Values(m_positions).first(kept);
}

} // namespace vex::detail

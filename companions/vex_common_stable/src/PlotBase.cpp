#include <vex_common_stable/PlotBase.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace vex {

namespace {

using Point = QList<QPointF>::const_iterator;

/// The first sample whose x is not below @p x.
Point firstFrom(const QList<QPointF> &points, double x)
{
    return std::lower_bound(points.cbegin(), points.cend(), x,
        [](const QPointF &point, double bound) { return point.x() < bound; });
}

/// The straight line between two samples, at @p x between them. A difference beyond the range of
/// double is formed from parts that lie within.
double lineBetween(const QPointF &left, const QPointF &right, double x)
{
    const double width = right.x() - left.x();
    const double share = std::isfinite(width)
        ? (x - left.x()) / width
        : (0.5 * x - 0.5 * left.x()) / (0.5 * right.x() - 0.5 * left.x());
    const double rise = right.y() - left.y();
    return std::isfinite(rise) ? left.y() + rise * share
                               : left.y() * (1.0 - share) + right.y() * share;
}

double trapezoid(double left, double right, double yLeft, double yRight)
{
    return 0.5 * (yLeft + yRight) * (right - left);
}

/// The same, infinite only when the area itself is beyond the range of double.
double largeTrapezoid(double left, double right, double yLeft, double yRight)
{
    const double sum = yLeft + yRight;
    const double mean = std::isfinite(sum) ? 0.5 * sum : 0.5 * yLeft + 0.5 * yRight;
    const double width = right - left;
    return std::isfinite(width) ? mean * width : mean * (0.5 * right - 0.5 * left) * 2.0;
}

/// The sum of the pieces from @p start to @p end, which lie within the signal.
template <auto piece>
double areaBetween(const QList<QPointF> &points, double start, double end)
{
    // The last sample at or before the start: of several with one x the last begins the next line.
    Point left = std::upper_bound(points.cbegin(), points.cend(), start,
                     [](double bound, const QPointF &point) { return bound < point.x(); })
        - 1;
    double area = 0.0;
    const auto addPart = [&](double from, double to) {
        const Point right = left + 1;
        const double yFrom = from == left->x() ? left->y() : lineBetween(*left, *right, from);
        const double yTo = to == right->x() ? right->y() : lineBetween(*left, *right, to);
        area += piece(from, to, yFrom, yTo);
    };
    if (left->x() < start) { // begins inside a line
        addPart(start, std::min(end, left[1].x()));
        ++left;
    }
    for (; left + 1 != points.cend() && left[1].x() <= end; ++left) {
        if (left[1].x() > left->x())
            area += piece(left->x(), left[1].x(), left->y(), left[1].y());
    }
    if (left + 1 != points.cend() && left->x() < end) // ends inside a line
        addPart(left->x(), end);
    return area;
}

} // namespace

PlotBase::~PlotBase() = default;

double PlotBase::evaluate(double x, int, int) const
{
    const Point right = firstFrom(m_points, x);
    if (right == m_points.cend())
        return 0.0;
    if (right->x() == x)
        return right->y();
    if (right == m_points.cbegin() || !(right->x() > x))
        return 0.0;
    return lineBetween(*(right - 1), *right, x);
}

PlotBase::PairCursor::PairCursor(const PlotBase &a, const PlotBase &b)
    : m_a(a.points())
    , m_b(b.points())
{
}

PlotBase::PairCursor::Place::Place(const QList<QPointF> &points)
    : next(points.constData())
    , begin(next)
    , end(next + points.size())
{
}

template <typename Line>
double PlotBase::PairCursor::Place::goTo(double x, Line line)
{
    // Mostly one step or none: the first is taken without a jump.
    next += next != end && next->x() < x;
    while (next != end && next->x() < x)
        ++next;
    if (next == end)
        return 0.0;
    if (next == begin)
        return next->x() == x ? next->y() : 0.0;
    const double between = line(next[-1], *next, x);
    return next->x() == x ? next->y() : between;
}

void PlotBase::PairCursor::evaluate(const double *x, double *ya, double *yb, qsizetype count)
{
    const auto evaluateAll = [&](Place a, Place b, auto line) {
        for (qsizetype i = 0; i < count; ++i) {
            ya[i] = a.goTo(x[i], line);
            yb[i] = b.goTo(x[i], line);
        }
        return std::pair(a, b);
    };
    // Mostly nothing is beyond the range of double: whether so is seen afterwards.
    double reach = 0.0;
    const auto shortLine = [&reach](const QPointF &left, const QPointF &right, double position) {
        const double width = right.x() - left.x();
        const double rise = right.y() - left.y();
        reach += width + std::fabs(rise);
        return left.y() + rise * ((position - left.x()) / width);
    };
    const auto places = evaluateAll(m_a, m_b, shortLine);
    if (!std::isfinite(reach))
        evaluateAll(m_a, m_b, lineBetween);
    std::tie(m_a, m_b) = places;
}

double PlotBase::computeAreaNoUnitConversion(
    double start, double end, bool, ComputeAreaMethod) const
{
    if (!(start < end) || m_points.size() < 2)
        return 0.0;
    start = std::max(start, m_points.constFirst().x());
    end = std::min(end, m_points.constLast().x());
    if (!(start < end))
        return 0.0;
    const double area = areaBetween<trapezoid>(m_points, start, end);
    return std::isfinite(area) ? area : areaBetween<largeTrapezoid>(m_points, start, end);
}

QPointF PlotBase::getMaxTimeIntensity(double start, double end) const
{
    const QPointF *best = nullptr;
    for (const QPointF &point : m_points) {
        if (point.x() >= start && point.x() <= end
            && (best ? point.y() > best->y() : point.y() == point.y()))
            best = &point;
    }
    return best ? *best : QPointF(0.0, 0.0);
}

} // namespace vex

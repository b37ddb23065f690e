#include <vex_common_stable/PlotBase.h>

#include <algorithm>

namespace vex {

namespace {

using Point = QList<QPointF>::const_iterator;

/// The first sample whose x is not below @p x.
Point firstFrom(const QList<QPointF> &points, double x)
{
    return std::lower_bound(points.cbegin(), points.cend(), x,
        [](const QPointF &point, double bound) { return point.x() < bound; });
}

double trapezoid(double left, double right, double yLeft, double yRight)
{
    return 0.5 * (yLeft + yRight) * (right - left);
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
    const QPointF &left = *(right - 1);
    return left.y() + (right->y() - left.y()) * ((x - left.x()) / (right->x() - left.x()));
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
    // The last sample at or before the start: of several with one x the last begins the next line.
    const Point first = std::upper_bound(m_points.cbegin(), m_points.cend(), start,
                            [](double bound, const QPointF &point) { return bound < point.x(); })
        - 1;
    double area = 0.0;
    const auto addPiece = [&](Point left, double from, double to) {
        const Point right = left + 1;
        const auto valueAt = [&](double x) {
            return left->y()
                + (right->y() - left->y()) * ((x - left->x()) / (right->x() - left->x()));
        };
        const double yFrom = from == left->x() ? left->y() : valueAt(from);
        const double yTo = to == right->x() ? right->y() : valueAt(to);
        area += trapezoid(from, to, yFrom, yTo);
    };
    Point left = first;
    if (left->x() < start) { // begins inside a line
        addPiece(left, start, std::min(end, left[1].x()));
        ++left;
    }
    for (; left + 1 != m_points.cend() && left[1].x() <= end; ++left) {
        if (left[1].x() > left->x())
            area += trapezoid(left->x(), left[1].x(), left->y(), left[1].y());
    }
    if (left + 1 != m_points.cend() && left->x() < end) // ends inside a line
        addPiece(left, left->x(), end);
    return area;
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

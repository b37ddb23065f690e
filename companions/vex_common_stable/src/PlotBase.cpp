#include <vex_common_stable/PlotBase.h>

#include <algorithm>
#include <cmath>

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

PlotBase::PairValues::Samples::Samples(const QList<QPointF> &points)
    : begin(points.constData())
    , end(begin + points.size())
{
}

template <typename Line>
double PlotBase::PairValues::Samples::valueAt(double x, const QPointF *next, Line line) const
{
    if (next == end)
        return 0.0;
    if (next->x() == x)
        return next->y();
    return next == begin ? 0.0 : line(next[-1], *next, x);
}

PlotBase::PairValues::PairValues(const PlotBase &a, const PlotBase &b)
    : m_samples{Samples(a.points()), Samples(b.points())}
{
}

void PlotBase::PairValues::evaluate(const double *x, const QPointF *const *nextA,
    const QPointF *const *nextB, double *ya, double *yb, qsizetype count) const
{
    double *const y[] = {ya, yb};
    const auto evaluateAll = [&](auto line) {
        for (qsizetype i = 0; i < count; ++i) {
            const QPointF *const next[] = {nextA[i], nextB[i]};
            // The signal whose sample comes first has it at the position itself, as a rule, and the
            // other one a line. Told apart before, each goes its way in every round: the processor
            // guesses right, and divides once.
            const std::size_t first = !m_samples[0].isEnd(next[0]) && !m_samples[1].isEnd(next[1])
                ? next[1]->x() < next[0]->x()
                : m_samples[0].isEnd(next[0]);
            const std::size_t second = 1 - first;
            y[first][i] = m_samples[first].valueAt(x[i], next[first], line);
            y[second][i] = m_samples[second].valueAt(x[i], next[second], line);
        }
    };
    // Mostly nothing is beyond the range of double: whether so is seen afterwards.
    double reach = 0.0;
    evaluateAll([&reach](const QPointF &left, const QPointF &right, double position) {
        const double width = right.x() - left.x();
        const double rise = right.y() - left.y();
        reach += width + std::fabs(rise);
        return left.y() + rise * ((position - left.x()) / width);
    });
    if (!std::isfinite(reach))
        evaluateAll(lineBetween);
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

void PlotBase::AreaSum::add(const double *x, const double *y, qsizetype count)
{
    if (count == 0)
        return;
    const auto sumOf = [&](auto piece) {
        double area = m_isBegun ? m_area + piece(m_lastX, x[0], m_lastY, y[0]) : 0.0;
        for (qsizetype i = 1; i < count; ++i)
            area += piece(x[i - 1], x[i], y[i - 1], y[i]);
        return area;
    };
    // A sum that is finite has no piece for which the other form gives anything else.
    const double area = sumOf(trapezoid);
    m_area = std::isfinite(area) ? area : sumOf(largeTrapezoid);
    m_isBegun = true;
    m_lastX = x[count - 1];
    m_lastY = y[count - 1];
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

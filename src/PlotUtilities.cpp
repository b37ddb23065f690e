#include <vex/PlotUtilities.h>

#include "detail/PlotCorrelation.h"
#include "detail/Trace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace vex::PlotUtilities {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/PlotUtilities"};
namespace at {
constexpr auto intervalUnknown = kSource.line(114);
constexpr auto noDomainToSubtract = kSource.line(144);
constexpr auto noDifference = kSource.line(172);
constexpr auto noDomainToCorrelate = kSource.line(267);
constexpr auto noAreaOfError = kSource.line(326);
constexpr auto tooFewPoints = kSource.line(341); // chosen here
constexpr auto sizesDiffer = kSource.line(342); // chosen here
constexpr auto notComparable = kSource.line(343); // chosen here
} // namespace at

// Given by the interface.
constexpr double kZero = 1e-12; // magnitudes up to here count as 0
constexpr double kSamePosition = 1e-6; // positions closer than this count as one

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Points = QList<QPointF>;

/// Ascending, NaN last: an order for every double.
bool isBefore(double p, double q)
{
    return p < q || (std::isnan(q) && !std::isnan(p));
}

bool isZeroPlot(const PlotBase &plot)
{
    return std::none_of(plot.points().cbegin(), plot.points().cend(),
        [](const QPointF &point) { return std::fabs(point.y()) > kZero; });
}

bool isClose(double p, double q)
{
    return std::fabs(p - q) <= kZero * std::max({1.0, std::fabs(p), std::fabs(q)});
}

/// True when the fast ways below may be taken: ascending and finite, so that nothing computed from
/// the positions is NaN.
bool isAscending(const Points &points)
{
    bool result = points.isEmpty()
        || (std::isfinite(points.constFirst().x()) && std::isfinite(points.constLast().x()));
    for (qsizetype i = 1; i < points.size() && result; ++i)
        result = points[i - 1].x() <= points[i].x(); // false for NaN
    return result;
}

double gapBehind(const QPointF *point)
{
    return std::fabs(point[1].x() - point[0].x());
}

/// The gap that @p count gaps in ascending order have in the middle, the upper one of two.
double medianGap(const QPointF *points, qsizetype count)
{
    const qsizetype middle = count / 2;
    constexpr qsizetype kSample = 1024;
    constexpr qsizetype kMargin = 64; // four times how far off the middle of a sample usually is
    qsizetype below = 0;
    QList<double> gaps(count);
    qsizetype kept = 0;
    if (count > 8 * kSample) {
        // A sample tells between which gaps the middle one lies; only those are looked at.
        std::array<double, kSample> sample;
        for (qsizetype i = 0; i < kSample; ++i)
            sample[std::size_t(i)] = gapBehind(points + i * (count / kSample));
        std::sort(sample.begin(), sample.end(), isBefore);
        const double low = sample[kSample / 2 - kMargin];
        const double high = sample[kSample / 2 + kMargin];
        double *const between = gaps.data();
        for (qsizetype i = 0; i < count; ++i) {
            const double gap = gapBehind(points + i);
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
            gaps[i] = gapBehind(points + i);
    }
    const auto found = gaps.begin() + (middle - below);
    std::nth_element(gaps.begin(), found, gaps.begin() + kept, isBefore);
    return *found;
}

/// Up to four positions, ascending, beyond the ends of signals that do not end at 0.
struct Extension
{
    std::array<double, 4> positions;
    int count = 0;
};

Result<Extension> extensionOf(const Points &a, const Points &b)
{
    Extension extension;
    if (a.size() == 1 && b.size() == 1) {
        extension.positions[0] = (b.constFirst().x() + a.constFirst().x()) * 0.5;
        extension.count = 1;
        return extension;
    }
    const auto ends = {a.constFirst(), a.constLast(), b.constFirst(), b.constLast()};
    if (std::none_of(ends.begin(), ends.end(),
            [](const QPointF &end) { return std::fabs(end.y()) > kZero; }))
        return extension;
    const double lowest = std::min(a.constFirst().x(), b.constFirst().x());
    const double highest = std::max(a.constLast().x(), b.constLast().x());
    PlotBase longer;
    longer.points() = a.size() > b.size() ? a : b;
    auto interval = guessSamplingInterval(longer);
    if (interval.hasError())
        return std::move(interval).error();
    const double dx = interval.value();
    extension.positions = {a.constFirst().x() - dx, a.constLast().x() + dx, b.constFirst().x() - dx,
        b.constLast().x() + dx};
    for (double &position : extension.positions)
        position = std::max(std::min(position, highest), lowest);
    std::sort(extension.positions.begin(), extension.positions.end(), isBefore);
    extension.count = 4;
    return extension;
}

// A position in a list of positions, and one with room for a value.
void setPosition(double *place, double x)
{
    *place = x;
}
void setPosition(QPointF *place, double x)
{
    *place = QPointF(x, 0.0);
}

/// Takes ascending values in and keeps those that removeCloseValues() keeps. Where a value is
/// dropped does not matter to the processor: nothing jumps.
template <typename Place>
class Thinning
{
public:
    explicit Thinning(Place *kept)
        : m_kept(kept)
    {
    }

    void add(double value)
    {
        const bool isKept = m_count == 0 || !(std::fabs(value - m_last) < kSamePosition);
        setPosition(m_kept + m_count, value);
        m_count += isKept;
        m_last = isKept ? value : m_last;
    }

    qsizetype count() const { return m_count; }

private:
    Place *m_kept;
    qsizetype m_count = 0;
    double m_last = 0.0;
};

/// Sorted and thinned positions of two ascending signals: a merge instead of a sort.
template <typename Place>
QList<Place> mergedPositions(const Points &a, const Points &b, const Extension &extension)
{
    QList<Place> result(a.size() + b.size() + extension.count);
    Thinning<Place> thinning(result.data());
    int extended = 0;
    const auto add = [&](double value) {
        while (extended < extension.count && extension.positions[std::size_t(extended)] < value)
            thinning.add(extension.positions[std::size_t(extended++)]);
        thinning.add(value);
    };
    const QPointF *p = a.constData();
    const QPointF *q = b.constData();
    const QPointF *const pEnd = p + a.size();
    const QPointF *const qEnd = q + b.size();
    while (p != pEnd && q != qEnd) {
        const bool takesSecond = q->x() < p->x();
        add(takesSecond ? q->x() : p->x());
        q += takesSecond;
        p += !takesSecond;
    }
    for (; p != pEnd; ++p)
        add(p->x());
    for (; q != qEnd; ++q)
        add(q->x());
    while (extended < extension.count)
        thinning.add(extension.positions[std::size_t(extended++)]);
    result.resize(thinning.count());
    return result;
}

/// The values that PlotBase::evaluate(x, 1, 0) gives at ascending positions, found by going along
/// instead of by a search for each.
class Sweep
{
public:
    explicit Sweep(const Points &points)
        : m_next(points.constData())
        , m_begin(m_next)
        , m_end(m_next + points.size())
    {
    }

    double at(double x)
    {
        // Mostly one step or none: the first is taken without a jump.
        m_next += m_next != m_end && m_next->x() < x;
        while (m_next != m_end && m_next->x() < x)
            ++m_next;
        if (m_next == m_end)
            return 0.0;
        if (m_next == m_begin)
            return m_next->x() == x ? m_next->y() : 0.0;
        const QPointF &left = m_next[-1];
        const double line =
            left.y() + (m_next->y() - left.y()) * ((x - left.x()) / (m_next->x() - left.x()));
        return m_next->x() == x ? m_next->y() : line;
    }

private:
    const QPointF *m_next; // the first point that is not below the last position
    const QPointF *m_begin;
    const QPointF *m_end;
};

double positionOf(double place)
{
    return place;
}
double positionOf(const QPointF &place)
{
    return place.x();
}

/// Calls visit(place, a(x), b(x)) for the place of each position x.
template <typename Place, typename Visitor>
void evaluateBoth(const PlotBase &a, const PlotBase &b, QList<Place> &positions, Visitor visit)
{
    if (isAscending(a.points()) && isAscending(b.points())) {
        Sweep first(a.points());
        Sweep second(b.points());
        for (Place &place : positions) {
            const double x = positionOf(place);
            const double y = first.at(x);
            visit(place, y, second.at(x));
        }
        return;
    }
    for (Place &place : positions) {
        const double x = positionOf(place);
        const double y = a.evaluate(x, 1, 0);
        visit(place, y, b.evaluate(x, 1, 0));
    }
}

/// The positions of mergeDomains(), which has its errors stamped.
template <typename Place>
Result<QList<Place>> commonPositions(const Points &a, const Points &b)
{
    const auto listOf = [](const QList<double> &values) {
        QList<Place> list(values.size());
        for (qsizetype i = 0; i < values.size(); ++i)
            setPosition(&list[i], values[i]);
        return list;
    };
    if (!a.isEmpty() && !b.isEmpty() && isAscending(a) && isAscending(b)) {
        const auto extension = extensionOf(a, b);
        if (extension.hasError())
            return extension.error();
        return mergedPositions<Place>(a, b, extension.value());
    }
    QList<double> positions;
    positions.reserve(a.size() + b.size() + 4);
    for (const Points *points : {&a, &b}) {
        for (const QPointF &point : *points)
            positions.append(point.x());
    }
    if (a.isEmpty() || b.isEmpty())
        return listOf(positions); // Deliberate: as they stand
    const auto extension = extensionOf(a, b);
    if (extension.hasError())
        return extension.error();
    for (int i = 0; i < extension.value().count; ++i)
        positions.append(extension.value().positions[std::size_t(i)]);
    std::sort(positions.begin(), positions.end(), isBefore);
    std::ignore = removeCloseValues(&positions, kSamePosition); // never an error
    return listOf(positions);
}

double areaOf(const PlotBase &plot, double start, double end)
{
    return plot.computeAreaNoUnitConversion(start, end, false, PlotBase::Trapezoid);
}

/// The area under the magnitude of a signal; without a copy where nothing is negative.
double areaOfMagnitude(const PlotBase &plot, double start, double end)
{
    const bool isMagnitude = std::none_of(plot.points().cbegin(), plot.points().cend(),
        [](const QPointF &point) { return point.y() < 0.0; });
    return areaOf(isMagnitude ? plot : PlotUtilities::abs(plot), start, end);
}

/// The relative area of error, from the magnitude of the difference.
double relativeArea(const PlotBase &difference, const PlotBase &a, const PlotBase &b)
{
    const Points &points = difference.points();
    if (points.size() < 2)
        return 0.0;
    const double start = points.constFirst().x();
    const double end = points.constLast().x();
    const double area = areaOf(difference, start, end);
    const double areaA = areaOfMagnitude(a, start, end);
    const double areaB = areaOfMagnitude(b, start, end);
    if (std::fabs(areaA) > kZero && std::fabs(areaB) > kZero)
        return area / std::min(areaA, areaB);
    if (std::fabs(areaA) <= kZero && std::fabs(areaB) <= kZero)
        return 0.0;
    return area / std::max(areaA, areaB);
}

/// Both signals on their common positions, once for all that needs them.
struct Common
{
    qsizetype size = 0;
    double relativeArea = 0.0;
    double correlation = 0.0;
};

Result<Common> compareOnCommonPositions(const PlotBase &a, const PlotBase &b)
{
    auto positions = commonPositions<QPointF>(a.points(), b.points());
    if (positions.hasError())
        return std::move(positions).error();
    PlotBase difference;
    difference.points() = std::move(positions).value();
    const qsizetype size = difference.points().size();
    const auto values = std::make_unique_for_overwrite<double[]>(2 * std::size_t(size));
    double *ya = values.get();
    double *yb = values.get() + size;
    double sumA = 0.0;
    double sumB = 0.0;
    evaluateBoth(a, b, difference.points(), [&](QPointF &point, double yFirst, double ySecond) {
        point.setY(std::fabs(yFirst - ySecond));
        sumA += *ya++ = yFirst;
        sumB += *yb++ = ySecond;
    });
    return Common{size, relativeArea(difference, a, b),
        detail::correlationAround(values.get(), values.get() + size, size, sumA, sumB)};
}

} // namespace

PlotBase abs(const PlotBase &plot)
{
    PlotBase result;
    result.points().resize(plot.points().size());
    std::transform(plot.points().cbegin(), plot.points().cend(), result.points().begin(),
        [](const QPointF &point) { return QPointF(point.x(), std::fabs(point.y())); });
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
    return medianGap(plot.points().constData(), plot.points().size() - 1);
}

Error removeCloseValues(QList<double> *values, double tolerance)
{
    if (values->isEmpty())
        return ErrorCode::NoError;
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
    auto positions = commonPositions<double>(a.points(), b.points());
    if (positions.hasError())
        return detail::stamped(at::intervalUnknown, Q_FUNC_INFO, std::move(positions).error());
    return positions;
}

Result<PlotBase> subtract(const PlotBase &a, const PlotBase &b, double tolerance)
{
    auto positions = commonPositions<QPointF>(a.points(), b.points());
    if (positions.hasError()) // the same failure, by the way that names every level
        return detail::stamped(
            at::noDomainToSubtract, Q_FUNC_INFO, mergeDomains(a, b, tolerance).error());
    PlotBase result;
    result.points() = std::move(positions).value();
    evaluateBoth(
        a, b, result.points(), [](QPointF &point, double ya, double yb) { point.setY(ya - yb); });
    return result;
}

Result<double> relativeAreaOfError(const PlotBase &a, const PlotBase &b, double tolerance)
{
    auto difference = subtract(a, b, tolerance);
    if (difference.hasError())
        return detail::stamped(at::noDifference, Q_FUNC_INFO, std::move(difference).error());
    PlotBase magnitude = std::move(difference).value();
    for (QPointF &point : magnitude.points())
        point.setY(std::fabs(point.y()));
    return relativeArea(magnitude, a, b);
}

Result<double> pearsonsCorrelation(const PlotBase &a, const PlotBase &b)
{
    auto domain = mergeDomains(a, b, kSamePosition);
    if (domain.hasError())
        return detail::stamped(at::noDomainToCorrelate, Q_FUNC_INFO, std::move(domain).error());
    QList<double> first = std::move(domain).value(); // each position makes room for its value
    const auto second = std::make_unique_for_overwrite<double[]>(std::size_t(first.size()));
    double *yb = second.get();
    double sumA = 0.0;
    double sumB = 0.0;
    evaluateBoth(a, b, first, [&](double &place, double yFirst, double ySecond) {
        sumA += place = yFirst;
        sumB += *yb++ = ySecond;
    });
    return detail::correlationAround(first.constData(), second.get(), first.size(), sumA, sumB);
}

Result<bool> plotSame(const PlotBase &a, const PlotBase &b, double, double maxRelativeAreaOfError,
    double minCorrelation)
{
    const bool isZeroA = isZeroPlot(a); // an empty signal is one
    const bool isZeroB = isZeroPlot(b);
    if (isZeroA || isZeroB)
        return isZeroA && isZeroB;
    const auto common = compareOnCommonPositions(a, b);
    if (common.hasError()) // the same failure, by the way that names every level
        return detail::stamped(
            at::noAreaOfError, Q_FUNC_INFO, relativeAreaOfError(a, b, kSamePosition).error());
    return !(common.value().relativeArea > maxRelativeAreaOfError)
        && !(minCorrelation > common.value().correlation);
}

Result<SignalVerdict> compareSignals(
    const PlotBase &a, const PlotBase &b, double maxRelativeAreaOfError, double minCorrelation)
{
    const bool isZeroA = isZeroPlot(a);
    const bool isZeroB = isZeroPlot(b);
    const auto common = compareOnCommonPositions(a, b);
    if (common.hasError() && !isZeroA && !isZeroB)
        return detail::stamped(at::notComparable, Q_FUNC_INFO, common.error());
    const Common measures = common.valueOr({0, kNaN, kNaN});
    SignalVerdict verdict;
    verdict.relativeAreaOfError = measures.relativeArea;
    verdict.correlation = measures.correlation;
    verdict.domainSize = measures.size;
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
    else if (measures.relativeArea > maxRelativeAreaOfError)
        verdict.rule = SignalVerdict::AreaOfError;
    else if (minCorrelation > measures.correlation)
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

namespace vex {

double detail::correlationAround(
    const double *x, const double *y, qsizetype count, double sumX, double sumY)
{
    if (count == 0)
        return 0.0;
    const double meanX = sumX / static_cast<double>(count);
    const double meanY = sumY / static_cast<double>(count);
    // Sums side by side, each in the order of the list.
    double sxy = 0.0;
    double sxx = 0.0;
    double syy = 0.0;
    for (qsizetype i = 0; i < count; ++i) {
        const double dx = x[i] - meanX;
        const double dy = y[i] - meanY;
        sxy += dx * dy;
        sxx += dx * dx;
        syy += dy * dy;
    }
    if (std::fabs(sxx) <= PlotUtilities::kZero || std::fabs(syy) <= PlotUtilities::kZero)
        return 0.0;
    return sxy / std::sqrt(sxx * syy);
}

Result<double> detail::correlationOf(const QList<double> &x, const QList<double> &y)
{
    if (x.size() != y.size()) {
        return detail::stamped(PlotUtilities::at::sizesDiffer, Q_FUNC_INFO,
            Error(ErrorCode::InvalidInput,
                u"Cannot calculate correlation of different sized vectors."_s));
    }
    double sumX = 0.0;
    double sumY = 0.0;
    for (qsizetype i = 0; i < x.size(); ++i) {
        sumX += x[i];
        sumY += y[i];
    }
    return correlationAround(x.constData(), y.constData(), x.size(), sumX, sumY);
}

} // namespace vex

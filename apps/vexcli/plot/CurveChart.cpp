#include "plot/Charts.h"
#include "plot/Picture.h"
#include "plot/Style.h"

#include <QAreaSeries>
#include <QGraphicsScene>
#include <QLineSeries>
#include <QScatterSeries>

#include <algorithm>
#include <cmath>

namespace vexcli {

namespace {

constexpr double kLowerPanel = 220.0; // height of a second panel, points
constexpr QColor kRegionColour(0xc6, 0xdf, 0xf0);
constexpr QColor kDotColour(0xd5, 0x5e, 0x00);
constexpr double kLargest = 1e300; // what lies beyond is drawn there: the axes need room

struct Bounds
{
    double left = kLargest;
    double right = -kLargest;
    double low = 0.0; // the axis holds 0
    double high = 0.0;
};

/// The extremes of a panel; what is not a number has no place in it.
Bounds boundsOf(const PlottedPanel &panel)
{
    Bounds bounds;
    for (const PlottedCurve &curve : panel.curves) {
        for (const QPointF &point : curve.points) {
            bounds.left = std::min(bounds.left, point.x());
            bounds.right = std::max(bounds.right, point.x());
            bounds.low = std::min(bounds.low, point.y());
            bounds.high = std::max(bounds.high, point.y());
        }
    }
    bounds.left = std::max(bounds.left, -kLargest);
    bounds.right = std::min(bounds.right, kLargest);
    bounds.low = std::max(bounds.low, -kLargest);
    bounds.high = std::min(bounds.high, kLargest);
    return bounds;
}

/// Adds what can be told apart to @p line: of each run of points the ends and the extremes.
void addThinned(QLineSeries *line, const QList<QPointF> &points)
{
    constexpr qsizetype kRuns = 1600;
    const auto add = [line](const QPointF &point) {
        line->append(point.x(), std::clamp(point.y(), -kLargest, kLargest));
    };
    const bool isThin = points.size() <= 4 * kRuns;
    const qsizetype runs = isThin ? points.size() : kRuns;
    for (qsizetype run = 0; run < runs; ++run) {
        const qsizetype end = points.size() * (run + 1) / runs;
        QList<qsizetype> kept; // first, lowest, highest, last
        for (qsizetype i = points.size() * run / runs; i < end; ++i) {
            const double y = points[i].y();
            if (std::isnan(y))
                continue;
            if (kept.isEmpty())
                kept = {i, i, i, i};
            if (y < points[kept[1]].y())
                kept[1] = i;
            if (y > points[kept[2]].y())
                kept[2] = i;
            kept[3] = i;
        }
        std::sort(kept.begin(), kept.end());
        kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
        for (const qsizetype i : std::as_const(kept))
            add(points[i]);
    }
}

/// Widens a range without length, or too short to be divided, and leaves room at its ends.
void addMargin(double *from, double *to, double share)
{
    const double largest = std::max(std::fabs(*from), std::fabs(*to));
    if (!(*to - *from > std::max(1.0 / kLargest, 1e-12 * largest))) {
        const double margin = std::max(0.5, 0.01 * std::fabs(*from));
        *from -= margin;
        *to += margin;
        return;
    }
    const double margin = share * (*to - *from);
    *from -= *from == 0.0 ? 0.0 : margin;
    *to += *to == 0.0 ? 0.0 : margin;
}

/// @p points, each between two so far below 0 that the line from one to the next is not seen.
QList<QPointF> sticksOf(const QList<QPointF> &points)
{
    double below = 0.0;
    for (const QPointF &point : points)
        below = std::min(below, -point.y());
    QList<QPointF> sticks;
    for (const QPointF &point : points)
        sticks << QPointF(point.x(), below) << point << QPointF(point.x(), below);
    return sticks;
}

bool isStick(const PlottedCurve &curve)
{
    return curve.shape == PlottedCurve::Sticks;
}

QLineSeries *makeCurve(const PlottedCurve &curve, const QColor &colour, double width)
{
    const bool isLine = !isStick(curve);
    auto *line = new QLineSeries;
    addThinned(line, isLine ? curve.points : sticksOf(curve.points));
    line->setPen(QPen(colour, width, Qt::SolidLine, isLine ? Qt::SquareCap : Qt::FlatCap));
    line->setPointsVisible(isLine && curve.points.size() == 1);
    return line;
}

QScatterSeries *makeDot(const QPointF &point)
{
    auto *dot = new QScatterSeries;
    dot->append(point);
    dot->setMarkerSize(11.0);
    dot->setColor(kDotColour);
    dot->setBorderColor(Qt::white);
    return dot;
}

QAreaSeries *makeRegion(const QList<QPointF> &points)
{
    auto *edge = new QLineSeries;
    addThinned(edge, points);
    auto *base = new QLineSeries;
    base->append(points.constFirst().x(), 0.0);
    base->append(points.constLast().x(), 0.0);
    auto *region = new QAreaSeries(edge, base);
    edge->setParent(region);
    base->setParent(region);
    region->setPen(Qt::NoPen);
    region->setBrush(kRegionColour);
    return region;
}

/// What a panel shows, from the lowest layer to the highest, and the legend in the same order.
struct Layers
{
    QList<QAbstractSeries *> series;
    QList<LegendEntry> legend;
};

Layers layersOf(const PlottedPanel &panel)
{
    Layers layers;
    const auto add = [&layers](QAbstractSeries *series, const QString &label, QColor colour) {
        layers.series.append(series);
        layers.legend.append({label, colour});
    };
    for (const PlottedMark &mark : panel.marks) {
        if (mark.points.size() > 1)
            add(makeRegion(mark.points), mark.label, kRegionColour);
    }
    const bool hasSticks = std::any_of(panel.curves.begin(), panel.curves.end(), isStick);
    for (qsizetype i = 0; i < panel.curves.size(); ++i) {
        // of two lines the first one broad, so that it is seen also where the second one covers it
        const bool isBroad = i == 0 && panel.curves.size() > 1 && !hasSticks;
        // beside sticks there may be many, and the second colour is that of a dot
        const auto place = static_cast<std::size_t>(isBroad ? 5 : hasSticks && i > 0 ? i + 1 : i);
        const QColor colour(kColours[place % std::size(kColours)]);
        add(makeCurve(panel.curves[i], colour,
                isBroad                        ? 4.0
                    : isStick(panel.curves[i]) ? 2.4
                                               : 1.6),
            panel.curves[i].label, colour);
    }
    for (const PlottedMark &mark : panel.marks) {
        if (mark.points.size() == 1)
            add(makeDot(mark.points.constFirst()), mark.label, kDotColour);
    }
    return layers;
}

} // namespace

QByteArray pictureOf(PlotFormat format, const QString &title, const QString &xTitle,
    const QList<PlottedPanel> &panels)
{
    double left = kLargest;
    double right = -kLargest;
    for (const PlottedPanel &panel : panels) {
        const Bounds bounds = boundsOf(panel);
        left = std::min(left, bounds.left);
        right = std::max(right, bounds.right);
    }
    if (left > right) { // no point at all
        left = 0.0;
        right = 1.0;
    }
    bool hasSticks = false;
    for (const PlottedPanel &panel : panels)
        hasSticks = hasSticks || std::any_of(panel.curves.begin(), panel.curves.end(), isStick);
    addMargin(&left, &right, hasSticks ? 0.03 : 0.0); // a stick at the end is as wide as others
    const Scale x = fittingScale(left, right); // the same one below the other

    QList<Scale> scales;
    double labelRoom = 0.0;
    for (const PlottedPanel &panel : panels) {
        auto [leftmost, rightmost, low, high] = boundsOf(panel);
        addMargin(&low, &high, 0.05);
        scales.append(Scale(low, high, niceStep(high - low, scales.isEmpty() ? 6 : 4)));
        labelRoom = std::max(labelRoom, Captions::labelRoomOf(scales.constLast()));
    }

    QGraphicsScene scene;
    QList<Captions> captions;
    QSizeF size(kPictureSize.width(), 0.0);
    for (qsizetype i = 0; i < panels.size(); ++i) {
        const QRectF area(
            0.0, size.height(), size.width(), i == 0 ? kPictureSize.height() : kLowerPanel);
        size.rheight() += area.height();
        const Layers layers = layersOf(panels[i]);
        captions.append(
            Captions(area, i == 0 ? title : QString(), layers.legend, LegendPlace::Top));
        captions[i].addAxes({xTitle, panels[i].yTitle}, x, scales[i], labelRoom);
        addChart(&scene, captions[i].plotArea(), x, scales[i], layers.series);
    }
    return render(format, size, title, &scene, captions);
}

} // namespace vexcli

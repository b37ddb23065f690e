#include "output/Plot.h"

#include "Failure.h"

#include <QApplication>
#include <QAreaSeries>
#include <QBuffer>
#include <QChart>
#include <QGraphicsLayout>
#include <QGraphicsScene>
#include <QImage>
#include <QLegend>
#include <QLineSeries>
#include <QPainter>
#include <QScatterSeries>
#include <QSvgGenerator>
#include <QValueAxis>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr QSizeF kSize(800.0, 500.0); // points
constexpr double kPngScale = 2.0; // sharp on paper and on dense screens
constexpr double kLowerPanel = 220.0; // height of a second panel, points
constexpr double kLargest = 1e300; // what lies beyond is drawn there: the axes need room
constexpr double kVisibleShare = 1e-3; // of the highest peak: where the axis ends
// Okabe and Ito's palette: distinct for readers with colour-blindness too
constexpr QRgb kColours[] = {
    0xff0072b2, 0xffd55e00, 0xff009e73, 0xffcc79a7, 0xffe69f00, 0xff56b4e9};
// From dark to light, also in print without colours; no lighter than what stands out from white
constexpr std::array<QRgb, 5> kRamp{0xff2d0b59, 0xff7a1d6d, 0xffbc3754, 0xffed6925, 0xfff9b208};

struct Range
{
    int first;
    int last;
};

double highestShare(const PlottedPattern &pattern)
{
    const auto highest = std::max_element(pattern.shares.begin(), pattern.shares.end());
    return highest == pattern.shares.end() ? 0.0 : *highest;
}

/// The shifts between which some pattern is high enough to be seen.
Range visibleShifts(const QList<PlottedPattern> &patterns)
{
    Range range{std::numeric_limits<int>::max(), 0};
    for (const PlottedPattern &pattern : patterns) {
        const double highest = highestShare(pattern);
        for (int i = 0; i < pattern.shares.size(); ++i) {
            if (pattern.shares[i] > kVisibleShare * highest) {
                range.first = std::min(range.first, i);
                range.last = std::max(range.last, i);
            }
        }
    }
    return range.first <= range.last ? range : Range{0, 0};
}

QFont font(double size, bool bold = false)
{
    QFont result(u"DejaVu Sans"_s);
    result.setPixelSize(static_cast<int>(size));
    result.setBold(bold);
    return result;
}

/// The smallest of 1, 2, 5, 10, ... that cuts length into at most parts pieces.
double niceStep(double length, int parts)
{
    const double power = std::pow(10.0, std::floor(std::log10(length / parts)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (length / (factor * power) <= parts)
            return factor * power;
    }
    return 10.0 * power;
}

QValueAxis *makeAxis(
    const QString &title, double from, double to, double step, const QString &format)
{
    auto *axis = new QValueAxis;
    axis->setTitleText(title);
    axis->setRange(from, to);
    axis->setTickType(QValueAxis::TicksDynamic);
    axis->setTickAnchor(0.0);
    axis->setTickInterval(step);
    axis->setLabelFormat(format);
    axis->setLabelsFont(font(13.0));
    axis->setTitleFont(font(14.0));
    axis->setLabelsColor(Qt::black);
    axis->setTitleBrush(Qt::black);
    axis->setLinePen(QPen(Qt::black, 1.0));
    axis->setGridLineColor(QColor(0xe0, 0xe0, 0xe0));
    return axis;
}

/// Bars at every shift, each of the given width.
QAreaSeries *makeBars(const PlottedPattern &pattern, Range shifts, double offset, double width)
{
    auto *outline = new QLineSeries;
    for (int i = shifts.first; i <= shifts.last && i < pattern.shares.size(); ++i) {
        const double left = i + offset - width / 2.0;
        const double percent = 100.0 * pattern.shares[i];
        outline->append(left, 0.0);
        outline->append(left, percent);
        outline->append(left + width, percent);
        outline->append(left + width, 0.0);
    }
    auto *bars = new QAreaSeries(outline);
    outline->setParent(bars);
    bars->setPen(Qt::NoPen);
    return bars;
}

/// The colour of kRamp at @p position, 0 to 1.
QColor rampColour(double position)
{
    const double place = position * (kRamp.size() - 1);
    const auto index = std::min(static_cast<std::size_t>(place), kRamp.size() - 2);
    const double weight = place - static_cast<double>(index);
    const auto mixed = [&](int (*part)(QRgb)) {
        return qRound((1.0 - weight) * part(kRamp[index]) + weight * part(kRamp[index + 1]));
    };
    return {mixed(qRed), mixed(qGreen), mixed(qBlue)};
}

/// The pattern as one line with a dot for each peak.
QLineSeries *makeLine(const PlottedPattern &pattern, Range shifts, const QColor &colour)
{
    auto *line = new QLineSeries;
    for (int i = shifts.first; i <= shifts.last && i < pattern.shares.size(); ++i)
        line->append(i, 100.0 * pattern.shares[i]);
    line->setPen(QPen(colour, 2.0));
    line->setPointsVisible(shifts.last - shifts.first < 60);
    return line;
}

void fillChart(
    QChart *chart, const QString &title, const QList<PlottedPattern> &patterns, PlotStyle style)
{
    const Range shifts = visibleShifts(patterns);
    double highest = 0.0;
    for (const PlottedPattern &pattern : patterns)
        highest = std::max(highest, highestShare(pattern));
    const double top = highest > 0.0 ? 105.0 * highest : 1.0;

    const double margin = style == PlotStyle::Lines ? 0.5 : 1.0;
    const double width = shifts.last - shifts.first + 2;
    auto *xAxis = makeAxis(u"nominal mass above the monoisotopic peak / Da"_s,
        shifts.first - margin, shifts.last + margin, std::max(1.0, niceStep(width, 12)), u"%.0f"_s);
    const double step = niceStep(top, 6);
    auto *yAxis = makeAxis(u"share of the whole signal / %"_s, 0.0, top, step,
        step < 0.1       ? u"%.2f"_s
            : step < 1.0 ? u"%.1f"_s
                         : u"%.0f"_s);
    chart->addAxis(xAxis, Qt::AlignBottom);
    chart->addAxis(yAxis, Qt::AlignLeft);

    const auto count = static_cast<double>(patterns.size());
    const double slot = (patterns.size() > 1 ? 0.85 : 0.35) / count; // of a shift, for one bar
    for (qsizetype i = 0; i < patterns.size(); ++i) {
        QAbstractSeries *series = nullptr;
        if (style == PlotStyle::Lines) {
            series = makeLine(patterns[i], shifts,
                rampColour(static_cast<double>(i) / std::max(1.0, count - 1.0)));
        } else {
            const double offset = (static_cast<double>(i) - (count - 1.0) / 2.0) * slot;
            QAreaSeries *bars = makeBars(patterns[i], shifts, offset, slot);
            bars->setBrush(QColor(kColours[static_cast<std::size_t>(i) % std::size(kColours)]));
            series = bars;
        }
        series->setName(patterns[i].label);
        chart->addSeries(series);
        series->attachAxis(xAxis);
        series->attachAxis(yAxis);
    }

    chart->setTitle(title);
    chart->setTitleFont(font(16.0, true));
    chart->setTitleBrush(Qt::black);
    chart->setBackgroundRoundness(0.0);
    chart->setBackgroundBrush(Qt::white);
    chart->legend()->setVisible(patterns.size() > 1);
    chart->legend()->setFont(font(13.0));
    chart->legend()->setLabelColor(Qt::black);
    chart->legend()->setAlignment(style == PlotStyle::Lines ? Qt::AlignRight : Qt::AlignTop);
    chart->layout()->setContentsMargins(0.0, 0.0, 0.0, 0.0);
    chart->resize(kSize);
}

/// The extremes of a panel.
QRectF boundsOf(const PlottedPanel &panel)
{
    double left = kLargest;
    double right = -kLargest;
    double low = 0.0;
    double high = 0.0;
    for (const PlottedCurve &curve : panel.curves) {
        for (const QPointF &point : curve.points) {
            left = std::min(left, point.x());
            right = std::max(right, point.x());
            low = std::min(low, point.y());
            high = std::max(high, point.y());
        }
    }
    return {QPointF(std::max(left, -kLargest), std::max(low, -kLargest)),
        QPointF(std::min(right, kLargest), std::min(high, kLargest))};
}

/// At most as many points as the plot has room for: of each run the ends and the extremes.
QList<QPointF> thinned(const QList<QPointF> &points)
{
    constexpr qsizetype kRuns = 1600;
    if (points.size() <= 4 * kRuns)
        return points;
    QList<QPointF> kept;
    for (qsizetype run = 0; run < kRuns; ++run) {
        const auto first = points.begin() + points.size() * run / kRuns;
        const auto end = points.begin() + points.size() * (run + 1) / kRuns;
        const auto [low, high] = std::minmax_element(
            first, end, [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); });
        kept += {*first, *std::min(low, high), *std::max(low, high), *(end - 1)};
    }
    return kept;
}

/// Widens a range without length, or too short to be divided, and leaves room at its ends.
void addMargin(double *from, double *to, double share)
{
    if (!(*to - *from > 1.0 / kLargest)) {
        const double margin = std::max(0.5, 0.01 * std::fabs(*from));
        *from -= margin;
        *to += margin;
        return;
    }
    const double margin = share * (*to - *from);
    *from -= *from == 0.0 ? 0.0 : margin;
    *to += *to == 0.0 ? 0.0 : margin;
}

/// An axis whose labels have the digits that its ticks need.
QValueAxis *makeFittingAxis(const QString &title, double from, double to, int parts)
{
    const double step = niceStep(to - from, parts);
    const double largest = std::max(std::fabs(from), std::fabs(to));
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    const bool isLong = largest >= 1e7 || decimals > 5;
    return makeAxis(title, from, to, step, isLong ? u"%.2e"_s : u"%.%1f"_s.arg(decimals));
}

QLineSeries *makeCurve(const QList<QPointF> &points, const QPen &pen)
{
    auto *line = new QLineSeries;
    for (const QPointF &point : thinned(points)) {
        if (!std::isnan(point.y()))
            line->append(point.x(), std::clamp(point.y(), -kLargest, kLargest));
    }
    line->setPen(pen);
    line->setPointsVisible(points.size() == 1);
    return line;
}

QAbstractSeries *makeMark(const PlottedMark &mark)
{
    if (mark.points.size() == 1) {
        auto *dot = new QScatterSeries;
        dot->append(mark.points.constFirst());
        dot->setMarkerSize(11.0);
        dot->setColor(QColor(kColours[1]));
        dot->setBorderColor(Qt::white);
        return dot;
    }
    auto *edge = new QLineSeries;
    edge->append(thinned(mark.points));
    auto *base = new QLineSeries;
    base->append(mark.points.constFirst().x(), 0.0);
    base->append(mark.points.constLast().x(), 0.0);
    auto *region = new QAreaSeries(edge, base);
    edge->setParent(region);
    base->setParent(region);
    region->setPen(Qt::NoPen);
    region->setBrush(QColor(0xc6, 0xdf, 0xf0));
    return region;
}

/// Styles a chart that fills @p area of the picture.
void layOut(QChart *chart, const QString &title, const QRectF &area)
{
    chart->setTitle(title);
    chart->setTitleFont(font(16.0, true));
    chart->setTitleBrush(Qt::black);
    chart->setBackgroundRoundness(0.0);
    chart->setBackgroundBrush(Qt::white);
    chart->legend()->setFont(font(13.0));
    chart->legend()->setLabelColor(Qt::black);
    chart->layout()->setContentsMargins(0.0, 0.0, 0.0, 0.0);
    chart->setPos(area.topLeft());
    chart->resize(area.size());
}

void fillPanel(QChart *chart, const PlottedPanel &panel, const QString &xTitle, double left,
    double right, int yParts)
{
    QRectF bounds = boundsOf(panel);
    double low = bounds.top();
    double high = bounds.bottom();
    addMargin(&low, &high, 0.05);
    auto *xAxis = makeFittingAxis(xTitle, left, right, 10);
    auto *yAxis = makeFittingAxis(panel.yTitle, low, high, yParts);
    chart->addAxis(xAxis, Qt::AlignBottom);
    chart->addAxis(yAxis, Qt::AlignLeft);
    const auto add = [&](QAbstractSeries *series, const QString &label) {
        series->setName(label);
        chart->addSeries(series);
        series->attachAxis(xAxis);
        series->attachAxis(yAxis);
    };
    for (const PlottedMark &mark : panel.marks) {
        if (mark.points.size() > 1)
            add(makeMark(mark), mark.label); // below the curves
    }
    // the first one broad, so that it is seen also where the second one covers it
    for (qsizetype i = 0; i < panel.curves.size(); ++i) {
        const bool isBroad = i == 0 && panel.curves.size() > 1;
        add(makeCurve(panel.curves[i].points,
                QPen(isBroad ? QColor(kColours[5]) : QColor(kColours[i == 0 ? 0 : 1]),
                    isBroad ? 4.0 : 1.6)),
            panel.curves[i].label);
    }
    for (const PlottedMark &mark : panel.marks) {
        if (mark.points.size() == 1)
            add(makeMark(mark), mark.label);
    }
    chart->legend()->setVisible(panel.curves.size() + panel.marks.size() > 1);
    chart->legend()->setAlignment(Qt::AlignTop);
}

vex::Result<QByteArray> render(
    const QString &path, const QString &title, QGraphicsScene *scene, QSizeF size)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const QRectF area(QPointF(0.0, 0.0), size);
    bool isDrawn = false;
    if (path.endsWith(".svg"_L1, Qt::CaseInsensitive)) {
        QSvgGenerator generator;
        generator.setOutputDevice(&buffer);
        generator.setSize(size.toSize());
        generator.setViewBox(area);
        generator.setTitle(title);
        QPainter painter(&generator);
        painter.fillRect(area, Qt::white);
        scene->render(&painter, area, area);
        isDrawn = painter.end();
    } else {
        QImage image((size * kPngScale).toSize(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        scene->render(&painter, QRectF(image.rect()), area);
        isDrawn = painter.end() && image.save(&buffer, "PNG");
    }
    if (!isDrawn)
        return failure(u"cannot draw %1"_s.arg(path));
    return buffer.data();
}

} // namespace

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, bool needsPlot)
{
    if (!needsPlot)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen"); // draws without a display
    // What Qt warns of here (no runtime folder) concerns desktops.
    const QtMessageHandler usual =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
            if (type == QtCriticalMsg || type == QtFatalMsg)
                std::fprintf(stderr, "vex: %s\n", qUtf8Printable(text));
        });
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    return application;
}

vex::Error checkPlotPath(const QString &path)
{
    if (path.endsWith(".svg"_L1, Qt::CaseInsensitive)
        || path.endsWith(".png"_L1, Qt::CaseInsensitive))
        return vex::ErrorCode::NoError;
    return usageFailure(u"the plot '%1' must end in .svg or .png"_s.arg(path));
}

vex::Result<QByteArray> drawPatterns(const QString &path, const QString &title,
    const QList<PlottedPattern> &patterns, PlotStyle style)
{
    QGraphicsScene scene;
    auto *chart = new QChart; // owned by the scene
    scene.addItem(chart);
    fillChart(chart, title, patterns, style);
    return passedOn(render(path, title, &scene, kSize));
}

vex::Result<QByteArray> drawCurves(const QString &path, const QString &title, const QString &xTitle,
    const QList<PlottedPanel> &panels)
{
    double left = kLargest;
    double right = -kLargest;
    for (const PlottedPanel &panel : panels) {
        const QRectF bounds = boundsOf(panel);
        left = std::min(left, bounds.left());
        right = std::max(right, bounds.right());
    }
    addMargin(&left, &right, 0.0);
    const double lower = panels.size() > 1 ? kLowerPanel : 0.0; // height of the second one
    const QSizeF size(kSize.width(), kSize.height() + lower);
    QGraphicsScene scene;
    QList<QChart *> charts; // owned by the scene
    double margin = 0.0;
    for (qsizetype i = 0; i < panels.size(); ++i) {
        const bool isFirst = i == 0;
        charts.append(new QChart);
        scene.addItem(charts[i]);
        fillPanel(charts[i], panels[i], xTitle, left, right, isFirst ? 6 : 4);
        layOut(charts[i], isFirst ? title : QString(),
            isFirst ? QRectF(QPointF(0.0, 0.0), kSize)
                    : QRectF(0.0, kSize.height(), kSize.width(), lower));
        margin = std::max(margin, charts[i]->plotArea().left());
    }
    for (QChart *chart : std::as_const(charts)) { // the same x one below the other
        QMargins margins = chart->margins();
        margins.setLeft(margins.left() + qRound(margin - chart->plotArea().left()));
        chart->setMargins(margins);
        chart->layout()->activate();
    }
    return passedOn(render(path, title, &scene, size));
}

} // namespace vexcli

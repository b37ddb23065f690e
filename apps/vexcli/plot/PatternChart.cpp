#include "plot/Charts.h"
#include "plot/Picture.h"
#include "plot/Style.h"

#include <QAreaSeries>
#include <QGraphicsScene>
#include <QLineSeries>

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kVisibleShare = 1e-3; // of the highest peak: where the axis ends
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

/// Bars at every shift, each of the given width.
QAreaSeries *makeBars(
    const PlottedPattern &pattern, Range shifts, double offset, double width, const QColor &colour)
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
    bars->setBrush(colour);
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

QColor colourOf(qsizetype index, qsizetype count, PlotStyle style)
{
    if (style == PlotStyle::Lines)
        return rampColour(
            static_cast<double>(index) / std::max(1.0, static_cast<double>(count - 1)));
    const auto place = static_cast<std::size_t>(index);
    const QColor colour(kColours[place % std::size(kColours)]);
    return place < std::size(kColours) ? colour : colour.darker(200); // a second round
}

QList<QAbstractSeries *> layersOf(
    const QList<PlottedPattern> &patterns, Range shifts, PlotStyle style)
{
    QList<QAbstractSeries *> layers;
    const auto count = static_cast<double>(patterns.size());
    const double slot = (patterns.size() > 1 ? 0.85 : 0.35) / count; // of a shift, for one bar
    for (qsizetype i = 0; i < patterns.size(); ++i) {
        const QColor colour = colourOf(i, patterns.size(), style);
        if (style == PlotStyle::Lines) {
            layers.append(makeLine(patterns[i], shifts, colour));
        } else {
            const double offset = (static_cast<double>(i) - (count - 1.0) / 2.0) * slot;
            layers.append(makeBars(patterns[i], shifts, offset, slot, colour));
        }
    }
    return layers;
}

} // namespace

QByteArray pictureOf(
    PlotFormat format, const QString &title, const QList<PlottedPattern> &patterns, PlotStyle style)
{
    const Range shifts = visibleShifts(patterns);
    double highest = 0.0;
    QList<LegendEntry> legend;
    for (const PlottedPattern &pattern : patterns) {
        highest = std::max(highest, highestShare(pattern));
        legend.append({pattern.label, colourOf(legend.size(), patterns.size(), style)});
    }
    const double margin = style == PlotStyle::Lines ? 0.5 : 0.8; // bars stand beside their shift
    const double width = shifts.last - shifts.first + 2;
    const Scale x(shifts.first - margin, shifts.last + margin, std::max(1.0, niceStep(width, 12)));
    const double top = highest > 0.0 ? 105.0 * highest : 1.0;
    const Scale y(0.0, top, niceStep(top, 6));

    Captions captions({QPointF(0.0, 0.0), kPictureSize}, title, legend,
        style == PlotStyle::Lines ? LegendPlace::Right : LegendPlace::Top);
    captions.addAxes(
        {u"nominal mass above the monoisotopic peak / Da"_s, u"share of the whole signal / %"_s}, x,
        y, Captions::labelRoomOf(y));
    QGraphicsScene scene;
    addChart(&scene, captions.plotArea(), x, y, layersOf(patterns, shifts, style));
    return render(format, kPictureSize, title, &scene, {captions});
}

} // namespace vexcli

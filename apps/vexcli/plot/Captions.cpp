#include "plot/Captions.h"

#include "plot/Axes.h"
#include "plot/Style.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vexcli {

namespace {

// points
constexpr double kTitleBase = 36.0; // from the top to the base line of the title
constexpr double kLegendBase = 67.0; // and of the first row below it
constexpr double kTextToPlot = 15.0; // from the last base line to the plot area
constexpr double kRightOfPlot = 9.0; // at least; half a label has to stand there
constexpr double kAxisTitle = 21.0; // the room of an axis title
constexpr double kAxisTitleBase = 16.0; // from its upper edge
constexpr double kTickLabel = 23.0; // from the x axis to the titles
constexpr double kTickLabelBase = 17.0; // from the x axis to the base line of the labels
constexpr double kTickToLabel = 7.0; // from the y axis to the labels
constexpr double kRow = 20.0; // of a legend at the top
constexpr double kRightRow = 24.0; // of a legend at the right
constexpr double kRightWidth = 200.0; // the most that a legend takes there
constexpr double kKey = 7.0; // the coloured box
constexpr double kKeyRoom = kKey + 5.0;
constexpr double kGap = 11.0; // between two entries
constexpr qsizetype kMostRows = 4; // of a legend at the top: the chart needs the rest

QFont smallFont()
{
    return plotFont(13.0);
}

/// Of an entry with its key and its distance to the next one.
double widthOf(const LegendEntry &entry)
{
    return kKeyRoom + QFontMetricsF(smallFont()).horizontalAdvance(entry.text) + kGap;
}

double widestOf(const QList<LegendEntry> &legend)
{
    double widest = 0.0;
    for (const LegendEntry &entry : legend)
        widest = std::max(widest, widthOf(entry));
    return widest;
}

} // namespace

Captions::Captions(
    const QRectF &area, const QString &title, const QList<LegendEntry> &legend, LegendPlace place)
    : m_rest(area.adjusted(kMargin, kMargin, -kMargin, -kMargin))
{
    if (!title.isEmpty()) {
        addCentred(title, plotFont(16.0, true), {area.center().x(), area.top() + kTitleBase},
            m_rest.width());
        m_rest.setTop(area.top() + kTitleBase + kTextToPlot);
    }
    if (legend.size() < 2)
        return;
    if (place == LegendPlace::Top)
        placeAtTop(legend, area.top() + (title.isEmpty() ? kTitleBase : kLegendBase));
    else
        placeAtRight(legend);
}

double Captions::labelRoomOf(const Scale &scale)
{
    double room = 0.0;
    for (const QString &label : scale.labels)
        room = std::max(room, QFontMetricsF(smallFont()).horizontalAdvance(label));
    return std::ceil(room);
}

void Captions::addAxes(const AxisTitles &titles, const Scale &x, const Scale &y, double labelRoom)
{
    const QRectF outside = m_rest;
    const double beside = std::max(kRightOfPlot, std::ceil(labelRoomOf(x) / 2.0) - 12.0);
    m_rest.adjust(kAxisTitle + labelRoom + kTickToLabel, 0.0, -beside, -kAxisTitle - kTickLabel);
    const QFont font = smallFont();
    const QFontMetricsF metrics(font);
    for (qsizetype i = 0; i < x.ticks.size(); ++i) {
        const double share = (x.ticks[i] - x.from) / (x.to - x.from);
        addCentred(x.labels[i], font,
            {m_rest.left() + share * m_rest.width(), m_rest.bottom() + kTickLabelBase},
            m_rest.width());
    }
    for (qsizetype i = 0; i < y.ticks.size(); ++i) {
        const double share = (y.ticks[i] - y.from) / (y.to - y.from);
        m_texts.append({{m_rest.left() - kTickToLabel - metrics.horizontalAdvance(y.labels[i]),
                            m_rest.bottom() - share * m_rest.height() + metrics.capHeight() / 2.0},
            y.labels[i], font});
    }
    const QFont titleFont = plotFont(14.0);
    addCentred(titles.x, titleFont,
        {m_rest.center().x(), outside.bottom() - kAxisTitle + kAxisTitleBase}, m_rest.width());
    addCentred(titles.y, titleFont, {outside.left() + kAxisTitleBase, m_rest.center().y()},
        m_rest.height(), true);
}

void Captions::addCentred(
    const QString &text, const QFont &font, QPointF middle, double room, bool isUpward)
{
    const QFontMetricsF metrics(font);
    const QString shown = metrics.elidedText(text, Qt::ElideMiddle, room);
    const double half = metrics.horizontalAdvance(shown) / 2.0;
    m_texts.append(
        {middle - (isUpward ? QPointF(0.0, -half) : QPointF(half, 0.0)), shown, font, isUpward});
}

void Captions::add(const LegendEntry &entry, QPointF start, double width)
{
    m_keys.append({QRectF(start.x(), start.y() - kKey - 1.0, kKey, kKey), entry.colour});
    m_texts.append({{start.x() + kKeyRoom, start.y()},
        QFontMetricsF(smallFont())
            .elidedText(entry.text, Qt::ElideMiddle, width - kKeyRoom - kGap + 0.01),
        smallFont()});
}

void Captions::placeAtTop(const QList<LegendEntry> &legend, double base)
{
    const double room = m_rest.width() + kGap;
    double inOneRow = 0.0;
    for (const LegendEntry &entry : legend)
        inOneRow += widthOf(entry);
    const bool isOneRow = inOneRow <= room;
    // otherwise columns of one width, as many as fit, and enough for the rows
    const double widest = widestOf(legend);
    const qsizetype columns = isOneRow
        ? legend.size()
        : std::max((legend.size() + kMostRows - 1) / kMostRows,
            std::min(legend.size(), static_cast<qsizetype>(room / widest)));
    const double column = std::min(widest, room / static_cast<double>(columns));
    const double width = (isOneRow ? inOneRow : column * static_cast<double>(columns)) - kGap;
    const double left = m_rest.center().x() - width / 2.0;
    double x = left;
    for (qsizetype i = 0; i < legend.size(); ++i) {
        if (i > 0 && i % columns == 0) {
            base += kRow;
            x = left;
        }
        const double own = isOneRow ? widthOf(legend[i]) : column;
        add(legend[i], {x, base}, own);
        x += own;
    }
    m_rest.setTop(base + kTextToPlot + 10.0);
}

void Captions::placeAtRight(const QList<LegendEntry> &legend)
{
    const double width = std::min(widestOf(legend), kRightWidth);
    const auto count = static_cast<double>(legend.size());
    const double row = std::min(kRightRow, m_rest.height() / count);
    const double left = m_rest.right() - width + kGap;
    double base = m_rest.center().y() - row * count / 2.0 + row * 0.7;
    for (const LegendEntry &entry : legend) {
        add(entry, {left, base}, width);
        base += row;
    }
    m_rest.setRight(left - kMargin);
}

void Captions::paint(QPainter *painter) const
{
    for (const Key &key : m_keys) {
        painter->setPen(QPen(Qt::black, 1.0));
        painter->setBrush(key.colour);
        painter->drawRect(key.box);
    }
    painter->setPen(Qt::black);
    for (const Text &text : m_texts) {
        painter->save();
        painter->setFont(text.font);
        painter->translate(text.start);
        painter->rotate(text.isUpward ? -90.0 : 0.0);
        painter->drawText(QPointF(0.0, 0.0), text.text);
        painter->restore();
    }
}

} // namespace vexcli

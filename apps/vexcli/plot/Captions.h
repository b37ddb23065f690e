#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QRectF>
#include <QString>

class QPainter;

namespace vexcli {

struct Scale;

struct LegendEntry
{
    QString text;
    QColor colour;
};

enum class LegendPlace {
    Top,
    Right
};

struct AxisTitles
{
    QString x;
    QString y;
};

/// All that is written around a chart, as plain text: the charting library would read titles and
/// legends as HTML and leave out what has no room in one line. A text without room loses its
/// middle.
class Captions
{
public:
    /// Lays title and legend out in @p area. A legend of less than two entries tells nothing and is
    /// left out.
    Captions(const QRectF &area, const QString &title, const QList<LegendEntry> &legend,
        LegendPlace place);

    /// Lays the texts of both axes out in the rest.
    /// @param labelRoom  for the labels of the y axis, at least labelRoomOf(y)
    void addAxes(const AxisTitles &titles, const Scale &x, const Scale &y, double labelRoom);

    /// The width of the widest label.
    static double labelRoomOf(const Scale &scale);

    /// Where the axes meet; valid after addAxes().
    QRectF plotArea() const { return m_rest; }

    /// Draws everything.
    void paint(QPainter *painter) const;

private:
    struct Text
    {
        QPointF start; // on the base line
        QString text;
        QFont font;
        bool isUpward = false;
    };
    struct Key
    {
        QRectF box;
        QColor colour;
    };

    void placeAtTop(const QList<LegendEntry> &legend, double base);
    void placeAtRight(const QList<LegendEntry> &legend);
    void add(const LegendEntry &entry, QPointF start, double width);
    void addCentred(
        const QString &text, const QFont &font, QPointF middle, double room, bool isUpward = false);

    QRectF m_rest; // of the area
    QList<Text> m_texts;
    QList<Key> m_keys;
};

} // namespace vexcli

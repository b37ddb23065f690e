#pragma once

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

class QCoreApplication;

namespace vexcli {

/// One isotope pattern of a plot.
struct PlottedPattern
{
    QString label; // names molecule and mass
    QList<double> shares; // of the whole signal, by nominal mass shift
};

enum class PlotStyle {
    Bars, ///< side by side: reads well for a few patterns
    Lines, ///< one over the other, from dark to light: how the shape moves
};

/// One line of a plot, or the peaks of a spectrum.
struct PlottedCurve
{
    enum Shape {
        Line,
        Sticks ///< from 0 up to each point
    };
    QString label;
    QList<QPointF> points;
    Shape shape = Line;
};

/// A place or a region of a plot that a reader is to look at.
struct PlottedMark
{
    QString label;
    QList<QPointF> points; // one, or the upper edge of a region above 0
};

/// One of the plots that stand one below the other over the same x.
struct PlottedPanel
{
    QString yTitle;
    QList<PlottedCurve> curves;
    QList<PlottedMark> marks;
};

enum class PlotFormat {
    Svg,
    Png
};

/// What the program asks of the module vexplot, which alone links the charting libraries. Texts
/// are plain and hold only characters that can be seen. Nothing throws.
class PlotModule
{
public:
    /// The application object that drawing needs; it needs no display. Null with a @p problem.
    virtual QCoreApplication *makeApplication(int &argc, char **argv, QString *problem) = 0;

    /// The picture; empty when there is not enough memory.
    virtual QByteArray drawPatterns(PlotFormat format, const QString &title,
        const QList<PlottedPattern> &patterns, PlotStyle style) = 0;

    /// The picture; empty when there is not enough memory.
    virtual QByteArray drawCurves(PlotFormat format, const QString &title, const QString &xTitle,
        const QList<PlottedPanel> &panels) = 0;

protected:
    ~PlotModule() = default; // lives as long as the process
};

/// The only symbol that leaves the module: a function of this type.
inline constexpr char kPlotEntry[] = "vexPlotModule";
using PlotEntry = PlotModule *(*)();

} // namespace vexcli

#pragma once

#include <QCoreApplication>
#include <QList>
#include <QPointF>
#include <QString>

#include <memory>
#include <optional>

#include <vex/Error.h>
#include <vex/Result.h>

namespace vexcli {

/// One isotope pattern of a plot.
struct PlottedPattern
{
    QString label; // names molecule and mass
    QList<double> shares; // of the whole signal, by nominal mass shift
};

/// The application object of the process; one that can draw when @p needsPlot, without a display.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, bool needsPlot);

/// Fails when this build cannot draw, or when the ending of @p path is neither .svg nor .png.
vex::Error checkPlotPath(const QString &path);

enum class PlotStyle {
    Bars, ///< side by side: reads well for a few patterns
    Lines, ///< one over the other, from dark to light: how the shape moves
};

/// Draws the patterns over the nominal mass shift, in the format that @p path ends with.
vex::Result<QByteArray> drawPatterns(const QString &path, const QString &title,
    const QList<PlottedPattern> &patterns, PlotStyle style);

/// One line of a plot.
struct PlottedCurve
{
    QString label;
    QList<QPointF> points;
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

/// Draws one or two panels in the format that @p path ends with. Curves of more points than can be
/// told apart are thinned; their extremes stay.
vex::Result<QByteArray> drawCurves(const QString &path, const QString &title, const QString &xTitle,
    const QList<PlottedPanel> &panels);

} // namespace vexcli

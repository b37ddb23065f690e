#pragma once

#include "plot/PlotModule.h"

#include <QCoreApplication>

#include <memory>

#include <vex/Error.h>
#include <vex/Result.h>

namespace vexcli {

/// The application object of the process, one that can draw when @p needsPlot: then the drawing
/// module is loaded, and no display, argument or setting of Qt has a say. Fails when the module
/// is missing or cannot start.
vex::Result<std::shared_ptr<QCoreApplication>> makeApplication(bool needsPlot);

/// Fails when this build cannot draw, or when the ending of @p path is neither .svg nor .png.
vex::Error checkPlotPath(const QString &path);

/// Draws the patterns over the nominal mass shift, in the format that @p path ends with. Texts are
/// drawn as they are; those without room lose their middle. Needs makeApplication(true).
vex::Result<QByteArray> drawPatterns(const QString &path, const QString &title,
    const QList<PlottedPattern> &patterns, PlotStyle style);

/// Draws one or two panels in the format that @p path ends with. Curves of more points than can be
/// told apart are thinned; their extremes stay. Needs makeApplication(true).
vex::Result<QByteArray> drawCurves(const QString &path, const QString &title, const QString &xTitle,
    const QList<PlottedPanel> &panels);

} // namespace vexcli

#pragma once

#include "plot/PlotModule.h"

namespace vexcli {

/// As PlotModule::drawPatterns().
QByteArray pictureOf(PlotFormat format, const QString &title, const QList<PlottedPattern> &patterns,
    PlotStyle style);

/// As PlotModule::drawCurves().
QByteArray pictureOf(PlotFormat format, const QString &title, const QString &xTitle,
    const QList<PlottedPanel> &panels);

} // namespace vexcli

#pragma once

#include "plot/Axes.h"
#include "plot/Captions.h"
#include "plot/PlotModule.h"

class QAbstractSeries;
class QGraphicsScene;

namespace vexcli {

/// Adds a chart without any text: axes around @p plotArea of the picture and the series of
/// @p layers, the lowest first.
void addChart(QGraphicsScene *scene, const QRectF &plotArea, const Scale &x, const Scale &y,
    const QList<QAbstractSeries *> &layers);

/// Draws the charts of @p scene and what is written above and beside them.
/// @return the picture, empty when there is not enough memory
QByteArray render(PlotFormat format, QSizeF size, const QString &title, QGraphicsScene *scene,
    const QList<Captions> &captions);

} // namespace vexcli

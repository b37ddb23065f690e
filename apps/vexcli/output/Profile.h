#pragma once

#include <QList>
#include <QPointF>

namespace vexcli {

/// The spectrum that an instrument of a resolution records of @p peaks: the sum of a Gaussian peak
/// each, which is as high as its peak, and whose full width at half of that is its x divided by
/// @p resolution.
///
/// @param peaks       x, above 0, and height; in any order
/// @param resolution  above 0
/// @return by x, equally close in units of the width, and each peak's own x among them. Where
///     nothing is to be seen there are no samples: a line from 0 to 0.
QList<QPointF> profileOf(QList<QPointF> peaks, double resolution);

} // namespace vexcli

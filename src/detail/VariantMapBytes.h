#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

namespace vex::detail {

/// The bytes that QDataStream makes of @p map.
QByteArray bytesOf(const QMap<QString, QVariant> &map);

/// What QDataStream makes of @p bytes; of bytes that are no map, whatever comes out.
QMap<QString, QVariant> mapFrom(const QByteArray &bytes);

/// Why @p bytes are no map that a reader can trust; empty when they are one.
///
/// Only goes along the bytes: sizes that stand in them cost nothing. What passes is read by
/// mapFrom() with memory in proportion to the bytes.
QString problemOfMap(const QByteArray &bytes);

} // namespace vex::detail

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace vex::detail {

// Texts of Linux, apart from where they are read, since each processor has one of its own.

/// The name of the first processor in /proc/cpuinfo; what identifies it where it has no name. Empty
/// when there is neither.
QString processorIn(const QByteArray &cpuinfo);

/// A value of /proc/meminfo, in bytes. Nothing when it is missing, no number, or 0.
std::optional<qint64> bytesIn(const QByteArray &meminfo, const QByteArray &key);

} // namespace vex::detail

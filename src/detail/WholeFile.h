#pragma once

#include <QByteArray>
#include <QString>

namespace vex::detail {

/// Writes a file that appears whole or not at all, also in the place of another file. What is there
/// and no file, such as a device, a pipe or a folder, stays; links are followed.
/// @return why the file could not be written; empty when it has been
QString writeWholeFile(const QString &path, const QByteArray &content);

} // namespace vex::detail

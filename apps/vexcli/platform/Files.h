#pragma once

#include <QString>

namespace vexcli {

/// How to open @p path when it is a device or a pipe, which is written to as it is and has no file
/// put in its place; empty when it is none.
QString devicePath(const QString &path);

/// The folder of the running program, whatever way it was called; empty when the system does not
/// tell.
QString programFolder();

} // namespace vexcli

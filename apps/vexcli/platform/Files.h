#pragma once

#include <QString>

namespace vexcli {

/// One text for all paths of a file, whether it exists yet or not.
QString fileIdentity(const QString &path);

/// How to open @p path when it is a device or a pipe, which is written to as it is and has no file
/// put in its place; empty when it is none.
QString devicePath(const QString &path);

} // namespace vexcli

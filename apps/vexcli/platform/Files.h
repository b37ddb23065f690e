#pragma once

#include <QString>

namespace vexcli {

/// How to open @p path when it is a device or a pipe, which is written to as it is and has no file
/// put in its place; empty when it is none.
QString devicePath(const QString &path);

/// Reads up to @p most bytes of what there is in a pipe or a terminal, and waits only when there is
/// nothing; QFile would wait for all of them.
/// @return how many there were; 0 at the end, -1 with a @p problem
qint64 readSome(int descriptor, char *data, qint64 most, QString *problem);

/// The folder of the running program, whatever way it was called; empty when the system does not
/// tell.
QString programFolder();

} // namespace vexcli

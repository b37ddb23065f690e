#pragma once

#include <QList>
#include <QString>

#include <vex_common_stable/Export.h>

namespace vex {

// Neither function touches a drive that a dead server could keep from answering.

/// Where the drives of the machine begin, each once, in the order of the names.
///
/// On Windows "C:/" and so on. On Linux the folder that shows a file system that holds files: on a
/// device, in memory, on a server, behind FUSE. Of a local one that several folders show, such as
/// one mounted a second time, the shortest path to its root. Those that hold none, such as /proc,
/// and single files shown from elsewhere are left out, and all that the system keeps below /dev,
/// /proc and /sys, /dev/shm aside.
VEX_COMMON_STABLE_EXPORT QList<QString> driveNames();

/// What kind of drive a name of driveNames() stands for: "fixed", "removable", "network",
/// "optical", "memory" or "unknown", which FUSE is, too.
VEX_COMMON_STABLE_EXPORT QString driveType(const QString &driveName);

} // namespace vex

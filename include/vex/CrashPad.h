#pragma once

#include <QString>

#include <vex/Export.h>

/// Where the reports of crashes are.
namespace CrashPad {

/// The folder that setReportsDirPath() has set. When there is none, "CrashPad" in a folder of the
/// application's name among the data of the user's applications, such as
/// ~/.local/share/NAME/CrashPad. Nothing creates the folder.
VEX_EXPORT QString reportsDirPath();

/// Not locked: an application sets it at its start, before other threads ask.
/// @param path  kept as it is; empty for the default
VEX_EXPORT void setReportsDirPath(const QString &path);

} // namespace CrashPad

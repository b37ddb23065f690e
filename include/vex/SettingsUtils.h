#pragma once

#include <QString>

#include <vex/Export.h>

class QSettings;

namespace vex {

/// Where the applications keep their settings.
namespace SettingsUtils {

/// The path of a settings file in the folder "General", which lies beside the application's folder
/// for local data and so is shared with the other applications of the suite.
///
/// The name "a.ini" gives, for an application Viewer of the organisation Lab on Linux,
/// "~/.local/share/Lab/General/a.ini". Nothing is created.
VEX_EXPORT QString settingsFilePath(const QString &fileName);

/// settingsFilePath() of "servers_configuration.ini".
VEX_EXPORT QString serversConfigurationFilePath();

/// The servers that all applications know, an INI file at serversConfigurationFilePath().
///
/// The same object in every call, until the process ends. It is not locked: threads that share it
/// take turns. The path is that of the first call; set the application's name before.
VEX_EXPORT QSettings &serversConfigurationSettings();

} // namespace SettingsUtils

} // namespace vex

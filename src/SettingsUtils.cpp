#include <vex/SettingsUtils.h>

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace vex {

QString SettingsUtils::settingsFilePath(const QString &fileName)
{
    static const QString kFormat = u"General/%1"_s;
    const QString own = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    // QDir::cdUp() would stay where it is while the user has none of these folders
    return QDir(QDir::cleanPath(own + "/.."_L1)).filePath(kFormat.arg(fileName));
}

QString SettingsUtils::serversConfigurationFilePath()
{
    return settingsFilePath(u"servers_configuration.ini"_s);
}

QSettings &SettingsUtils::serversConfigurationSettings()
{
    static QSettings settings(serversConfigurationFilePath(), QSettings::IniFormat);
    return settings;
}

} // namespace vex

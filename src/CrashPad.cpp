#include <vex/CrashPad.h>

#include "platform/SystemFacts.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace CrashPad {

namespace {

QString &chosenPath()
{
    static QString path;
    return path;
}

/// The application's name, or the program's while there is none.
QString applicationName()
{
    const QString name = QCoreApplication::applicationName();
    return name.isEmpty() ? QFileInfo(vex::detail::programFile()).completeBaseName() : name;
}

} // namespace

QString reportsDirPath()
{
    if (const QString &path = chosenPath(); !path.isEmpty())
        return path;
    return u"%1/%2/CrashPad"_s.arg(
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation), applicationName());
}

void setReportsDirPath(const QString &path)
{
    chosenPath() = path;
}

} // namespace CrashPad

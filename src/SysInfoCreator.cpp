#include <vex/SysInfoCreator.h>

#include <vex/InternalVersion.h>

#include "detail/Companions.h"
#include "detail/ShownText.h"
#include "detail/Trace.h"
#include "detail/WholeFile.h"
#include "platform/SystemFacts.h"

#include <QDir>
#include <QLocale>
#include <QSysInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/SysInfoCreator"};
namespace at {
constexpr auto systemInfoNotWritten = kSource.line(1); // chosen here
constexpr auto applicationInfoNotWritten = kSource.line(2); // chosen here
} // namespace at

bool isWithin(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

/// @p path for somebody else: home as "~", and the user's name as "(user)" where a folder has it.
QString withoutUser(const QString &path)
{
    const QString home = QDir::homePath();
    QStringList names{QDir(home).dirName(), qEnvironmentVariable("USER"),
        qEnvironmentVariable("LOGNAME"), qEnvironmentVariable("USERNAME")};
    names.removeAll(QString());
    const bool isBelowHome = !QDir(home).isRoot() && isWithin(path, home);
    QStringList parts = (isBelowHome ? u'~' + path.sliced(home.size()) : path).split(u'/');
    for (QString &part : parts) {
        if (names.contains(part, Qt::CaseInsensitive))
            part = u"(user)"_s;
    }
    return parts.join(u'/');
}

QList<SystemInfo::Drive> drives()
{
    QList<SystemInfo::Drive> drives;
    const QList<QString> names = driveNames();
    QList<QString> distant; // even the way to what lies below them can be blocked
    for (const QString &name : names) {
        const QString type = driveType(name);
        if (type == "network"_L1 || type == "unknown"_L1)
            distant.append(name);
        drives.append({name, type, false, {}, {}});
    }
    for (SystemInfo::Drive &drive : drives) {
        drive.isSpaceAsked = std::none_of(distant.begin(), distant.end(),
            [&drive](const QString &folder) { return isWithin(drive.name, folder); });
        const detail::Room room =
            drive.isSpaceAsked ? detail::driveRoom(drive.name) : detail::Room();
        drive.bytesTotal = room.total;
        drive.bytesFree = room.free;
        drive.name = withoutUser(drive.name);
    }
    return drives;
}

/// "15.6 GiB (16750372864 bytes)"
QString sizeText(std::optional<qint64> bytes)
{
    if (!bytes)
        return u"unknown"_s;
    QString exact = QString::number(*bytes) + " bytes"_L1;
    constexpr double kStep = 1024.0;
    constexpr double kNext = 1023.95; // reads 1024.0 with one decimal
    static const QStringList units{u"KiB"_s, u"MiB"_s, u"GiB"_s, u"TiB"_s, u"PiB"_s, u"EiB"_s};
    if (*bytes < 1024)
        return exact;
    double size = static_cast<double>(*bytes) / kStep;
    qsizetype unit = 0;
    for (; size >= kNext && unit + 1 < units.size(); ++unit)
        size /= kStep;
    return u"%1 %2 (%3)"_s.arg(QString::number(size, 'f', 1), units[unit], exact);
}

QString line(const QString &name, const QString &value)
{
    return detail::shownText(name) + ": "_L1
        + (value.isEmpty() ? u"unknown"_s : detail::shownText(value)) + u'\n';
}

QString driveLine(const SystemInfo::Drive &drive)
{
    const QString space = drive.isSpaceAsked
        ? u"%1, free %2"_s.arg(sizeText(drive.bytesTotal), sizeText(drive.bytesFree))
        : u"space not asked"_s;
    return line(u"Drive "_s + drive.name, drive.type + ", "_L1 + space);
}

/// Why @p text cannot be written; no error when it has been.
Error written(const QString &path, const QString &text)
{
    const QString reason = detail::writeWholeFile(path, text.toUtf8());
    if (reason.isEmpty())
        return ErrorCode::NoError;
    return Error(ErrorCode::GeneralFailure, QObject::tr("Cannot write %1: %2").arg(path, reason));
}

} // namespace

SystemInfo SysInfoCreator::systemInfo()
{
    const auto known = [](const QString &text) { return text == "unknown"_L1 ? QString() : text; };
    const detail::Room memory = detail::memory();
    SystemInfo info;
    info.osName = known(QSysInfo::prettyProductName());
    info.osVersion = known(QSysInfo::productVersion());
    info.kernel = QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion();
    info.processor = detail::processorName();
    info.logicalProcessors = detail::logicalProcessors();
    info.architecture = QSysInfo::currentCpuArchitecture();
    info.memoryBytesTotal = memory.total;
    info.memoryBytesFree = memory.free;
    info.drives = drives();
    info.locale = QLocale::system().name();
    info.qtVersion = QString::fromLatin1(qVersion());
    return info;
}

QString SysInfoCreator::programPath()
{
    return withoutUser(detail::programFile());
}

QString SysInfoCreator::systemText(const SystemInfo &info)
{
    QString text = line(u"Operating system"_s, info.osName)
        + line(u"Operating system version"_s, info.osVersion) + line(u"Kernel"_s, info.kernel)
        + line(u"Processor"_s, info.processor)
        + line(u"Logical processors"_s,
            info.logicalProcessors ? QString::number(*info.logicalProcessors) : QString())
        + line(u"Architecture"_s, info.architecture)
        + line(u"Memory"_s, sizeText(info.memoryBytesTotal))
        + line(u"Memory free"_s, sizeText(info.memoryBytesFree));
    for (const SystemInfo::Drive &drive : info.drives)
        text += driveLine(drive);
    return text + line(u"Locale"_s, info.locale) + line(u"Qt"_s, info.qtVersion);
}

QString SysInfoCreator::applicationText(const BuildInfoData &build)
{
    return line(u"Version"_s, build.version) + line(u"Program"_s, programPath())
        + line(u"Built from"_s, build.path) + line(u"Branch"_s, build.branch)
        + line(u"Build date (UTC)"_s, build.date) + line(u"Build time (UTC)"_s, build.time)
        + line(u"vex"_s, appInternalVersion().toString());
}

Error SysInfoCreator::writeSystemInfo(const QString &path)
{
    return detail::stamped(
        at::systemInfoNotWritten, Q_FUNC_INFO, written(path, systemText(systemInfo())));
}

Error SysInfoCreator::writeApplicationInfo(const QString &path, const BuildInfoData &build)
{
    return detail::stamped(
        at::applicationInfoNotWritten, Q_FUNC_INFO, written(path, applicationText(build)));
}

} // namespace vex

#include "platform/SystemFacts.h"

#include "detail/LinuxTexts.h"

#include <QFile>

#include <sys/statvfs.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QString processorName()
{
    return processorIn(contentOf(u"/proc/cpuinfo"_s));
}

std::optional<int> logicalProcessors()
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? std::optional(static_cast<int>(count)) : std::nullopt;
}

Room memory()
{
    const QByteArray meminfo = contentOf(u"/proc/meminfo"_s);
    return {bytesIn(meminfo, "MemTotal"), bytesIn(meminfo, "MemAvailable")};
}

Room driveRoom(const QString &drive)
{
    struct statvfs status;
    if (statvfs(QFile::encodeName(drive).constData(), &status) != 0 || status.f_blocks == 0)
        return {};
    const auto bytes = [&status](fsblkcnt_t blocks) {
        return static_cast<qint64>(blocks) * static_cast<qint64>(status.f_frsize);
    };
    return {bytes(status.f_blocks), bytes(status.f_bavail)};
}

QString programFile()
{
    return QFile::symLinkTarget(u"/proc/self/exe"_s);
}

} // namespace vex::detail

#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

std::optional<struct stat> statusOf(const QString &path)
{
    struct stat status;
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    return status;
}

} // namespace

QString fileIdentity(const QString &path)
{
    const auto number = [](const struct stat &status) {
        return u"%1:%2"_s.arg(status.st_dev).arg(status.st_ino);
    };
    if (const auto status = statusOf(path))
        return number(*status);
    const QFileInfo info(path);
    if (const auto folder = statusOf(info.absolutePath()))
        return number(*folder) + u'/' + info.fileName();
    return info.absoluteFilePath();
}

QString devicePath(const QString &path)
{
    const auto status = statusOf(path);
    const bool isDevice = status && !S_ISREG(status->st_mode) && !S_ISDIR(status->st_mode);
    return isDevice ? path : QString();
}

} // namespace vexcli

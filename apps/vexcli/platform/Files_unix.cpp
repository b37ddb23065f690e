#include "platform/Files.h"

#include <QFile>

#include <sys/stat.h>

namespace vexcli {

QString devicePath(const QString &path)
{
    struct stat status;
    const bool isDevice = stat(QFile::encodeName(path).constData(), &status) == 0
        && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
    return isDevice ? path : QString();
}

} // namespace vexcli

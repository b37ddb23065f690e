#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace vexcli {

QString devicePath(const QString &path)
{
    struct stat status;
    const bool isDevice = stat(QFile::encodeName(path).constData(), &status) == 0
        && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
    return isDevice ? path : QString();
}

QString programFolder()
{
    const QString program = QFile::symLinkTarget(u"/proc/self/exe"_s);
    return program.isEmpty() ? QString() : QFileInfo(program).path();
}

} // namespace vexcli

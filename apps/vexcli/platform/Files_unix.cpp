#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vexcli {

QString devicePath(const QString &path)
{
    struct stat status;
    const bool isDevice = stat(QFile::encodeName(path).constData(), &status) == 0
        && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
    return isDevice ? path : QString();
}

qint64 readSome(int descriptor, char *data, qint64 most, QString *problem)
{
    for (;;) {
        const ssize_t got = ::read(descriptor, data, static_cast<std::size_t>(most));
        if (got >= 0)
            return got;
        if (errno != EINTR) {
            *problem = qt_error_string(errno);
            return -1;
        }
    }
}

QString programFolder()
{
    const QString program = QFile::symLinkTarget(u"/proc/self/exe"_s);
    return program.isEmpty() ? QString() : QFileInfo(program).path();
}

} // namespace vexcli

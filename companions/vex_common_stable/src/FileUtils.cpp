#include <vex_common_stable/FileUtils.h>

#include <QDirIterator>

namespace vex {

qint64 FileUtils::dirSize(const QString &folder)
{
    qint64 bytes = 0;
    QDirIterator files(
        folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (files.hasNext())
        bytes += files.nextFileInfo().size();
    return bytes;
}

} // namespace vex

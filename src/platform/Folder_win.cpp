#include "platform/Folder.h"

#include <QFileInfo>

namespace vex::detail {

QList<QString> folderContent(
    const QString &path, QDir::Filters filters, QDirIterator::IteratorFlags flags)
{
    return folderContentByQt(path, filters, flags);
}

QList<FolderEntry> everythingBelow(const QString &path)
{
    QList<FolderEntry> entries;
    QDirIterator content(path,
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (content.hasNext()) {
        const QFileInfo info = content.nextFileInfo();
        const bool isLink = info.isSymbolicLink() || info.isJunction();
        entries.append(
            {info.filePath(), info.isDir() && !isLink, info.isFile() && !isLink ? info.size() : 0});
    }
    return entries;
}

void keepModificationTime(const QString &, const QString &) { } // CopyFile has kept it

} // namespace vex::detail

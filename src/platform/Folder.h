#pragma once

#include <QDirIterator>
#include <QList>
#include <QString>

namespace vex::detail {

/// The paths that QDirIterator gives for these arguments.
inline QList<QString> folderContentByQt(
    const QString &path, QDir::Filters filters, QDirIterator::IteratorFlags flags)
{
    QList<QString> paths;
    QDirIterator content(path, filters, flags);
    while (content.hasNext())
        paths.append(content.next());
    return paths;
}

/// The same paths in the same order, by the fastest way that the system has. Of the filters Dirs,
/// Files and NoDotAndDotDot only, or NoFilter.
QList<QString> folderContent(
    const QString &path, QDir::Filters filters, QDirIterator::IteratorFlags flags);

/// Something in a folder.
struct FolderEntry
{
    QString path; ///< bytes of a name that are no text as \xHH
    bool isFolder; ///< links to folders are none
    qint64 bytes; ///< of a file; 0 otherwise
};

/// Everything below @p path: hidden, no files, no text; folders before what is in them. Links are
/// not followed.
QList<FolderEntry> everythingBelow(const QString &path);

/// Gives @p to the modification time of @p from, as far as the copying has not done it.
void keepModificationTime(const QString &from, const QString &to);

} // namespace vex::detail

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
    /// What it is, symbolic links not followed.
    enum Kind {
        File,
        Folder,
        Link,
        Other, ///< a pipe, a socket, a device
    };

    QString path; ///< bytes of a name that are no text as \xHH
    Kind kind;
    bool isHidden; ///< itself, as the system has it
    bool isText; ///< false: its name is none
    qint64 bytes; ///< of a file; 0 otherwise
};

/// Everything below @p path: hidden, no files, no text; folders before what is in them. Links are
/// not followed.
QList<FolderEntry> everythingBelow(const QString &path);

/// Tells whether somebody has changed a file or put another one in its place: equal texts, no. Size
/// and times as exact as the system has them; empty when there is no such file.
QString fileState(const QString &path);

/// What the system has against a new entry in @p folder; empty when it has nothing, or tells when it
/// is tried.
QString writeProblem(const QString &folder);

/// Copies a file, with its modification time and permissions, so that it gets its name when it is
/// whole, and only if there is nothing of that name.
///
/// @return what went wrong; empty when nothing did
QString copyWhole(const QString &source, const QString &destination);

} // namespace vex::detail

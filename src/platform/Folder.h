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
    bool isHidden; ///< as the system has it, or in a hidden folder
    bool isText; ///< false: its name is none
    qint64 bytes; ///< of a file; 0 otherwise
    QString problem; ///< why what is in a folder could not be listed
};

/// Everything below @p path: hidden, no files, no text; folders before what is in them. Links are
/// not followed.
QList<FolderEntry> everythingBelow(const QString &path);

/// Tells whether somebody has changed a file or put another one in its place.
struct FileState
{
    quint64 volume = 0;
    quint64 number = 0; ///< on that volume
    qint64 bytes = -1; ///< -1: there is no such file
    qint64 written = 0; ///< when its content changed, in the smallest unit that the system has
    qint64 changed = 0; ///< when anything of it changed, which nobody can set; 0 on Windows

    bool operator==(const FileState &) const = default;
};

/// Of a file or a folder, symbolic links followed.
FileState fileState(const QString &path);

/// One text for all paths of a file or a folder, whether it exists yet or not.
QString fileIdentity(const QString &path);

/// What the symbolic link at @p path holds; empty when there is no link.
QString linkText(const QString &path);

/// What became of a file.
enum class Deletion {
    Done,
    Changed, ///< it is not in the state that was given; nothing has been done
    Failed,
};

/// Deletes a file that is still in @p state, with as little as there can be between the look at it
/// and its deletion.
/// @param reason  what the system said when it failed
Deletion deleteUnchanged(const QString &path, const FileState &state, QString *reason);

/// Removes an empty folder.
bool removeFolder(const QString &path);

/// Makes a folder, and what is missing above it.
///
/// @param path  cleaned
/// @param like  what it gets its permissions from, never more than these; its owner may fill it
/// @param made  appended to: what has been made, outermost first, also on failure
/// @return what the system said; empty when nothing went wrong
QString makeFolders(const QString &path, const QString &like, QList<QString> *made);

/// What copyWhole() did.
struct Copy
{
    qint64 bytes = 0; ///< from the beginning of the source to where reading it came to an end
    QString problem; ///< what went wrong, then there is no copy; empty when nothing did
    bool isAtEnd = true; ///< false: the problem is that the source goes on
};

/// Copies a file, with its modification time and permissions, so that it gets its name when it is
/// whole, and only if there is nothing of that name.
Copy copyWhole(const QString &source, const QString &destination);

} // namespace vex::detail

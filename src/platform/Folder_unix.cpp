#include "platform/Folder.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

struct FolderCloser
{
    void operator()(DIR *folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderCloser>;

/// Opens a folder; null when that fails.
Folder opened(const QByteArray &path)
{
    return Folder(opendir(path.constData()));
}

/// @p name as text; nothing when its bytes are none.
std::optional<QString> decoded(const char *name)
{
    const QByteArrayView bytes(name);
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::all_of(bytes.begin(), bytes.end(), isAscii))
        return QString::fromLatin1(bytes);
    QStringDecoder toUtf16(QStringDecoder::System, QStringDecoder::Flag::Stateless);
    QString text = toUtf16(bytes);
    if (toUtf16.hasError())
        return {};
    return text;
}

QString withSeparator(const QString &path)
{
    return path.endsWith(u'/') ? path : path + u'/';
}

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

FileState stateOf(const QByteArray &path)
{
    struct stat status;
    if (stat(path.constData(), &status) != 0)
        return {};
    const auto nanoseconds = [](const timespec &time) {
        return qint64{time.tv_sec} * 1000000000 + time.tv_nsec;
    };
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
        nanoseconds(status.st_ctim)};
}

bool isDots(const char *name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

/// Reads folders as QDirIterator does, which takes twice as long for its QFileInfo of every entry.
class Listing
{
public:
    Listing(QDir::Filters filters, QDirIterator::IteratorFlags flags)
        : m_filters(filters == QDir::NoFilter ? QDir::AllEntries : filters)
        , m_descends(flags.testFlag(QDirIterator::Subdirectories))
    {
    }

    /// Appends what is in a folder; both arguments are its path and end with a slash.
    void add(const QByteArray &path, const QString &text, QList<QString> *paths) const
    {
        const Folder folder = opened(path);
        if (!folder)
            return;
        while (const dirent *entry = readdir(folder.get())) {
            const bool isHidden = entry->d_name[0] == '.';
            if (isHidden && (!isDots(entry->d_name) || m_filters.testFlag(QDir::NoDotAndDotDot)))
                continue;
            const auto name = decoded(entry->d_name);
            if (!name)
                continue; // no path would lead to it
            const Kind kind = kindOf(path, *entry);
            if (isListed(kind))
                paths->append(text + *name);
            if (m_descends && kind == FolderItself && !isHidden)
                add(path + entry->d_name + '/', text + *name + u'/', paths);
        }
    }

private:
    enum Kind {
        FolderItself,
        LinkToFolder,
        File, // or a link to one
        LinkToDevice, // or to a pipe or a socket
        Other, // a device, a pipe, a socket, a link to nothing
    };

    static Kind kindOf(const QByteArray &folder, const dirent &entry)
    {
        if (entry.d_type == DT_REG)
            return File;
        if (entry.d_type == DT_DIR)
            return FolderItself;
        const QByteArray path = folder + entry.d_name;
        struct stat status;
        const bool isLink = lstat(path.constData(), &status) == 0 && S_ISLNK(status.st_mode);
        if (stat(path.constData(), &status) != 0)
            return Other;
        if (S_ISDIR(status.st_mode))
            return isLink ? LinkToFolder : FolderItself;
        return S_ISREG(status.st_mode) ? File : isLink ? LinkToDevice : Other;
    }

    bool isListed(Kind kind) const
    {
        switch (kind) {
        case FolderItself:
        case LinkToFolder:
            return m_filters.testFlag(QDir::Dirs);
        case File:
            return m_filters.testFlag(QDir::Files);
        case LinkToDevice:
            return true; // neither a file nor a folder that a filter could keep out
        case Other:
            break;
        }
        return false;
    }

    QDir::Filters m_filters;
    bool m_descends;
};

/// @p name, its bytes that are no text written as \xHH.
QString escaped(const char *name)
{
    QString text;
    for (const char byte : QByteArrayView(name)) {
        const auto value = static_cast<unsigned char>(byte);
        text += value < 0x80 ? QString(QLatin1Char(byte)) : u"\\x"_s + QString::number(value, 16);
    }
    return text;
}

void addEverything(const QByteArray &path, const QString &text, QList<FolderEntry> *entries)
{
    const Folder folder = opened(path);
    if (!folder)
        return;
    while (const dirent *entry = readdir(folder.get())) {
        struct stat status;
        const char *name = entry->d_name;
        if (isDots(name) || fstatat(dirfd(folder.get()), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        const auto kind = S_ISREG(status.st_mode) ? FolderEntry::File
            : S_ISDIR(status.st_mode)             ? FolderEntry::Folder
            : S_ISLNK(status.st_mode)             ? FolderEntry::Link
                                                  : FolderEntry::Other;
        const auto decodedName = decoded(name);
        entries->append({text + decodedName.value_or(escaped(name)), kind, name[0] == '.',
            decodedName.has_value(), kind == FolderEntry::File ? status.st_size : 0});
        if (kind == FolderEntry::Folder)
            addEverything(path + name + '/', entries->constLast().path + u'/', entries);
    }
}

} // namespace

QList<QString> folderContent(
    const QString &path, QDir::Filters filters, QDirIterator::IteratorFlags flags)
{
    // resources (":/") and search paths ("data:") are known to Qt alone
    if (path.isEmpty() || path.contains(u':') || path.contains(QChar::Null))
        return folderContentByQt(path, filters, flags);
    const QString text = withSeparator(path);
    QList<QString> paths;
    Listing(filters, flags).add(QFile::encodeName(text), text, &paths);
    return paths;
}

QList<FolderEntry> everythingBelow(const QString &path)
{
    const QString text = withSeparator(path);
    QList<FolderEntry> entries;
    addEverything(QFile::encodeName(text), text, &entries);
    return entries;
}

FileState fileState(const QString &path)
{
    return stateOf(QFile::encodeName(path));
}

Deletion deleteUnchanged(const QString &path, const FileState &state, QString *reason)
{
    const QByteArray bytes = QFile::encodeName(path);
    if (stateOf(bytes) != state)
        return Deletion::Changed;
    if (unlink(bytes.constData()) == 0)
        return Deletion::Done;
    *reason = systemText(errno);
    return Deletion::Failed;
}

QString writeProblem(const QString &folder)
{
    const QByteArray path = QFile::encodeName(folder) + "/."; // nothing but a folder
    return access(path.constData(), W_OK | X_OK) == 0 ? QString() : systemText(errno);
}

QString copyWhole(const QString &source, const QString &destination)
{
    // Qt writes a file without a name, or with one of its own, and names it at the end.
    QFile file(source);
    if (!file.copy(destination)) {
        // Qt tells of its last try, elsewhere, or of an unknown error where the system knew it
        if (access(QFile::encodeName(source).constData(), R_OK) != 0)
            return systemText(errno);
        const QString folder = QFileInfo(destination).path();
        if (QString problem = writeProblem(folder); !problem.isEmpty())
            return problem;
        struct statvfs disk;
        const bool isKnown = statvfs(QFile::encodeName(folder).constData(), &disk) == 0;
        const auto size = static_cast<quint64>(std::max<qint64>(file.size(), 0));
        return isKnown && disk.f_bavail * disk.f_frsize < size ? systemText(ENOSPC)
                                                               : file.errorString();
    }
    struct stat status;
    if (stat(QFile::encodeName(source).constData(), &status) == 0) {
        const timespec times[] = {{0, UTIME_OMIT}, status.st_mtim};
        utimensat(AT_FDCWD, QFile::encodeName(destination).constData(), times, 0);
    }
    return {};
}

} // namespace vex::detail

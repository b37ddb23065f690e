#include "platform/Folder.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStringDecoder>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

struct FolderCloser
{
    void operator()(DIR *folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderCloser>;

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
        struct Entry
        {
            QByteArray name;
            QString text;
            Kind kind;
        };
        QList<Entry> entries; // all, so that no folder is open while one below it is read
        if (const Folder folder{opendir(path.constData())}) {
            while (const dirent *entry = readdir(folder.get())) {
                const bool isHidden = entry->d_name[0] == '.';
                if (isHidden
                    && (!isDots(entry->d_name) || m_filters.testFlag(QDir::NoDotAndDotDot)))
                    continue;
                if (auto name = decoded(entry->d_name)) // otherwise no path would lead to it
                    entries.append({entry->d_name, std::move(*name), kindOf(path, *entry)});
            }
        }
        for (const Entry &entry : std::as_const(entries)) {
            if (isListed(entry.kind))
                paths->append(text + entry.text);
            if (m_descends && entry.kind == FolderItself && entry.name[0] != '.')
                add(path + entry.name + '/', text + entry.text + u'/', paths);
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

/// @return what the system said when the folder could not be read
QString addEverything(
    const QByteArray &path, const QString &text, bool isHidden, QList<FolderEntry> *entries)
{
    QList<std::pair<QByteArray, FolderEntry>> found; // all, for the reason that Listing has
    if (const Folder folder{opendir(path.constData())}) {
        while (const dirent *entry = readdir(folder.get())) {
            struct stat status;
            const char *name = entry->d_name;
            if (isDots(name)
                || fstatat(dirfd(folder.get()), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            const auto kind = S_ISREG(status.st_mode) ? FolderEntry::File
                : S_ISDIR(status.st_mode)             ? FolderEntry::Folder
                : S_ISLNK(status.st_mode)             ? FolderEntry::Link
                                                      : FolderEntry::Other;
            const auto decodedName = decoded(name);
            found.append({name,
                {text + decodedName.value_or(escaped(name)), kind, isHidden || name[0] == '.',
                    decodedName.has_value(), kind == FolderEntry::File ? status.st_size : 0, {}}});
        }
    } else {
        return systemText(errno);
    }
    for (const auto &[name, entry] : std::as_const(found)) {
        const qsizetype index = entries->size();
        entries->append(entry);
        if (entry.kind == FolderEntry::Folder)
            (*entries)[index].problem =
                addEverything(path + name + '/', entry.path + u'/', entry.isHidden, entries);
    }
    return {};
}

/// A file that is closed at the end.
class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Repeats a system call that a signal has interrupted.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Copies from where both files stand to where reading comes to an end.
/// @return the number of bytes, or -1
qint64 copyToEnd(int from, int to)
{
    constexpr size_t kBlock = 1 << 18;
    const auto block = std::make_unique_for_overwrite<char[]>(kBlock);
    qint64 bytes = 0;
    for (;;) {
        const ssize_t count = uninterrupted([&] { return read(from, block.get(), kBlock); });
        if (count <= 0)
            return count < 0 ? -1 : bytes;
        for (ssize_t done = 0; done < count;) {
            const ssize_t written = uninterrupted(
                [&] { return write(to, block.get() + done, static_cast<size_t>(count - done)); });
            if (written < 0)
                return -1;
            done += written;
        }
        bytes += count;
    }
}

/// Gives a file that is complete its permissions and its time, and has the system write it out:
/// some errors come as late as that.
bool finished(int file, const struct stat &like)
{
    // what a file system cannot keep is no error
    std::ignore = fchmod(file, like.st_mode & 0777);
    const timespec times[] = {{0, UTIME_OMIT}, like.st_mtim};
    std::ignore = futimens(file, times);
    const bool isWritten =
        uninterrupted([&] { return fdatasync(file); }) == 0 || errno == EINVAL || errno == EROFS;
    const int twin = isWritten ? dup(file) : -1;
    return twin >= 0 && (close(twin) == 0 || errno == EINTR);
}

/// Names a file that has a temporary name, if nothing has that name.
bool named(const QByteArray &part, const QByteArray &name)
{
    if (renameat2(AT_FDCWD, part.constData(), AT_FDCWD, name.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // a file system that cannot do that
    if (link(part.constData(), name.constData()) == 0) {
        unlink(part.constData());
        return true;
    }
    if (errno == EEXIST)
        return false;
    // nor that; an empty file of our own keeps others from the name
    const int ours = open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (ours < 0)
        return false;
    close(ours);
    if (rename(part.constData(), name.constData()) == 0)
        return true;
    const int error = errno;
    unlink(name.constData());
    errno = error;
    return false;
}

/// The system's error number; 0 when the folder has been made.
int makeAll(const QByteArray &path, mode_t mode, QList<QString> *all)
{
    if (mkdir(path.constData(), mode) != 0) {
        const qsizetype above = path.lastIndexOf('/');
        if (errno != ENOENT || above <= 0)
            return errno;
        if (const int error = makeAll(path.first(above), 0777, all); error != 0 && error != EEXIST)
            return error;
        if (mkdir(path.constData(), mode) != 0)
            return errno;
    }
    all->append(QFile::decodeName(path));
    return 0;
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
    addEverything(QFile::encodeName(text), text, false, &entries);
    return entries;
}

FileState fileState(const QString &path)
{
    return stateOf(QFile::encodeName(path));
}

QString fileIdentity(const QString &path)
{
    const auto number = [](const FileState &state) {
        return u"%1:%2"_s.arg(QString::number(state.volume), QString::number(state.number));
    };
    if (const FileState state = fileState(path); state.bytes >= 0)
        return number(state);
    const QFileInfo info(path);
    if (const FileState folder = fileState(info.path()); folder.bytes >= 0)
        return number(folder) + u'/' + info.fileName();
    return info.absoluteFilePath();
}

QString linkText(const QString &path)
{
    QByteArray text(PATH_MAX, Qt::Uninitialized);
    const ssize_t size = readlink(
        QFile::encodeName(path).constData(), text.data(), static_cast<size_t>(text.size()));
    return size < 0 ? QString() : QFile::decodeName(text.first(size));
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

bool removeFolder(const QString &path)
{
    return rmdir(QFile::encodeName(path).constData()) == 0;
}

QString makeFolders(const QString &path, const QString &like, QList<QString> *made)
{
    struct stat old;
    if (stat(QFile::encodeName(like).constData(), &old) != 0)
        return systemText(errno);
    const QByteArray bytes = QFile::encodeName(path);
    const mode_t mode = (old.st_mode & 0777) | S_IRWXU;
    if (const int error = makeAll(bytes, mode, made); error != 0)
        return systemText(error);
    struct stat status; // what the folder above passes down stays: its group's bit
    if (stat(bytes.constData(), &status) == 0 && (status.st_mode & 0777) != mode)
        std::ignore = chmod(bytes.constData(), (status.st_mode & 07000) | mode);
    return {};
}

Copy copyWhole(const QString &source, const QString &destination)
{
    const auto failed = [](int error) { return Copy{0, systemText(error)}; };
    const QByteArray name = QFile::encodeName(destination);
    struct stat status;
    if (lstat(name.constData(), &status) == 0)
        return {0, QFile::tr("Destination file exists")};
    const Descriptor from(open(QFile::encodeName(source).constData(), O_RDONLY | O_CLOEXEC));
    if (from < 0 || fstat(from, &status) != 0)
        return failed(errno);

    // A file without a name is gone when the process is; not every file system has such.
    const QByteArray folder = QFile::encodeName(QFileInfo(destination).path()) + '/';
    const Descriptor unnamed(access("/proc/self/fd", F_OK) == 0
            ? open(folder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600)
            : -1);
    const QByteArray part = folder + "vex_temp."
        + QByteArray::number(QRandomGenerator::global()->generate64(), 16).rightJustified(16, '0');
    const Descriptor other(
        unnamed >= 0 ? -1 : open(part.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    const int to = unnamed >= 0 ? unnamed : other;
    if (to < 0)
        return failed(errno);

    const qint64 bytes = copyToEnd(from, to);
    if (bytes >= 0 && finished(to, status)) {
        const QByteArray path = "/proc/self/fd/" + QByteArray::number(to);
        if (unnamed >= 0
                ? linkat(AT_FDCWD, path.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW)
                    == 0
                : named(part, name))
            return {bytes, {}};
    }
    const int error = errno;
    if (unnamed < 0)
        unlink(part.constData());
    return failed(error);
}

} // namespace vex::detail

#include "platform/Folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSet>

#include <string>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

/// The path as the system takes it: absolute, without "." and "..", blanks and dots at its end;
/// a reserved name such as NUL becomes the path of the device.
QString fullPath(const QString &path)
{
    const std::wstring text = QDir::toNativeSeparators(path).toStdWString();
    std::wstring full(GetFullPathNameW(text.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return QString::fromStdWString(full);
}

/// The same in the form that may be longer than 259 characters.
std::wstring longPath(const QString &path)
{
    const QString full = fullPath(path);
    if (full.startsWith("\\\\.\\"_L1)) // the same names
        return (u"\\\\?\\"_s + full.sliced(4)).toStdWString();
    if (full.startsWith("\\\\?\\"_L1))
        return full.toStdWString();
    return ((full.startsWith("\\\\"_L1) ? u"\\\\?\\UNC"_s + full.sliced(1) : u"\\\\?\\"_s + full))
        .toStdWString();
}

/// The system's error number; 0 when the folder has been made.
DWORD makeAll(const QString &path, QList<QString> *all)
{
    const auto failure = [](const QString &folder) {
        return CreateDirectoryW(longPath(folder).c_str(), nullptr) ? 0 : GetLastError();
    };
    DWORD error = failure(path);
    const QString above = QFileInfo(path).path();
    if (error == ERROR_PATH_NOT_FOUND && above != path) {
        error = makeAll(above, all);
        if (error == 0 || error == ERROR_ALREADY_EXISTS)
            error = failure(path);
    }
    if (error == 0)
        all->append(path);
    return error;
}

/// Enters no folder twice: not every link can be told from a folder.
void addEverything(
    const QString &path, bool isHidden, QSet<QString> *entered, QList<FolderEntry> *entries)
{
    entered->insert(fileIdentity(path));
    QDirIterator content(
        path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (content.hasNext()) {
        const QFileInfo info = content.nextFileInfo();
        const auto kind = info.isSymbolicLink() || info.isJunction() ? FolderEntry::Link
            : info.isDir()                                           ? FolderEntry::Folder
            : info.isFile()                                          ? FolderEntry::File
                                                                     : FolderEntry::Other;
        entries->append({info.filePath(), kind, isHidden || info.isHidden(), true,
            kind == FolderEntry::File ? info.size() : 0, {}});
        if (kind == FolderEntry::Folder && !entered->contains(fileIdentity(info.filePath())))
            addEverything(info.filePath(), entries->constLast().isHidden, entered, entries);
    }
}

/// Whether nothing follows the first @p bytes of a file, as reading tells.
bool endsAt(const QString &path, qint64 bytes)
{
    QFile file(path);
    char next;
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.seek(bytes)
        && file.read(&next, 1) == 0;
}

} // namespace

QList<QString> folderContent(
    const QString &path, QDir::Filters filters, QDirIterator::IteratorFlags flags)
{
    return folderContentByQt(path, filters, flags);
}

QList<FolderEntry> everythingBelow(const QString &path)
{
    QList<FolderEntry> entries;
    QSet<QString> entered;
    addEverything(path, false, &entered, &entries);
    return entries;
}

FileState fileState(const QString &path)
{
    const HANDLE file = CreateFileW(longPath(path).c_str(), FILE_READ_ATTRIBUTES,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
        FILE_FLAG_BACKUP_SEMANTICS, nullptr); // the flag opens folders too
    if (file == INVALID_HANDLE_VALUE)
        return {};
    BY_HANDLE_FILE_INFORMATION info;
    const bool isKnown = GetFileInformationByHandle(file, &info) != FALSE;
    CloseHandle(file);
    if (!isKnown)
        return {};
    const auto number = [](DWORD high, DWORD low) { return (quint64{high} << 32) | low; };
    const auto signedNumber = [number](DWORD high, DWORD low) { return qint64(number(high, low)); };
    return {info.dwVolumeSerialNumber, number(info.nFileIndexHigh, info.nFileIndexLow),
        signedNumber(info.nFileSizeHigh, info.nFileSizeLow),
        signedNumber(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime), 0};
}

QString fileIdentity(const QString &path)
{
    const auto number = [](const FileState &state) {
        return u"%1:%2"_s.arg(QString::number(state.volume), QString::number(state.number));
    };
    if (const FileState state = fileState(path); state.bytes >= 0)
        return number(state);
    const QString full = fullPath(path).toCaseFolded();
    const qsizetype name = full.lastIndexOf(u'\\') + 1;
    const FileState folder = fileState(full.first(name));
    return folder.bytes >= 0 ? number(folder) + u'/' + full.sliced(name) : full;
}

bool removeFolder(const QString &path)
{
    return RemoveDirectoryW(longPath(path).c_str()) != FALSE;
}

QString linkText(const QString &path)
{
    const QFileInfo info(path);
    return info.isJunction() ? info.junctionTarget() : info.symLinkTarget();
}

Deletion deleteUnchanged(const QString &path, const FileState &state, QString *reason)
{
    QFile file(path);
    if (fileState(path) != state)
        return Deletion::Changed;
    if (file.remove())
        return Deletion::Done;
    *reason = file.errorString();
    return Deletion::Failed;
}

QString makeFolders(const QString &path, const QString &like, QList<QString> *made)
{
    Q_UNUSED(like) // a folder has the permissions of the one above it
    const DWORD error = makeAll(path, made);
    return error == 0 ? QString() : qt_error_string(static_cast<int>(error));
}

Copy copyWhole(const QString &source, const QString &destination)
{
    if (QFile::exists(destination))
        return {0, QFile::tr("Destination file exists")};
    // The system's copy has its name from the beginning, and keeps it when it stops half-way.
    const QString part = QFileInfo(destination)
                             .dir()
                             .filePath(u"vex_temp.%1"_s.arg(
                                 QRandomGenerator::global()->generate64(), 16, 16, QChar(u'0')));
    QFile original(source);
    QString problem = QCoreApplication::translate("FileUtilsGeneric", "Reading it ended too early");
    bool isAtEnd = true;
    if (original.copy(part)) {
        const QFileInfo copy(part);
        const qint64 bytes = copy.size();
        isAtEnd = !copy.exists() || endsAt(source, bytes);
        if (isAtEnd && MoveFileExW(longPath(part).c_str(), longPath(destination).c_str(), 0))
            return {bytes, {}};
        if (isAtEnd)
            problem = qt_error_string(static_cast<int>(GetLastError()));
    } else {
        problem = original.errorString();
    }
    QFile::setPermissions(part, QFile::WriteOwner); // the system keeps what is read-only
    QFile::remove(part);
    return {0, problem.replace(part, destination), isAtEnd}; // it may name the file
}

} // namespace vex::detail

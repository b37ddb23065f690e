#include "platform/Folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <windows.h>

using namespace Qt::StringLiterals;

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
        const auto kind = info.isSymbolicLink() || info.isJunction() ? FolderEntry::Link
            : info.isDir()                                           ? FolderEntry::Folder
            : info.isFile()                                          ? FolderEntry::File
                                                                     : FolderEntry::Other;
        entries.append({info.filePath(), kind, info.isHidden(), true,
            kind == FolderEntry::File ? info.size() : 0});
    }
    return entries;
}

FileState fileState(const QString &path)
{
    // in the form that may be longer than 259 characters
    const QString native = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
    const QString full =
        native.startsWith("\\\\"_L1) ? u"\\\\?\\UNC"_s + native.sliced(1) : u"\\\\?\\"_s + native;
    const HANDLE file = CreateFileW(full.toStdWString().c_str(), FILE_READ_ATTRIBUTES,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
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

QString writeProblem(const QString &folder)
{
    return QFileInfo(folder).isDir() ? QString() : qt_error_string(ERROR_PATH_NOT_FOUND);
}

QString copyWhole(const QString &source, const QString &destination)
{
    if (QFile::exists(destination))
        return QFile::tr("Destination file exists");
    // The system's copy has its name from the beginning, and keeps it when it stops half-way.
    const QDir folder = QFileInfo(destination).dir();
    const QString part = folder.filePath(
        u"vex_temp.%1"_s.arg(QRandomGenerator::global()->generate64(), 16, 16, QChar(u'0')));
    QFile original(source);
    QString problem;
    if (original.copy(part)) {
        QFile copy(part);
        if (copy.rename(destination))
            return {};
        problem = copy.errorString();
    } else {
        problem = original.errorString();
    }
    QFile::setPermissions(part, QFile::WriteOwner); // the system keeps what is read-only
    QFile::remove(part);
    if (QString reason = writeProblem(folder.path()); !reason.isEmpty())
        return reason;
    return problem.replace(part, destination); // it may name the file
}

} // namespace vex::detail

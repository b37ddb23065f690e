#include "detail/FolderMove.h"

#include <vex/FileUtilsGeneric.h>

#include "detail/Companions.h"
#include "detail/Trace.h"
#include "platform/Folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

// Trace sites of a move. The numbers are part of the interface: never renumber.
constexpr TraceSource kSource{"src/FileUtilsGeneric"};
namespace at {
constexpr auto sourceMissing = kSource.line(403);
constexpr auto destinationNotCreated = kSource.line(414);
constexpr auto subfolderNotMoved = kSource.line(426);
constexpr auto fileNotCopied = kSource.line(430);
constexpr auto fileNotRemoved = kSource.line(433);
constexpr auto folderNotRemoved = kSource.line(439);
constexpr auto cancelled = kSource.line(440); // chosen here
} // namespace at

using Step = MoveReport::Step;

Error failure(const QString &text, const QString &reason = {})
{
    Error error(ErrorCode::FileAccessError, text);
    if (!reason.isEmpty())
        error.addWarning(reason);
    return error;
}

/// Where @p path leads, or would lead if it existed, by way of symbolic links.
QString realPath(const QString &path)
{
    QString missing;
    QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    for (;;) {
        if (const QString real = info.canonicalFilePath(); !real.isEmpty())
            return missing.isEmpty() ? real : QDir(real).filePath(missing);
        const QFileInfo above(info.path());
        if (above.filePath() == info.filePath())
            return path; // on a drive that is not there
        missing = missing.isEmpty() ? info.fileName() : info.fileName() + u'/' + missing;
        info = above;
    }
}

bool isSame(const QString &folder, const QString &other)
{
    return realPath(folder) == realPath(other);
}

bool isBelow(const QString &path, const QString &folder)
{
    const QString real = realPath(folder);
    return realPath(path).startsWith(real.endsWith(u'/') ? real : real + u'/');
}

/// Why no folder can be made at @p path, as far as the system tells.
QString folderProblem(const QString &path)
{
    QFileInfo existing(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    while (!existing.exists() && existing.path() != existing.filePath())
        existing = QFileInfo(existing.path());
    return writeProblem(existing.filePath());
}

/// Why a move does not touch something; empty when it could have.
QString reasonToStay(const FolderEntry &entry, bool isInHidden)
{
    if (!entry.isText)
        return FileUtilsGeneric::tr("Its name is no text");
    if (entry.isHidden || isInHidden)
        return FileUtilsGeneric::tr("It is hidden");
    if (entry.kind == FolderEntry::Link)
        return FileUtilsGeneric::tr("It is a symbolic link");
    if (entry.kind == FolderEntry::Other)
        return FileUtilsGeneric::tr("It is neither a file nor a folder");
    return {};
}

/// What moving the files below a folder takes, one after the other.
MoveProgress amountOf(const QString &folder)
{
    MoveProgress amount;
    for (const QString &file : folderContent(folder, QDir::Files, QDirIterator::Subdirectories)) {
        amount.bytesTotal += QFileInfo(file).size();
        ++amount.filesTotal;
    }
    return amount;
}

} // namespace

FolderMove::FolderMove(MoveReport *report, const MoveProgressCallback &progress)
    : m_report(report)
    , m_progress(progress)
{
}

Error FolderMove::run(const QString &source, const QString &destination, bool removeSource)
{
    m_source = QDir::cleanPath(source);
    if (m_report)
        m_report->steps.clear();
    Error error = moveFolder(source, destination, removeSource);
    if (m_report)
        noteLeftBehind();
    if (m_progress) {
        m_state.path.clear();
        m_progress(m_state);
    }
    return error;
}

Error FolderMove::moveFolder(const QString &source, const QString &destination, bool removeSource)
{
    // an empty path would be the working folder
    if (source.isEmpty() || !QDir(source).exists()) {
        const QString text = QObject::tr("Source directory %1 doesn't exist").arg(source);
        return stamped(at::sourceMissing, Q_FUNC_INFO, failure(text));
    }
    if (renameFolder(source, destination))
        return ErrorCode::NoError;
    if (Error error = makeFolder(source, destination); error.hasError())
        return error;

    const QList<QString> names =
        QDir(source).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QString &name : names) {
        const QString from = QDir::cleanPath(source + QDir::separator() + name);
        const QString to = QDir::cleanPath(destination + QDir::separator() + name);
        if (!goesOn(from)) {
            const QString text = FileUtilsGeneric::tr("Moving %1 was cancelled").arg(m_source);
            return stamped(at::cancelled, Q_FUNC_INFO, Error(ErrorCode::GeneralFailure, text));
        }
        if (QFileInfo(from).isDir()) {
            // Deliberate: what stays behind in a subfolder is no error, whatever the caller wants.
            if (Error error = moveFolder(from, to, false); error.hasError())
                return stamped(at::subfolderNotMoved, Q_FUNC_INFO, std::move(error));
        } else if (Error error = moveFile(from, to, removeSource); error.hasError()) {
            return error;
        }
    }

    // an empty folder may be its own destination
    if (!isSame(source, destination) && QDir().rmdir(source)) {
        note({Step::Deleted, true, QDir::cleanPath(source), QDir::cleanPath(destination), 0, {}});
        return ErrorCode::NoError;
    }
    if (!removeSource)
        return ErrorCode::NoError;
    const QString text = QObject::tr("Cannot remove %1").arg(source);
    return stamped(at::folderNotRemoved, Q_FUNC_INFO, failure(text));
}

bool FolderMove::renameFolder(const QString &source, const QString &destination)
{
    // Qt logs a failure of its own when the folder above is a file, or must not be searched
    const QString above = QFileInfo(destination).path() + "/."_L1;
    if (destination.isEmpty() || !QFileInfo::exists(above) || !QDir().rename(source, destination))
        return false;
    if (m_report)
        note({Step::Renamed, true, QDir::cleanPath(source), QDir::cleanPath(destination),
            FileUtils::dirSize(destination), {}});
    if (m_isMeasured) {
        const MoveProgress amount = amountOf(destination);
        m_state.bytesDone += amount.bytesTotal;
        m_state.filesDone += amount.filesTotal;
    }
    return true;
}

Error FolderMove::makeFolder(const QString &source, const QString &destination)
{
    QString reason;
    if (destination.isEmpty()) { // it would be the root
        reason = FileUtilsGeneric::tr("It has no name");
    } else if (isBelow(destination, source)) {
        reason = FileUtilsGeneric::tr("It lies in the folder that is to be moved");
    } else if (QDir(destination).exists()) {
        return ErrorCode::NoError;
    } else if (QDir().mkpath(destination)) {
        // others must not see more than before; our own files have to get in
        QFile::setPermissions(destination,
            QFile::permissions(source) | QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        note({Step::Created, true, QDir::cleanPath(source), QDir::cleanPath(destination), 0, {}});
        return ErrorCode::NoError;
    } else {
        reason = folderProblem(destination);
    }
    const QString text = QObject::tr("Cannot create folder %1").arg(destination);
    return stamped(at::destinationNotCreated, Q_FUNC_INFO, failure(text, reason));
}

Error FolderMove::moveFile(const QString &source, const QString &destination, bool removeSource)
{
    const FileState state = fileState(source);
    // a link to a device is no file: reading it might never end
    QString problem = QFileInfo(source).isFile()
        ? copyWhole(source, destination)
        : FileUtilsGeneric::tr("It is neither a file nor a folder");
    const qint64 bytes = QFileInfo(destination).size();
    auto deletion = Deletion::Changed;
    QString reason;
    if (problem.isEmpty() && bytes == state.bytes)
        deletion = deleteUnchanged(source, state, &reason);
    if (problem.isEmpty() && deletion == Deletion::Changed) {
        QFile::setPermissions(destination, QFile::WriteOwner); // Windows keeps what is read-only
        QFile::remove(destination);
        problem = FileUtilsGeneric::tr("The file changed while it was copied");
    }
    if (!problem.isEmpty()) {
        m_kept.insert(source, {{}, problem});
        const QString text = QObject::tr("Cannot copy %1 to %2").arg(source, destination);
        return stamped(at::fileNotCopied, Q_FUNC_INFO, failure(text, problem));
    }
    note({Step::Copied, false, source, destination, bytes, {}});
    m_state.bytesDone += bytes;
    ++m_state.filesDone;
    if (deletion == Deletion::Done) {
        note({Step::Deleted, false, source, destination, bytes, {}});
        return ErrorCode::NoError;
    }
    m_kept.insert(source, {destination, reason});
    if (!removeSource)
        return ErrorCode::NoError;
    const QString text = QObject::tr("Cannot remove %1").arg(source);
    return stamped(at::fileNotRemoved, Q_FUNC_INFO, failure(text, reason));
}

void FolderMove::note(const Step &step)
{
    if (m_report)
        m_report->steps.append(step);
}

void FolderMove::noteLeftBehind()
{
    const QFileInfo source(m_source);
    if (!source.isDir())
        return;
    note({Step::LeftBehind, true, m_source, {}, 0, {}});
    QString hiddenFolder; // the last one; what is in a folder comes next
    for (const FolderEntry &entry : everythingBelow(m_source)) {
        const bool isFolder = entry.kind == FolderEntry::Folder;
        const bool isInHidden =
            !hiddenFolder.isEmpty() && entry.path.startsWith(hiddenFolder + u'/');
        if (isFolder && entry.isHidden && !isInHidden)
            hiddenFolder = entry.path;
        Kept kept = m_kept.value(entry.path);
        if (kept.reason.isEmpty())
            kept.reason = reasonToStay(entry, isInHidden);
        note({Step::LeftBehind, isFolder, entry.path, kept.copy, entry.bytes, kept.reason});
    }
}

bool FolderMove::goesOn(const QString &source)
{
    if (!m_progress)
        return true;
    if (!m_isMeasured)
        m_state = amountOf(m_source);
    m_isMeasured = true;
    m_state.path = source;
    return m_progress(m_state);
}

} // namespace vex::detail

#include "detail/FolderMove.h"

#include <vex/FileUtilsGeneric.h>

#include "detail/Place.h"
#include "detail/Trace.h"
#include "platform/Folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <numeric>

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

/// Why a move does not touch something; empty when it could have.
QString reasonToStay(const FolderEntry &entry)
{
    if (!entry.problem.isEmpty())
        return entry.problem;
    if (!entry.isText)
        return FileUtilsGeneric::tr("Its name is no text");
    if (entry.isHidden)
        return FileUtilsGeneric::tr("It is hidden");
    if (entry.kind == FolderEntry::Link)
        return FileUtilsGeneric::tr("It is a symbolic link");
    if (entry.kind == FolderEntry::Other)
        return FileUtilsGeneric::tr("It is neither a file nor a folder");
    return {};
}

/// What moving the visible files below a folder takes, one after the other.
MoveProgress amountOf(const QString &folder)
{
    MoveProgress amount;
    for (const FolderEntry &entry : everythingBelow(folder)) {
        const bool isLink = entry.kind == FolderEntry::Link && QFileInfo(entry.path).isFile();
        if (entry.isHidden || !entry.isText || !(isLink || entry.kind == FolderEntry::File))
            continue;
        amount.bytesTotal += isLink ? QFileInfo(entry.path).size() : entry.bytes;
        ++amount.filesTotal;
    }
    return amount;
}

} // namespace

FolderMove::FolderMove(
    const char *function, MoveReport *report, const MoveProgressCallback &progress)
    : m_function(function)
    , m_report(report)
    , m_progress(progress)
{
}

Error FolderMove::run(const QString &source, const QString &destination, bool removeSource)
{
    m_source = QDir::cleanPath(resolved(source));
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

Error FolderMove::moveFolder(
    const QString &source, const QString &destination, bool removeSource, QStringList places)
{
    // an empty path would be the working folder
    if (source.isEmpty() || !QDir(source).exists()) {
        const QString text = QObject::tr("Source directory %1 doesn't exist").arg(source);
        return stamped(at::sourceMissing, m_function, failure(text));
    }
    // Messages have the folders as they were given, everything else as they may be cleaned.
    const QString from = resolved(source);
    const QString to = destination.isEmpty() ? QString() : QDir::cleanPath(resolved(destination));
    if (renameFolder(from, to))
        return ErrorCode::NoError;
    // Links may lead here in a circle, or a second time; what can be moved has been, or will be.
    const QString identity = identityOf(from);
    const bool isEntered = m_entered.contains(identity);
    const QString link = linkText(from);
    if (isEntered && !link.isEmpty())
        return ErrorCode::NoError;
    m_entered.insert(identity);
    if (places.isEmpty() || !linkText(to).isEmpty())
        places = placesAbove(to);
    if (const QString reason = makeFolder(from, to, places); !reason.isEmpty()) {
        const QString text = QObject::tr("Cannot create folder %1").arg(destination);
        return stamped(at::destinationNotCreated, m_function, failure(text, reason));
    }

    const QString place = identityOf(to);
    places.append(place);
    const QList<QString> names = isEntered
        ? QList<QString>()
        : QDir(from).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QString &name : names) {
        const QString entry = QDir::cleanPath(from + QDir::separator() + name);
        const QString target = QDir::cleanPath(to + QDir::separator() + name);
        if (!goesOn(entry)) {
            const QString text = FileUtilsGeneric::tr("Moving %1 was cancelled").arg(m_source);
            return stamped(at::cancelled, m_function, Error(ErrorCode::GeneralFailure, text));
        }
        const QFileInfo info(entry);
        if (info.isDir()) {
            // Deliberate: what stays behind in a subfolder is no error, whatever the caller wants.
            if (Error error = moveFolder(entry, target, false, places); error.hasError())
                return stamped(at::subfolderNotMoved, m_function, std::move(error));
        } else if (info.isSymbolicLink() && !info.exists()) {
            continue; // what it led to has been moved; links to nothing stay
        } else if (Error error = moveFile(entry, target, removeSource); error.hasError()) {
            return error;
        }
    }

    // an empty folder may be its own destination
    if (place != identity && removeFolder(from)) {
        m_entered.remove(identity); // the next new folder may get its number
        note({Step::Deleted, true, QDir::cleanPath(from), to, 0, {}, link});
        return ErrorCode::NoError;
    }
    if (!removeSource)
        return ErrorCode::NoError;
    const QString text = QObject::tr("Cannot remove %1").arg(source);
    return stamped(at::folderNotRemoved, m_function, failure(text));
}

bool FolderMove::renameFolder(const QString &source, const QString &destination)
{
    // Qt logs a failure of its own when the folder above is a file, or must not be searched
    const QString above = QFileInfo(destination).path() + "/."_L1;
    if (destination.isEmpty() || !QFileInfo::exists(above) || !QDir().rename(source, destination))
        return false;
    const QString link = linkText(destination); // then nothing but the link has been moved
    if (m_report) {
        const auto content = link.isEmpty() ? everythingBelow(destination) : QList<FolderEntry>();
        const qint64 bytes = std::accumulate(content.begin(), content.end(), qint64{0},
            [](qint64 sum, const FolderEntry &entry) { return sum + entry.bytes; });
        note({Step::Renamed, true, QDir::cleanPath(source), destination, bytes, {}, link});
    }
    if (m_isMeasured && link.isEmpty()) {
        const MoveProgress amount = amountOf(destination);
        m_state.bytesDone += amount.bytesTotal;
        m_state.filesDone += amount.filesTotal;
    }
    return true;
}

QString FolderMove::makeFolder(
    const QString &source, const QString &destination, const QStringList &places)
{
    if (destination.isEmpty()) // it would be the root
        return FileUtilsGeneric::tr("It has no name");
    const QString identity = identityOf(source);
    if (places.contains(identity) && identityOf(destination) != identity)
        return FileUtilsGeneric::tr("It lies in the folder that is to be moved");
    QList<QString> made;
    const QString problem = makeFolders(destination, source, &made);
    for (const QString &folder : std::as_const(made))
        note({Step::Created, true, folder == destination ? QDir::cleanPath(source) : QString(),
            folder, 0, {}, {}});
    return QDir(destination).exists() ? QString() : problem;
}

Error FolderMove::moveFile(const QString &source, const QString &destination, bool removeSource)
{
    const FileState state = fileState(source);
    const QString link = linkText(source);
    // a link to a device is no file: reading it might never end
    auto [bytes, problem, isAtEnd] = QFileInfo(source).isFile()
        ? copyWhole(source, destination)
        : Copy{0, FileUtilsGeneric::tr("It is neither a file nor a folder")};
    const bool isCopied = problem.isEmpty();
    auto deletion = Deletion::Changed;
    QString reason;
    if (isCopied) {
        isAtEnd = bytes >= state.bytes; // some systems say less than there is
        if (isAtEnd)
            deletion = deleteUnchanged(source, state, &reason);
        if (deletion == Deletion::Changed) {
            // Windows keeps what is read-only
            QFile::setPermissions(destination, QFile::WriteOwner);
            QFile::remove(destination);
        }
    }
    if (!isAtEnd || (isCopied && deletion == Deletion::Changed))
        problem = isAtEnd || fileState(source) != state
            ? FileUtilsGeneric::tr("The file changed while it was copied")
            : FileUtilsGeneric::tr("Reading it ended too early");
    if (!problem.isEmpty()) {
        m_kept.insert(source, {{}, problem});
        const QString text = QObject::tr("Cannot copy %1 to %2").arg(source, destination);
        return stamped(at::fileNotCopied, m_function, failure(text, problem));
    }
    note({Step::Copied, false, source, destination, bytes, {}, link});
    m_state.bytesDone += bytes;
    ++m_state.filesDone;
    if (deletion == Deletion::Done) {
        note({Step::Deleted, false, source, destination, bytes, {}, link});
        return ErrorCode::NoError;
    }
    m_kept.insert(source, {destination, reason});
    if (!removeSource)
        return ErrorCode::NoError;
    const QString text = QObject::tr("Cannot remove %1").arg(source);
    return stamped(at::fileNotRemoved, m_function, failure(text, reason));
}

void FolderMove::note(const Step &step)
{
    if (m_report)
        m_report->steps.append(step);
}

void FolderMove::noteLeftBehind()
{
    // of a renamed folder nothing is left, even if the old name still leads to it
    const Step first = m_report->steps.value(0);
    if ((first.kind == Step::Renamed && first.source == m_source) || !QFileInfo(m_source).isDir())
        return;
    note({Step::LeftBehind, true, m_source, {}, 0, {}, {}});
    for (const FolderEntry &entry : everythingBelow(m_source)) {
        Kept kept = m_kept.value(entry.path);
        if (kept.reason.isEmpty())
            kept.reason = reasonToStay(entry);
        note({Step::LeftBehind, entry.kind == FolderEntry::Folder, entry.path, kept.copy,
            entry.bytes, kept.reason,
            entry.kind == FolderEntry::Link ? linkText(entry.path) : QString()});
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

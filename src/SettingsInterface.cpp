#include <vex/SettingsInterface.h>

#include "detail/Trace.h"
#include "detail/WholeFile.h"

#include <vex/FileCopierUtils.h>
#include <vex/FileUtilsGeneric.h>
#include <vex/Result.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>

#include <functional>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/SettingsInterface"};
namespace at {
constexpr auto notElevated = kSource.line(45);
constexpr auto temporaryNotRemoved = kSource.line(62);
constexpr auto temporaryNotWritten = kSource.line(63); // chosen here
constexpr auto locked = kSource.line(64); // chosen here
constexpr auto notRead = kSource.line(65); // chosen here
constexpr auto oldNotRead = kSource.line(66); // chosen here
constexpr auto noSettings = kSource.line(67); // chosen here
constexpr auto notWritten = kSource.line(68); // chosen here
constexpr auto notCopied = kSource.line(69); // chosen here
constexpr auto newNotRead = kSource.line(70); // chosen here
constexpr auto notTheSame = kSource.line(71); // chosen here
} // namespace at

constexpr int kTimeToLock = 5000; // ms

using Write = std::function<void(QSettings &)>;

Error failure(detail::TraceSite site, const char *function, const QString &text)
{
    return detail::stamped(site, function, Error(ErrorCode::FileAccessError, text));
}

/// True when a folder on the way to @p path does not let the user see what it holds.
bool isHidden(const QString &path)
{
    QFileInfo above(QFileInfo(path).path());
    while (!above.exists() && above.path() != above.filePath())
        above.setFile(above.path());
    return above.exists() && !above.isExecutable();
}

/// The bytes of the regular file at @p path; none when there is nothing.
Result<QByteArray> contentOf(const QString &path)
{
    QFile file(path);
    QString reason;
    if (isHidden(path)) {
        reason = QObject::tr("A folder on the way is closed");
    } else if (!file.exists()) {
        return QByteArray();
    } else if (!QFileInfo(file).isFile()) { // others may have no end
        reason = QObject::tr("It is no regular file");
    } else {
        const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (file.error() == QFile::NoError)
            return content;
        reason = file.errorString();
    }
    return failure(at::notRead, Q_FUNC_INFO, QObject::tr("Cannot read %1: %2").arg(path, reason));
}

/// True when @p content is all that QSettings writes of so many keys: a line for each. Without
/// space it leaves less, and is content.
bool isWhole(const QByteArray &content, qsizetype keys)
{
    for (const QByteArray &line : content.split('\n'))
        keys -= line.isEmpty() || line.startsWith('[') ? 0 : 1;
    return keys == 0 && (content.isEmpty() || content.endsWith('\n'));
}

/// Settings in a file of their own, which goes however it is left.
class TemporarySettings
{
public:
    /// @param old    what the file holds before
    /// @param write  puts values into it
    TemporarySettings(const QByteArray &old, const Write &write)
        : m_path(FileUtilsGeneric::tempFileName().toString())
    {
        QFile file(m_path);
        if (m_path.isEmpty()) {
            m_problem = QObject::tr("None can be made in %1").arg(QDir::tempPath());
        } else if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
            || file.write(old) != old.size()) {
            m_problem = file.errorString();
        } else {
            file.close();
            QSettings settings(m_path, QSettings::IniFormat);
            m_isDamaged = settings.status() == QSettings::FormatError;
            write(settings);
            while (!settings.group().isEmpty()) // left open; keys are counted from the top
                settings.endGroup();
            settings.sync();
            m_content = contentOf(m_path).valueOr({});
            m_isWhole = settings.status() != QSettings::AccessError
                && (m_content == old || isWhole(m_content, settings.allKeys().size()));
        }
    }
    ~TemporarySettings()
    {
        if (QFile::exists(m_path) && !QFile::remove(m_path))
            detail::logAt(at::temporaryNotRemoved, Q_FUNC_INFO)
                .warning("Could not remove temp file");
    }
    Q_DISABLE_COPY_MOVE(TemporarySettings)

    const QString &path() const { return m_path; }
    const QByteArray &content() const { return m_content; }
    /// What it held before was no INI.
    bool isDamaged() const { return m_isDamaged; }
    /// An error when not all values are in the file: a copy of it would take some away.
    Error check() const
    {
        if (m_isWhole)
            return ErrorCode::NoError;
        Error error = failure(
            at::temporaryNotWritten, Q_FUNC_INFO, QObject::tr("Cannot write a temporary file"));
        return m_problem.isEmpty() ? error : error.addWarning(m_problem);
    }

private:
    QString m_path;
    QByteArray m_content;
    QString m_problem;
    bool m_isDamaged = false;
    bool m_isWhole = false;
};

/// Does what QSettings does with the file at @p path, which the user may write, but for one thing:
/// when there is no space for the new values, the old ones stay.
void writeInPlace(const QString &path, const Write &write)
{
    QLockFile lock(path + ".lock"_L1);
    lock.lock();
    const auto old = contentOf(path);
    const TemporarySettings temporary(old.valueOr({}), write);
    // Deliberate: nothing is told when the values do not reach the file.
    if (old.hasValue() && !temporary.check().hasError())
        std::ignore = detail::writeWholeFile(path, temporary.content());
}

} // namespace

void SettingsInterface::load()
{
    load(defaultFilePath());
}

void SettingsInterface::load(const QString &path)
{
    QSettings settings(path, QSettings::IniFormat);
    readSettings(settings);
}

Error SettingsInterface::save() const
{
    return save(defaultFilePath());
}

Error SettingsInterface::save(const QString &path) const
{
    if (QSettings(path, QSettings::IniFormat).isWritable()) {
        writeInPlace(path, [this](QSettings &settings) { writeSettings(settings); });
        return ErrorCode::NoError;
    }
    if (Error error = elevatePrivilegesAndSave(path); error.hasError())
        return detail::stamped(at::notElevated, Q_FUNC_INFO, std::move(error));
    return ErrorCode::NoError;
}

Error SettingsInterface::elevatePrivilegesAndSave(const QString &path) const
{
    const TemporarySettings temporary({}, [this](QSettings &settings) { writeSettings(settings); });
    if (Error error = temporary.check(); error.hasError())
        return error;
    return FileCopierUtils::runFileCopier(temporary.path(), path);
}

Error SettingsInterface::saveChecked() const
{
    return saveChecked(defaultFilePath());
}

Error SettingsInterface::saveChecked(const QString &path) const
{
    QDir().mkpath(QFileInfo(path).path());
    QLockFile lock(path + ".lock"_L1); // that of QSettings
    std::ignore = lock.tryLock(kTimeToLock);
    if (lock.error() == QLockFile::LockFailedError)
        return failure(
            at::locked, Q_FUNC_INFO, QObject::tr("%1 is locked by another program").arg(path));

    auto old = contentOf(path);
    if (old.hasError())
        return detail::stamped(at::oldNotRead, Q_FUNC_INFO, std::move(old).error());
    const TemporarySettings temporary(
        old.value(), [this](QSettings &settings) { writeSettings(settings); });
    if (temporary.isDamaged())
        return failure(
            at::noSettings, Q_FUNC_INFO, QObject::tr("%1 is no settings file").arg(path));
    if (Error error = temporary.check(); error.hasError())
        return error;

    // whoever may not make a lock file cannot make a new file there either
    if (lock.error() != QLockFile::PermissionError
        && QSettings(path, QSettings::IniFormat).isWritable()) {
        const QString problem = detail::writeWholeFile(path, temporary.content());
        if (!problem.isEmpty())
            return failure(
                at::notWritten, Q_FUNC_INFO, QObject::tr("Cannot write %1: %2").arg(path, problem));
    } else if (Error error = FileCopierUtils::runFileCopier(temporary.path(), path);
               error.hasError()) {
        return detail::stamped(at::notCopied, Q_FUNC_INFO, std::move(error));
    }
    auto now = contentOf(path);
    if (now.hasError())
        return detail::stamped(at::newNotRead, Q_FUNC_INFO, std::move(now).error());
    if (now.value() != temporary.content())
        return failure(at::notTheSame, Q_FUNC_INFO,
            QObject::tr("%1 does not hold what was written").arg(path));
    return ErrorCode::NoError;
}

} // namespace vex

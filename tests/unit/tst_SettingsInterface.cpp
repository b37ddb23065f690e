#include "ErrorTrace.h"
#include "Files.h"

#include <vex/FileCopierUtils.h>
#include <vex/SettingsInterface.h>
#include <vex/SettingsUtils.h>

#include <QLockFile>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;
using vex::test::contentOf;
using vex::test::ErrorReport;
using vex::test::writeFile;

#if defined(Q_OS_UNIX)
#    include <csignal>

#    include <grp.h>
#    include <sys/resource.h>
#    include <unistd.h>
#endif

namespace {

class Settings : public vex::SettingsInterface
{
public:
    explicit Settings(QString path)
        : m_path(std::move(path))
    {
    }
    QString value;

protected:
    void writeSettings(QSettings &settings) const override
    {
        settings.setValue(u"value"_s, value);
        settings.beginGroup(u"left open"_s);
    }
    void readSettings(QSettings &settings) override
    {
        value = settings.value(u"value"_s).toString();
    }
    QString defaultFilePath() const override { return m_path; }

private:
    QString m_path;
};

constexpr const char *kOld = "[General]\nother=1\nvalue=old\n";

} // namespace

class TestSettingsInterface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u".?"_s));
        QVERIFY(QDir(m_folder.path()).mkpath(u"work/tmp"_s));
        qputenv("TMPDIR", m_folder.filePath(u"work/tmp"_s).toLocal8Bit());
    }
    void cleanup()
    {
        QDir work(m_folder.filePath(u"work"_s));
        QFile::setPermissions(
            work.filePath(u"closed"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY2(QDir(work.filePath(u"tmp"_s)).isEmpty(), "a temporary file is left");
        QVERIFY(work.removeRecursively());
    }

    void filesLieBesideTheApplications()
    {
        QStandardPaths::setTestModeEnabled(true);
        const QString own = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
        const QString servers = vex::SettingsUtils::serversConfigurationFilePath();
        QCOMPARE(servers, QFileInfo(own).path() + "/General/servers_configuration.ini"_L1);
        QCOMPARE(vex::SettingsUtils::settingsFilePath(u"%1 a.ini"_s),
            QFileInfo(own).path() + "/General/%1 a.ini"_L1);
        QSettings &settings = vex::SettingsUtils::serversConfigurationSettings();
        QCOMPARE(settings.fileName(), servers);
        QCOMPARE(&settings, &vex::SettingsUtils::serversConfigurationSettings());
    }

    /// Both ways to save keep what others have written, and make the folder.
    void valuesComeBack()
    {
        for (const auto &[name, old] : {std::pair("old.ini", kOld), {"missing/new.ini", ""}}) {
            const QString path = m_folder.filePath(u"work/"_s + QLatin1StringView(name));
            if (*old != '\0')
                writeFile(path, old);
            Settings settings(path);
            settings.value = u"a=%1;\n\u03bc\""_s;
            QVERIFY(!settings.save().hasError());
            Settings loaded(path);
            loaded.load();
            QCOMPARE(loaded.value, settings.value);
            settings.value = u"second"_s;
            QVERIFY(!settings.saveChecked().hasError());
            loaded.load();
            QCOMPARE(loaded.value, u"second"_s);
            QCOMPARE(QSettings(path, QSettings::IniFormat).value(u"other"_s).toInt(),
                *old != '\0' ? 1 : 0);
            QVERIFY(settings == loaded);
        }
    }

    void savesTakeTurns()
    {
        const QString path = m_folder.filePath(u"work/a.ini"_s);
        for (const bool isChecked : {false, true}) {
            QLockFile lock(path + ".lock"_L1);
            QVERIFY(lock.lock());
            std::atomic_bool isDone = false;
            std::thread other([&] {
                QThread::msleep(200);
                isDone = true;
                lock.unlock();
            });
            const vex::Error error =
                isChecked ? Settings(path).saveChecked() : Settings(path).save();
            const bool isSaved = !error.hasError() && isDone;
            other.join();
            QVERIFY(isSaved);
        }
    }

#if defined(Q_OS_UNIX)
    /// What the launcher tells, as the error that comes of it. The old settings stay.
    void consentAndHelper_data()
    {
        QTest::addColumn<QString>("launcher"); // the last command of a stand-in for pkexec
        QTest::addColumn<ErrorReport>("expected");
        const char *const failed = "Copying the file failed";
        for (const auto &[launcher, text, line] : {std::tuple("exec \"$helper\" \"$@\"", "", 0),
                 {"exit 1", "Bad parameters provided", 58},
                 {"exit 2", "Source file is not readable", 61},
                 {"exit 3", "Destination file is not writable", 64}, {"exit 4", failed, 68},
                 {"exit 126", failed, 68}, {"exit 127", failed, 68}, {"exit 255", failed, 68},
                 {"kill -HUP $$", failed, 68}, {"", failed, 68}}) // none at all
            QTest::newRow(launcher)
                << QString::fromLatin1(launcher)
                << (line == 0 ? ErrorReport()
                              : ErrorReport{vex::GeneralFailure, QLatin1StringView(text),
                                  {u"src/FileCopierUtils:%1"_s.arg(line),
                                      u"src/SettingsInterface:45"_s}});
    }
    void consentAndHelper()
    {
        QFETCH(const QString, launcher);
        QFETCH(const ErrorReport, expected);
        const QString path = m_folder.filePath(u"work/its settings.ini"_s);
        setLauncher(launcher);
        Settings settings(path);
        settings.value = u"new"_s;
        writeFile(path, kOld);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup));
        const auto mode = QFile::permissions(path);
        const vex::Error error = settings.save();
        QCOMPARE(vex::test::reportOf(error), expected);
        QCOMPARE(contentOf(path), expected.code == vex::NoError ? "[General]\nvalue=new\n" : kOld);
        QCOMPARE(QFile::permissions(path), mode);
        if (launcher.isEmpty()) {
            QVERIFY(error.warnings().value(0).startsWith("pkexec: "_L1));
            return;
        }
        const QList<QByteArray> arguments = contentOf(logPath()).split('\n');
        QCOMPARE(arguments.value(0), "--disable-internal-agent");
        QVERIFY(arguments.value(1).endsWith("/libexec/vex/Vex-File-Copier"));
        QVERIFY(arguments.value(2).startsWith("--source=" + qgetenv("TMPDIR") + '/'));
        QCOMPARE(arguments.value(3), "--destination=" + path.toLocal8Bit());
        if (expected.code != vex::NoError)
            QCOMPARE(error.warnings(), QStringList{u"no \u03bc"_s});
    }

    /// Paths reach the helper as they are, but for a marker in the source.
    void pathsAreFilledInOneAfterTheOther()
    {
        setLauncher(u"exit 0"_s);
        for (const auto &[source, destination, expected] :
            {std::tuple("/a %2", "/b", "--source=/a /b\n--destination=/b\n"),
                {"/%1\" --destination=\"/c", "/b'",
                    "--source=//b'\" --destination=\"/c\n--destination=%2\n"}}) {
            QVERIFY(!vex::FileCopierUtils::runFileCopier(
                QString::fromLatin1(source), QString::fromLatin1(destination))
                         .hasError());
            QVERIFY2(contentOf(logPath()).endsWith(expected), contentOf(logPath()));
        }
    }

    /// Whatever goes wrong is told, and the old settings stay as they were.
    void checkedSavesTell()
    {
        const QString path = m_folder.filePath(u"work/closed/a.ini"_s);
        const QDir folder = QFileInfo(path).dir();
        const char *const temporary = "Cannot write a temporary file";
        // what a shell does to the file before, what the launcher does, message, line
        for (const auto &[before, launcher, message, line] :
            {std::tuple("rm %1; mkdir %1", "exit 1", "Cannot read %1: It is no regular file", 66),
                {"ln -sf /dev/null %1", "exit 1", "Cannot read %1: It is no regular file", 66},
                {"chmod 200 %1", "exit 1", "Cannot read %1: Permission denied", 66},
                {"printf '\\177ELF\\n[\\n' >%1", "exit 1", "%1 is no settings file", 67},
                {": locked", "exit 1", "%1 is locked by another program", 64},
                {": no room for the temporary file", "exit 1", temporary, 63},
                {": too large", "exit 1", temporary, 63},
                {"chmod 444 %1", "exit 127", "Copying the file failed", 69},
                {"chmod 444 %1", "exit 0", "%1 does not hold what was written", 71},
                {"chmod 555 ${1%/*}", "exec \"$helper\" \"$@\"", "Destination file is not writable",
                    69}}) {
            const QString script = QString::fromLatin1(before);
            init();
            writeFile(path, kOld);
            setLauncher(QString::fromLatin1(launcher));
            const QString command = QString(script).replace("%1"_L1, "\"$1\""_L1);
            QCOMPARE(QProcess::execute(u"/bin/sh"_s, {u"-c"_s, command, u"sh"_s, path}), 0);
            QLockFile lock(path + ".lock"_L1);
            QVERIFY(!script.contains("locked"_L1) || lock.lock());
            if (script.contains("no room"_L1))
                qputenv("TMPDIR", m_folder.filePath(u"none"_s).toLocal8Bit());
            const QByteArray old = contentOf(path);
            const auto mode = QFile::permissions(path);
            Settings settings(path);
            settings.value = QString(100, u'x');
            limit(script.contains("too large"_L1) ? 20 : 0);
            const ErrorReport report = vex::test::reportOf(settings.saveChecked());
            limit(0);
            lock.unlock();
            QCOMPARE(report.message, QString::fromLatin1(message).replace("%1"_L1, path));
            QCOMPARE(report.trace.last(), u"src/SettingsInterface:%1"_s.arg(line));
            QCOMPARE(contentOf(path), old);
            QCOMPARE(QFile::permissions(path), mode);
            QCOMPARE(
                folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{u"a.ini"_s});
            cleanup();
        }
    }

    /// Values that nobody can see are not taken for none.
    void closedFoldersMayHoldValues()
    {
        const QString path = m_folder.filePath(u"work/closed/a.ini"_s);
        writeFile(path, kOld);
        setLauncher(u"exit 0"_s);
        QVERIFY(QFile::setPermissions(QFileInfo(path).path(), {}));
        QCOMPARE(Settings(path).saveChecked().message(),
            u"Cannot read %1: A folder on the way is closed"_s.arg(path));
        QVERIFY(!QFile::exists(logPath()));
    }

private:
    QString logPath() const
    {
        return m_folder.filePath(u"work/log"_s);
    }
    /// Puts a stand-in for pkexec first in the path, or none.
    void setLauncher(const QString &command)
    {
        const QString folder = m_folder.filePath(u"work/path"_s);
        QVERIFY(QDir().mkpath(folder));
        const QString program = folder + "/pkexec"_L1;
        if (!command.isEmpty()) {
            writeFile(program,
                u"#!/bin/sh\nprintf '%s\\n' \"$@\" >'%1'\nhelper='%2'\nshift 2\n[ \"$*\" != none ]\necho 'no \u03bc' >&2\n%3\n"_s
                    .arg(logPath(), m_folder.filePath(u"Vex-File-Copier"_s), command)
                    .toUtf8());
            QVERIFY(QFile::setPermissions(
                program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
        qputenv("PATH", folder.toLocal8Bit() + (command.isEmpty() ? "" : ":/usr/bin:/bin"));
    }
    /// Files may grow so far; 0: without a limit.
    static void limit(rlim_t bytes)
    {
        signal(SIGXFSZ, SIG_IGN);
        rlimit size{};
        getrlimit(RLIMIT_FSIZE, &size);
        size.rlim_cur = bytes > 0 ? bytes : size.rlim_max;
        setrlimit(RLIMIT_FSIZE, &size);
    }

#endif

public:
    const QTemporaryDir m_folder;
};

int main(int argc, char *argv[])
{
    TestSettingsInterface test;
#if defined(Q_OS_UNIX)
    // Root may write everywhere and asks nobody for consent.
    constexpr uid_t kNobody = 65534;
    const QByteArray folder = test.m_folder.path().toLocal8Bit();
    const QString helper =
        QFileInfo(QString::fromLocal8Bit(argv[0])).path() + "/Vex-File-Copier"_L1;
    if (!QFile::copy(helper, test.m_folder.filePath(u"Vex-File-Copier"_s)))
        qFatal("the helper is not there");
    if (geteuid() == 0
        && (chown(folder.constData(), kNobody, kNobody) != 0 || setgroups(0, nullptr) != 0
            || setresgid(kNobody, kNobody, kNobody) != 0
            || setresuid(kNobody, kNobody, kNobody) != 0))
        qFatal("cannot give the rights of root away");
    qputenv("HOME", folder);
#endif
    QCoreApplication application(argc, argv);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_SettingsInterface.moc"

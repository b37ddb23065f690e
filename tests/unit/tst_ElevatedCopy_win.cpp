#include <QDirIterator>
#include <QProcess>
#include <QScopeGuard>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>

#include "ErrorTrace.h"
#include "Files.h"
#include "LoggedMessage.h"

#include <vex/FileCopierUtils.h>
#include <vex/ProcessUtils.h>
#include <vex/SettingsInterface.h>

#include <windows.h>
// after windows.h, which it does not include itself
#include <sddl.h>

using namespace Qt::StringLiterals;
using vex::test::ErrorReport;
using vex::test::writeFile;

namespace {

std::wstring native(const QString &path)
{
    return (u"\\\\?\\"_s + QDir::toNativeSeparators(path)).toStdWString();
}

/// Who may do what with a file, as the system keeps it; nothing when it does not tell.
QByteArray rightsOf(const QString &path)
{
    constexpr SECURITY_INFORMATION kAll =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    QByteArray rights(65536, '\0');
    DWORD size = 0;
    GetFileSecurityW(native(path).c_str(), kAll, rights.data(), DWORD(rights.size()), &size);
    return rights.left(size);
}

void setRights(const QString &path, const wchar_t *text)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    QVERIFY(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        text, SDDL_REVISION_1, &descriptor, nullptr));
    QVERIFY(SetFileSecurityW(native(path).c_str(), DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
}

/// Everything below @p folder: content and attributes.
QMap<QString, QString> everythingIn(const QString &folder)
{
    QMap<QString, QString> all;
    QDirIterator entries(folder,
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        QFile file(path);
        const bool isOpen = !entries.fileInfo().isDir() && file.open(QIODevice::ReadOnly);
        all[path.sliced(folder.size() + 1)] = u"%1 %2"_s.arg(
            QString::number(
                GetFileAttributesW(native(path).c_str()) & ~DWORD(FILE_ATTRIBUTE_NORMAL), 16),
            isOpen ? QString::fromUtf8(file.readAll()) : u"(not read)"_s);
    }
    return all;
}

/// Runs a program of the system around Wine, with @p path as its last argument. False on Windows.
bool runOutsideWine(QStringList command, const QString &path)
{
    using UnixName = char *(*)(const wchar_t *);
    const auto unixName = reinterpret_cast<UnixName>(reinterpret_cast<void *>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (unixName == nullptr)
        return false;
    const QFileInfo file(path);
    const QString folder = QString::fromUtf8(unixName(native(file.path()).c_str()));
    command.append(folder + u'/' + file.fileName());
    return QProcess::execute(u"start"_s, QStringList{u"/wait"_s, u"/unix"_s} + command) == 0;
}

/// A folder that is reached through another name: with what the system has, or else as Wine does.
bool makeLink(const QString &link, const QString &folder)
{
    CreateSymbolicLinkW(native(link).c_str(), native(folder).c_str(),
        SYMBOLIC_LINK_FLAG_DIRECTORY | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE);
    const auto isThere = [&link] { return QFileInfo::exists(link); };
    return isThere()
        || (runOutsideWine({u"/bin/ln"_s, u"-s"_s, QFileInfo(folder).fileName()}, link)
            && QTest::qWaitFor(isThere)); // nobody waits for programs of the other system
}

void removeLink(const QString &link)
{
    if (QFileInfo::exists(link) && RemoveDirectoryW(native(link).c_str()) == FALSE)
        runOutsideWine({u"/bin/rm"_s}, link);
}

/// A copy of this program in a folder of its own, with its libraries and nothing else beside it.
class PrivateCopy
{
public:
    PrivateCopy()
    {
        QDir(m_folder.path()).mkpath(u"own ö/current"_s);
        for (const QString &name : {QFileInfo(QCoreApplication::applicationFilePath()).fileName(),
                 u"vex.dll"_s, u"vex_common_stable.dll"_s, u"vex_common_core_mini.dll"_s})
            add(name, name);
    }
    ~PrivateCopy() // the system holds programs a little longer than they run
    {
        QTRY_VERIFY(QDir(m_folder.path()).removeRecursively());
    }
    Q_DISABLE_COPY_MOVE(PrivateCopy)

    QString path(const QString &name) const { return m_folder.filePath(u"own ö/"_s + name); }

    void add(const QString &name, const QString &copy) const
    {
        const QString original = QCoreApplication::applicationDirPath() + u'/' + name;
        QVERIFY2(QFile::copy(original, path(copy)), qPrintable(original));
    }

    /// What it writes when it is run, started in a folder below its own.
    QString run(const QStringList &arguments, const QString &stubCode) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"VEX_STUB_FILE"_s, path(u"command.txt"_s));
        environment.insert(u"VEX_STUB_CODE"_s, stubCode);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(path(u"current"_s));
        process.start(
            path(QFileInfo(QCoreApplication::applicationFilePath()).fileName()), arguments);
        process.waitForFinished();
        return QString::fromUtf8(process.readAllStandardOutput()).remove(u'\r');
    }

    /// The command line that the stub got, if it ran.
    QString stubCommand() const
    {
        const QByteArray command = vex::test::contentOf(path(u"command.txt"_s));
        return QString::fromUtf8(command).remove(QChar::ByteOrderMark);
    }

private:
    QTemporaryDir m_folder;
};

class Settings : public vex::SettingsInterface
{
public:
    using vex::SettingsInterface::elevatePrivilegesAndSave;

protected:
    void writeSettings(QSettings &settings) const override { settings.setValue("value"_L1, 7); }
    void readSettings(QSettings &) override { }
    QString defaultFilePath() const override { return {}; }
};

QString killAndTell()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"wait"_s});
    child.waitForStarted();
    const QString id = QString::number(child.processId());
    const QString log = vex::test::loggedBy([&] { vex::ProcessUtils::killProcessTree(&child); });
    const bool isAlive = !child.waitForFinished(200); // taskkill alone ends processes
    child.kill();
    child.waitForFinished();
    return id + u' ' + log + (isAlive ? QString() : u", which has ended"_s);
}

QString copyAndTell(const QString &source, const QString &destination)
{
    const auto report =
        vex::test::reportOf(vex::FileCopierUtils::runFileCopier(source, destination));
    return report.message + u' ' + report.trace.join(u' ');
}

} // namespace

/// What the system's own ways to start programs make of the helper and of taskkill.
class TestElevatedCopy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copiesOrLeavesEverythingAsItWas_data()
    {
        QTest::addColumn<QString>("source"); // "<" stands for the folder of the row
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QString>("replaced"); // empty: nothing
        QTest::addColumn<int>("site"); // 0: no error
        const auto row = [](int site, const QString &source, const QString &destination,
                             const QString &replaced = {}) {
            QTest::newRow(qPrintable(source.left(20) + " to "_L1 + destination.left(20)))
                << source << destination << replaced << site;
        };
        const QString source = u"</source.ini"_s;
        // Wine 8 does not tell where a folder lies whose own path is longer than 263 characters.
        const QString longPath = u"%1/%1"_s.arg(QString(150, u'x'));
        for (const QString &name : {u"new.ini"_s, u"old.ini"_s, u"readonly.ini"_s, u"hidden.ini"_s,
                 u"with blanks -- here.ini"_s, u"ümläut Ωж.ini"_s, longPath})
            row(0, source, "</"_L1 + name, name);
        row(0, source, u"</OLD.INI"_s, u"old.ini"_s);
        row(0, source, u"</Target/../old.ini"_s, u"old.ini"_s);
        // relative, empty, other options in a quote
        for (const QString &destination : {u"new.ini"_s, u"C:new.ini"_s, QString(),
                 u"</new.ini\" --destination=\"</old.ini"_s, u"</new.ini\" --force=\"</old.ini"_s})
            row(58, source, destination);
        // folders, links, what another program may remove or has open, streams, programs, itself
        for (const QString &destination :
            {u"</Target"_s, u"</none/new.ini"_s, u"</old.ini/new.ini"_s, u"</Target\\"_s,
                u"</Target/"_s, u"</link/new.ini"_s, u"</link/inner.ini"_s, u"</held/new.ini"_s,
                u"</old.ini:stream"_s, u"</old.ini::$DATA"_s, u"</NUL"_s, u"</tool.exe"_s,
                u"</tool.CMD"_s, u"</tool.exe."_s, u"</busy.ini"_s, source})
            row(64, source, destination);
        for (const QString &from : {u"</none.ini"_s, u"</Target"_s, u"</NUL"_s,
                 u"</source.ini::$DATA"_s, u"</written.ini"_s, u"</a%2.ini"_s})
            row(61, from, u"</old.ini"_s);
        for (const QString &from :
            {u"</a%1.ini"_s, u"source.ini"_s, u"</source.ini\" --source=\"</a.ini"_s})
            row(58, from, u"</old.ini"_s);
    }
    void copiesOrLeavesEverythingAsItWas()
    {
        QFETCH(QString, source);
        QFETCH(QString, destination);
        QFETCH(QString, replaced);
        QFETCH(int, site);
        QTemporaryDir temporary;
        const QString folder = temporary.path();
        QVERIFY(QDir(folder).mkpath(u"Target"_s));
        QVERIFY(QDir(folder).mkpath(QString(150, u'x')));
        for (const QString &name :
            {u"old.ini"_s, u"readonly.ini"_s, u"hidden.ini"_s, u"busy.ini"_s, u"tool.exe"_s,
                u"written.ini"_s, u"a.ini"_s, u"a%1.ini"_s, u"a%2.ini"_s, u"Target/inner.ini"_s})
            writeFile(folder + u'/' + name, "old");
        const QByteArray content(150'000, 'n'); // several blocks
        writeFile(folder + "/source.ini"_L1, content);
        SetFileAttributesW(native(folder + "/readonly.ini"_L1).c_str(), FILE_ATTRIBUTE_READONLY);
        SetFileAttributesW(native(folder + "/hidden.ini"_L1).c_str(), FILE_ATTRIBUTE_HIDDEN);
        SetFileAttributesW(native(folder + "/busy.ini"_L1).c_str(), FILE_ATTRIBUTE_READONLY);
        QVERIFY(QDir(folder).mkpath(u"held"_s));
        QList<HANDLE> open;
        const auto closing =
            qScopeGuard([&open] { std::for_each(open.begin(), open.end(), CloseHandle); });
        constexpr DWORD kReadOrWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
        for (const auto &[name, access, sharing] :
            {std::tuple("/written.ini"_L1, GENERIC_WRITE, kReadOrWrite | FILE_SHARE_DELETE),
                {"/busy.ini"_L1, GENERIC_READ, kReadOrWrite},
                {"/held"_L1, DELETE, kReadOrWrite | FILE_SHARE_DELETE}})
            open.append(CreateFileW(native(folder + name).c_str(), access, sharing, nullptr,
                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        QVERIFY(!open.contains(INVALID_HANDLE_VALUE));
        const QString link = folder + "/link"_L1;
        if (destination.contains("link"_L1) && !makeLink(link, folder + "/Target"_L1))
            QSKIP("No link can be made here");
        const auto removal = qScopeGuard([&link] { removeLink(link); });
        QMap<QString, QString> expected = everythingIn(folder);

        const vex::Error error = vex::FileCopierUtils::runFileCopier(
            source.replace(u'<', folder), destination.replace(u'<', folder));

        static const QMap<int, QString> kMessages = {{58, u"Bad parameters provided"_s},
            {61, u"Source file is not readable"_s}, {64, u"Destination file is not writable"_s}};
        ErrorReport report;
        if (site != 0)
            report = {vex::ErrorCode::GeneralFailure, kMessages[site],
                {u"src/FileCopierUtils:%1"_s.arg(site)}};
        QCOMPARE(vex::test::reportOf(error), report);
        const auto now = everythingIn(folder);
        if (!replaced.isEmpty()) // a new one has what attributes it may
            expected[replaced] = expected.value(replaced, now[replaced]).section(u' ', 0, 0) + u' '
                + QString::fromUtf8(content);
        QCOMPARE(now.keys(), expected.keys());
        for (const QString &name : now.keys())
            QVERIFY2(now[name] == expected[name], qPrintable(name + u": "_s + now[name].left(40)));
    }

    void settingsKeepTheirRights()
    {
        const QTemporaryDir folder;
        const QByteArray before = qgetenv("TMP");
        QDir(folder.path()).mkpath(u"temporary"_s);
        qputenv("TMP", QDir::toNativeSeparators(folder.filePath(u"temporary"_s)).toUtf8());
        const QString path = folder.filePath(u"settings.ini"_s);
        writeFile(path, "[General]\nother=1\n");
        const QByteArray usual = rightsOf(path);
        setRights(path, L"D:P(A;;FA;;;BA)(A;;FR;;;SY)");
        const QByteArray rights = rightsOf(path);
        QVERIFY(rights != usual);
        const auto saved = vex::test::reportOf(Settings().elevatePrivilegesAndSave(path));
        const auto refused =
            vex::test::reportOf(Settings().elevatePrivilegesAndSave(folder.path()));
        qputenv("TMP", before);
        QCOMPARE(saved, ErrorReport());
        QCOMPARE(refused.message, u"Destination file is not writable"_s);
        QCOMPARE(rightsOf(path), rights);
        const QStringList all{u"settings.ini"_s, u"temporary"_s}; // and nothing in there
        QCOMPARE(everythingIn(folder.path()).keys(), all);
        QCOMPARE(QSettings(path, QSettings::IniFormat).allKeys(), QStringList{u"value"_s});
    }

    void otherHelpers()
    {
        const QString failed = u"Copying the file failed src/FileCopierUtils:68"_s;
        // none; copied; codes of failure; ended by force
        for (const auto &[code, said] : {std::pair(QString(), failed), {u"0"_s, u" "_s},
                 {u"4"_s, failed}, {u"-1073741819"_s, failed}}) {
            const PrivateCopy program;
            if (!code.isEmpty())
                program.add(u"vex_test_stub.exe"_s, u"Vex-File-Copier.exe"_s);
            QCOMPARE(program.run({u"copy"_s, u"C:/a b/ö.ini"_s, u"C:/c"_s}, code), said);
            const QString command = program.stubCommand();
            const QString options = u" --source=\"C:/a b/ö.ini\" --destination=\"C:/c\""_s;
            QVERIFY2(code.isEmpty() ? command.isEmpty() : command.endsWith(options),
                qPrintable(command));
        }
    }

    void processTree()
    {
        // where taskkill is, beside the system's own, and its code
        for (const auto &[place, code] : {std::pair(u"taskkill.exe"_s, u"0"_s),
                 {u"taskkill.exe"_s, u"128"_s}, {u"current/taskkill.exe"_s, u"0"_s}}) {
            const PrivateCopy program;
            program.add(u"vex_test_stub.exe"_s, place);
            const QString told = program.run({u"kill"_s}, code);
            const QString id = told.section(u' ', 0, 0);
            if (place.contains(u'/')) { // the system's own was asked
                QCOMPARE(program.stubCommand(), QString());
                continue;
            }
            QCOMPARE(program.stubCommand(), u"taskkill /T /F /pid "_s + id);
            const bool isEnded = code == "0"_L1;
            QVERIFY2(told.startsWith(id
                         + (isEnded ? " 0 src/ProcessUtils:42 "_L1 : " 1 src/ProcessUtils:40 "_L1))
                    && told.contains("KillProcessTree("_L1)
                    && told.endsWith(isEnded ? u": SUCCESS"_s : u": Couldn't stop "_s + id),
                qPrintable(told));
        }
    }
};

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const QString task = arguments.value(1);
    if (task == "wait"_L1) {
        QThread::sleep(60);
    } else if (task == "kill"_L1) {
        std::fputs(killAndTell().toUtf8().constData(), stdout);
    } else if (task == "copy"_L1) {
        const QString told = copyAndTell(arguments.value(2), arguments.value(3));
        std::fputs(told.toUtf8().constData(), stdout);
    } else {
        TestElevatedCopy test;
        return QTest::qExec(&test, argc, argv);
    }
    return 0;
}

#include "tst_ElevatedCopy_win.moc"

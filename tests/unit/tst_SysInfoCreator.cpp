#include <vex/SysInfoCreator.h>

#include "ErrorTrace.h"
#include "Files.h"
#include "Processes.h"

#include <QProcess>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>

#if defined(Q_OS_LINUX)
#    include <sys/resource.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::contentOf;
using vex::test::ErrorReport;

namespace {

constexpr auto kReportWanted = "VEX_TEST_REPORT"; // this program prints a report then

QString oneLine(QString text)
{
    return text.replace(u'\n', u'|');
}

} // namespace

class TestSysInfoCreator : public QObject
{
    Q_OBJECT

    const BuildInfoData m_build{u"1%1"_s, u"a\nb"_s, u"a\"b;c$d\u202e"_s, {}, u"\xd800"_s};
    const QString m_buildText = u"Version: 1%1|Program: %1|Built from: a<U+000A>b|"
                                "Branch: a\"b;c$d<U+202E>|Build date (UTC): unknown|"
                                "Build time (UTC): <U+D800>|vex: 6.0.0|"_s;

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    /// What the system tells other ways.
    void facts()
    {
        const SystemInfo info = SysInfoCreator::systemInfo();
        for (const QString &text : {info.osName, info.kernel, info.processor, info.architecture})
            QVERIFY(!text.isEmpty());
        QVERIFY(info.memoryBytesFree > 0 && info.memoryBytesFree <= info.memoryBytesTotal);
#if defined(Q_OS_LINUX)
        QCOMPARE(info.memoryBytesTotal, qint64{sysconf(_SC_PHYS_PAGES)} * sysconf(_SC_PAGESIZE));
        QCOMPARE(
            info.logicalProcessors, ('\n' + contentOf(u"/proc/cpuinfo"_s)).count("\nprocessor\t"));
#else
        QCOMPARE(info.logicalProcessors, qEnvironmentVariableIntValue("NUMBER_OF_PROCESSORS"));
#endif
        qsizetype seen = 0;
        for (const SystemInfo::Drive &drive : info.drives) {
            const QStorageInfo other(drive.isSpaceAsked ? drive.name : QString());
            if (other.rootPath() != drive.name || other.bytesTotal() <= 0)
                continue; // a name that is not shown whole
            ++seen;
            QCOMPARE(drive.bytesTotal, other.bytesTotal());
            // others write meanwhile; what is kept for root is more
            QVERIFY(
                std::abs(*drive.bytesFree - other.bytesAvailable()) <= other.bytesTotal() / 100);
        }
        QVERIFY(seen > 0);
    }

    void texts()
    {
        SystemInfo info;
        info.kernel = u"a\x1b[2J\U0001f600b"_s;
        info.logicalProcessors = 3;
        info.memoryBytesTotal = 16750372864;
        info.memoryBytesFree = 1023;
        info.drives = {{u"/a: \n%1"_s, u"fixed"_s, true, (1 << 20) - 1, 0},
            {u"/b"_s, u"memory"_s, true, 1024, {}}, {u"/c"_s, u"network"_s, false, {}, {}},
            {u"/d"_s, u"fixed"_s, true, std::numeric_limits<qint64>::max(), 1048523}};
        QCOMPARE(oneLine(SysInfoCreator::systemText(info)),
            u"Operating system: unknown|Operating system version: unknown|Kernel: "
            u"a<U+001B>[2J\U0001f600b|"
            "Processor: unknown|Logical processors: 3|Architecture: unknown|"
            "Memory: 15.6 GiB (16750372864 bytes)|Memory free: 1023 bytes|"
            "Drive /a: <U+000A>%1: fixed, 1.0 MiB (1048575 bytes), free 0 bytes|"
            "Drive /b: memory, 1.0 KiB (1024 bytes), free unknown|Drive /c: network, space not "
            "asked|"
            "Drive /d: fixed, 8.0 EiB (9223372036854775807 bytes), free 1023.9 KiB (1048523 bytes)|"
            "Locale: unknown|Qt: unknown|"_s);
        QString expected = m_buildText;
        expected.replace(u"Program: %1"_s, u"Program: "_s + SysInfoCreator::programPath());
        QCOMPARE(oneLine(SysInfoCreator::applicationText(m_build)), expected);
        QVERIFY(SysInfoCreator::programPath().contains(u"/tst_unit_SysInfoCreator"_s));
    }

    void files()
    {
        const QTemporaryDir folder;
        const auto at = [&folder](const QString &name) { return folder.filePath(name); };
        const auto write = [this](const QString &path) {
            return test::reportOf(SysInfoCreator::writeApplicationInfo(path, m_build));
        };
        const auto refused = [](const QString &path, const QString &reason, int line = 2) {
            return ErrorReport{GeneralFailure, u"Cannot write %1: %2"_s.arg(path, reason),
                {u"src/SysInfoCreator:%1"_s.arg(line)}};
        };
        QDir().mkpath(at(u"folder/full"_s));
        QList<std::pair<QString, QString>> refusals{{at(u"folder"_s), u"It is no regular file"_s},
            {{}, u"No file name specified"_s}, {at(u"a\0b"_s), u"The name holds a NUL"_s}};
#if defined(Q_OS_WIN)
        QCOMPARE(write(at(u"none/report"_s)).code, GeneralFailure);
#else
        refusals.append({at(u"none/../report"_s), u"No such file or directory"_s});
#endif
        for (const auto &[path, reason] : std::as_const(refusals))
            QCOMPARE(write(path), refused(path, reason));
        QCOMPARE(test::reportOf(SysInfoCreator::writeSystemInfo({})),
            refused({}, u"No file name specified"_s, 1));
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList{u"folder"_s});

        QCOMPARE(test::reportOf(SysInfoCreator::writeSystemInfo(at(u"new"_s))), ErrorReport());
        QVERIFY(contentOf(at(u"new"_s)).startsWith("Operating system: "));
#if defined(Q_OS_LINUX)
        QVERIFY(QFile::link(u"new"_s, at(u"link"_s)) && QFile::link(u"link"_s, at(u"links"_s)));
        QCOMPARE(write(at(u"links"_s)), ErrorReport());
        QVERIFY(QFileInfo(at(u"links"_s)).isSymLink() && QFileInfo(at(u"link"_s)).isSymLink());
        QVERIFY(mkfifo(at(u"pipe"_s).toUtf8().constData(), 0600) == 0);
        QCOMPARE(write(at(u"pipe"_s)), refused(at(u"pipe"_s), u"It is no regular file"_s));

        // a device that fills up in the middle, for this process alone
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit tight{20, before.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &tight);
        const ErrorReport full = write(at(u"new"_s));
        setrlimit(RLIMIT_FSIZE, &before);
        QCOMPARE(full, refused(at(u"new"_s), u"File too large"_s));
        QCOMPARE(
            QDir(folder.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
            (QStringList{u"folder"_s, u"link"_s, u"links"_s, u"new"_s, u"pipe"_s}));
#else
        QCOMPARE(write(at(u"new"_s)), ErrorReport());
#endif
        QCOMPARE(contentOf(at(u"new"_s)), SysInfoCreator::applicationText(m_build).toUtf8());
    }

#if defined(Q_OS_LINUX)
    /// Mounts that are hard to tell, for one process in a namespace of its own; one is a server
    /// that never answers.
    void mounts()
    {
        const QTemporaryDir folder;
        QProcess process;
        process.setWorkingDirectory(folder.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1StringView(kReportWanted), u"1"_s);
        environment.insert(u"HOME"_s, folder.filePath(u"home"_s));
        environment.insert(u"USER"_s, u"zaphod"_s);
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        const QString script = uR"(set -e
            put() { mkdir -p "$1"; mount -t tmpfs -o size=4m none "$1"; }
            bind() { mkdir -p "$2"; mount --bind "$1" "$2"; }
            put ./a; rm -rf probe; echo ready
            hostname zarquon
            odd=$(printf 'odd\n\t\\040#'); put "$odd"; put "$odd"; bind "$odd" ./odd-once-again
            put file; touch file/f bound; mount --bind file/f bound; umount file
            put part; mkdir part/p; bind part/p ./folder; umount part
            put over/low; put over; put over/low/x
            put home/h; put Zaphod/u; bind /proc ./system
            mkdir dead; if [ -w /dev/fuse ]; then exec 3<>/dev/fuse
            mount -i -t fuse -o fd=3,rootmode=40000,user_id=0,group_id=0 none dead; fi
            exec "$0")"_s;
        process.start(u"unshare"_s,
            {u"--map-root-user"_s, u"--mount"_s, u"--uts"_s, u"sh"_s, u"-c"_s, script,
                QCoreApplication::applicationFilePath()});
        if (!process.waitForStarted())
            QSKIP(qPrintable(process.errorString()));
        const bool isAnswered = process.waitForFinished(20000);
        const QString text = QString::fromUtf8(process.readAll());
        if (!text.startsWith("ready"_L1))
            QSKIP(qPrintable("no right to mount: "_L1 + text));
        QVERIFY2(isAnswered, "the server was asked");
        QStringList drives;
        for (QString line : text.split(u'\n')) {
            if (line.startsWith("Drive ~"_L1) || line.startsWith("Drive "_L1 + folder.path()))
                drives.append(line.remove(folder.path() + u'/'));
        }
        const QString space = u": memory, 4.0 MiB (4194304 bytes), free 4.0 MiB (4194304 bytes)"_s;
        const QString odd = u"Drive odd<U+000A><U+0009>\\040#"_s;
        QStringList expected{u"Drive (user)/u"_s + space, u"Drive a"_s + space,
            u"Drive folder"_s + space, u"Drive ~/h"_s + space, odd + space, u"Drive over"_s + space,
            u"Drive over/low/x"_s + space};
        if (QFileInfo(u"/dev/fuse"_s).isWritable())
            expected.insert(2, u"Drive dead: unknown, space not asked"_s);
        else
            qInfo("without the server that never answers: no right to /dev/fuse");
        QVERIFY2(drives == expected, qPrintable(text));
        QVERIFY(!text.contains(u"zarquon"_s) && !text.contains(u"zaphod"_s, Qt::CaseInsensitive));
    }
#endif
};

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(kReportWanted)) {
        const QString text = SysInfoCreator::systemText(SysInfoCreator::systemInfo())
            + SysInfoCreator::applicationText({});
        std::fputs(qUtf8Printable(text), stdout);
        return 0;
    }
    const QCoreApplication application(argc, argv);
    TestSysInfoCreator test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_SysInfoCreator.moc"

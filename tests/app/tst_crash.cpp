#include "Files.h"
#include "Processes.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

using namespace Qt::StringLiterals;

/// What the program leaves behind when it crashes, in each of the ways that it can be asked for.
class TestCrash : public QObject
{
    Q_OBJECT

    struct Crashed
    {
        int exitCode = -1;
        QProcess::ExitStatus exitStatus = QProcess::NormalExit;
        QString errors;
        QString reportPath;
        QString report;
        qint64 milliseconds = 0;
    };

    /// Runs the program in folders of its own.
    static Crashed run(
        const QStringList &arguments, const QString &folder, const QString &limit = u"-c 0"_s)
    {
        QProcess program;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"VEX_MULTIPLE_EXCEPTION_HANDLERS_ENABLED"_s);
        environment.insert(u"XDG_DATA_HOME"_s, folder); // not asked on Windows
        program.setProcessEnvironment(environment);
        QElapsedTimer timer;
        timer.start();
#ifdef Q_OS_WIN
        std::ignore = limit;
        program.start(QCoreApplication::applicationDirPath() + u"/vex"_s, arguments);
#else // no core files
        program.start(u"/bin/sh"_s,
            QStringList{u"-c"_s, u"ulimit -c 0; ulimit %1; exec \"$0\" \"$@\""_s.arg(limit),
                QCoreApplication::applicationDirPath() + u"/vex"_s}
                + arguments);
#endif
        program.waitForFinished(20000);
        Crashed crashed;
        crashed.milliseconds = timer.elapsed();
        crashed.exitCode = program.exitCode();
        crashed.exitStatus = program.exitStatus();
        crashed.errors = QString::fromUtf8(program.readAllStandardError()).remove(u'\r');
        const QRegularExpression named(u"the report is (.*)\\n"_s);
        crashed.reportPath = named.match(crashed.errors).captured(1);
        if (!crashed.reportPath.isEmpty())
            crashed.report = QString::fromUtf8(vex::test::contentOf(crashed.reportPath));
#ifdef Q_OS_WIN
        if (!crashed.reportPath.isEmpty()) // it is among the user's own there
            QFile::remove(crashed.reportPath);
#endif
        return crashed;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QProcess program;
        program.start(QCoreApplication::applicationDirPath() + u"/vex"_s, {u"--version"_s});
        program.waitForFinished();
        if (program.errorString() == vex::test::kNoProcesses)
            QSKIP("qemu-user cannot start the program.");
    }

    void gallery_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::addColumn<qint64>("exception");
        QTest::addColumn<QString>("function"); // with its file behind it
        const auto row = [](const char *kind, int signalNumber, qint64 exception,
                             const char *function) {
            QTest::newRow(kind) << signalNumber << exception << QString::fromLatin1(function);
        };
        constexpr qint64 kAccess = 0xC0000005;
        constexpr qint64 kAborted = 3; // how abort() ends
        row("null-write", SIGSEGV, kAccess, "writeToNull");
        row("null-call", SIGSEGV, kAccess, "callNull");
        row("illegal", SIGILL, 0xC000001D, "runIllegalInstruction");
        row("abort", SIGABRT, kAborted, "callAbort");
        row("exception", SIGABRT, kAborted, "throwException");
        row("noexcept", SIGABRT, kAborted, "throwDespitePromise");
        row("pure-virtual", SIGABRT, kAccess, "callPureVirtual"); // MinGW has null in its place
        row("thread", SIGSEGV, kAccess, "writeToNull");
        row("stack-overflow", SIGSEGV, 0xC00000FD, "fillStack");
        row("thread-stack-overflow", SIGSEGV, 0xC00000FD, "fillStack");
        row("recursion", SIGSEGV, kAccess, "recurse");
        row("static-destructor", SIGSEGV, kAccess, "writeToNull");
        row("receiver", SIGSEGV, kAccess, "writeToNull");
        row("two-threads", SIGSEGV, kAccess, "writeToNull");
#if defined(__x86_64__) || defined(_M_X64)
        row("divide", SIGFPE, 0xC0000094, "divideByZero");
#endif
#ifndef Q_OS_WIN
        row("bus", SIGBUS, 0, "readBehindFile");
#endif
#if !VEX_SANITIZED // whose heap notices, and is not damaged
        row("heap", SIGSEGV, kAccess, "damageHeap");
        row("thread-heap", SIGSEGV, kAccess, "damageHeapBesideThread");
#endif
    }
    void gallery()
    {
        QFETCH(int, signalNumber);
        QFETCH(qint64, exception);
        QFETCH(QString, function);

        const QTemporaryDir folder;
        const QString kind = QString::fromLatin1(QTest::currentDataTag());
        const Crashed crashed = run({u"crash"_s, kind}, folder.path());
        const QByteArray shown = (crashed.errors + u'\n' + crashed.report).toUtf8();
#ifdef Q_OS_WIN
        std::ignore = signalNumber;
        QCOMPARE(quint32(crashed.exitCode), quint32(exception));
#else
        std::ignore = exception;
        QCOMPARE(crashed.exitStatus, QProcess::CrashExit);
        QCOMPARE(crashed.exitCode, signalNumber);
        QCOMPARE(QFile::permissions(crashed.reportPath),
            QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
#endif
        QVERIFY2(crashed.milliseconds < 5000, QByteArray::number(crashed.milliseconds).constData());
        const QRegularExpression frame(
            u"\\n\\t[^\\n]*%1[^\\n]* \\[0x[0-9a-f]{16}(\\+\\d+)?\\]\\(([^\\n]*\\.cpp:\\d+|No line info)\\)\\n"_s
                .arg(function));
        QVERIFY2(frame.match(crashed.report).captured(2).contains(u".cpp:"_s), shown.constData());
        QStringList parts{u"Crash: "_s, u"\nVersion: 6."_s, u"\nParameters: vex"_s,
            u" crash "_s + kind, u"\n.Backtrace end\n"_s};
        if (!kind.endsWith("heap"_L1)) // which is needed for these
            parts += {u"\nBranch: "_s, u"\nKernel: "_s, u"\nQt: "_s};
        for (const QString &part : std::as_const(parts))
            QVERIFY2(crashed.report.contains(part), shown.constData());
    }

    void turnedOff()
    {
        const QTemporaryDir folder;
        const Crashed off =
            run({u"crash"_s, u"null-write"_s, u"--disable-crash-handler"_s}, folder.path());
        QVERIFY(off.exitStatus == QProcess::CrashExit || off.exitCode != 0);
        QVERIFY2(!off.errors.contains(u"has crashed"_s), qPrintable(off.errors));
        QVERIFY(QDir(folder.path()).isEmpty());
    }

#ifndef Q_OS_WIN
    void noPlaceForReport()
    {
        const QTemporaryDir folder;
        for (const auto &[isInTheWay, limit, problem] :
            {std::tuple(true, u"-c 0"_s, u"no report can be written to .*: Not a directory"_s),
                std::tuple(false, u"-f 0"_s, u"could not be written whole: File too large"_s)}) {
            QFile inTheWay(folder.filePath(u"vex"_s));
            QVERIFY(isInTheWay ? inTheWay.open(QIODevice::WriteOnly) : inTheWay.remove());
            const Crashed crashed = run({u"crash"_s, u"abort"_s}, folder.path(), limit);
            QCOMPARE(crashed.exitCode, SIGABRT);
            QVERIFY2(crashed.errors.contains(
                         QRegularExpression(problem + u"\\n\\.Backtrace begin\\n"_s)),
                qPrintable(crashed.errors));
        }
    }
#endif
};

QTEST_GUILESS_MAIN(TestCrash)
#include "tst_crash.moc"

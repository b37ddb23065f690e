#include <QProcess>
#include <QTest>

#include <vex/CrashHandler.h>
#include <vex/CrashPad.h>

#include <csignal>
#include <cstring>

#include "detail/DecimalOrZero.h"
#include "platform/StackWalk.h"

#include "Processes.h"

using namespace Qt::StringLiterals;

namespace {

vex::detail::Backtrace backtrace;

[[gnu::noinline]] void nameOwnStack()
{
    vex::detail::collectFrames(nullptr, &backtrace);
    vex::detail::nameFrames(&backtrace);
}

} // namespace

/// Another process crashes; here is what it leaves.
class TestCrashHandler : public QObject
{
    Q_OBJECT

#ifdef Q_OS_WIN
    static constexpr int kWriteToNull = int(0xC0000005);
    static constexpr int kOverflow = int(0xC00000FD);
#else
    static constexpr int kWriteToNull = SIGSEGV;
    static constexpr int kOverflow = SIGSEGV;
#endif
    static constexpr int kDone = -1; // an ordinary end, with 0

private Q_SLOTS:
    void leaves_data()
    {
        QTest::addColumn<int>("end");
        QTest::addColumn<QStringList>("present"); // regular expressions
        QTest::addColumn<QStringList>("absent");
        QTest::addColumn<QString>("others"); // of the environment; empty for unset

        const QString begin = u"(^|\\n)\\.Backtrace begin\\n"_s;
        const QString end = u"\\n\\.Backtrace end\\n"_s;
        const QString crash = begin
            + u"\\t[^\\n]*crash(\\(\\))? \\[(0x[0-9a-f]{16})\\+\\d+\\]\\([^\\n]*CrashingProgram.cpp:\\d+\\)\\n"_s;
        const QString crashTwice = crash + u"(.|\\n)*\\n\\t\\3 "_s; // among the modules, too
        const QString any = u"Backtrace"_s;
        const QString received = u"received"_s;
        const QString own = u"own handler"_s;
        const QString failed = u"could not be handled as usual"_s;
        const auto row = [](const char *steps, int end_, const QStringList &present,
                             const QStringList &absent, const QString &others = {}) {
            QTest::newRow(steps) << end_ << present << absent << others;
        };

        row("install crash", kWriteToNull, {crash, end, received}, {failed, crashTwice});
        row("silent install crash", kWriteToNull, {received}, {any, u"Modules"_s});
        row("disable install crash", kWriteToNull, {u"Crash handling is disabled"_s},
            {received, any});
        row("install own disable crash", kWriteToNull, {own}, {received, any});
        row("install-in-threads crash", kWriteToNull, {crash, received},
            {u"Backtrace begin(.|\\n)*Backtrace begin"_s});
        row("install crash-deep", kWriteToNull,
            {begin + u"(\\t.*\\n){62}\\.Backtrace end\\n"_s, received}, {});
        row("limit receiver-hangs crash", kWriteToNull, {crash, failed}, {});
        row("install receiver-crashes crash", kWriteToNull, {crash, received, failed},
            {u"received(.|\\n)*received"_s});
        row("install log-hangs crash", kWriteToNull, {failed, u"crash"_s, received}, {});
        row("own install log-aborts crash", kWriteToNull, {failed, u"crash"_s, received}, {own});
        row("install call", kDone, {begin + u"(.*\\n)*.*main"_s, end, received}, {failed});
        row("install overflow-prepared", kOverflow,
            {begin + u"(.*\\n){1,3}\\t[^\\n]*overflow"_s, received}, {failed});
        const QString others = u" 1 "_s;
#ifdef Q_OS_WIN
        row("receiver-waits install crash", kWriteToNull, {crash, received}, {failed});
        row("install ask-filter", kDone, {received, u"answer 1"_s}, {});
        row("install ask-filter no-number", kDone, {received, u"answer 1"_s}, {}, u"0"_s);
        row("install ask-filter others", kDone, {received, u"answer 0"_s}, {}, others);
#else
        row("alarm receiver-waits install crash", SIGSEGV, {crash, received}, {failed});
        row("own install crash others", SIGSEGV, {crash, u"received\\n+own handler, unmapped"_s},
            {failed}, others);
        row("own install abort", SIGABRT, {u"received\\n+own handler, sent"_s}, {failed}, others);
        row("own install log-aborts crash others", SIGSEGV, {failed, u"received\\n+own handler"_s},
            {}, others);
        row("own install crash no-number", SIGSEGV, {received}, {own}, u"1x"_s);
        row("own-mends install write-where-mended trap", SIGTRAP,
            {u"received(.|\\n)*goes on(.|\\n)*received"_s}, {}, others);
        row("own-mends install write-where-mended alarm-now", SIGALRM, {u"goes on"_s}, {}, others);
        row("install own-passes-on disable crash", SIGSEGV, {own}, {received, any});
        row("own compare install disable compare", kDone, {u"same"_s}, {});
        row("own compare install compare", kDone, {u"other"_s}, {});
        row("install use-up-descriptors crash", SIGSEGV, {crash, received}, {failed});
        row("install wild-call", SIGSEGV,
            {begin
                + u"\\t\\(No symbol\\) \\[0x00007fff00001000\\]\\(No line info\\)\\n\\t.*CrashingProgram.cpp:"_s},
            {failed});
#endif
    }
    void leaves()
    {
        QFETCH(int, end);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        QFETCH(QString, others);

        QProcess program;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"VEX_MULTIPLE_EXCEPTION_HANDLERS_ENABLED"_s);
        if (!others.isEmpty())
            environment.insert(u"VEX_MULTIPLE_EXCEPTION_HANDLERS_ENABLED"_s, others);
        environment.insert(u"QT_FORCE_STDERR_LOGGING"_s, u"1"_s);
        // what was there before is to be the system's, not the sanitizer's
        environment.insert(u"ASAN_OPTIONS"_s,
            u"handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:use_sigaltstack=0"_s);
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        QStringList steps = QString::fromLatin1(QTest::currentDataTag()).split(u' ');
        steps.removeAll(u"others"_s); // only tell rows apart
        steps.removeAll(u"no-number"_s);
        program.start(QCoreApplication::applicationDirPath() + u"/vex_test_crash"_s, steps);
        const bool hasEnded = program.waitForFinished(10000);
        if (program.errorString() == vex::test::kNoProcesses)
            QSKIP("qemu-user cannot start the program.");
        QVERIFY2(hasEnded, "does not end"); // the end of the QProcess kills it
        const QString text = QString::fromUtf8(program.readAll()).remove(u'\r');
        for (const QString &pattern : present + absent)
            QVERIFY2(text.contains(QRegularExpression(pattern)) == present.contains(pattern),
                qPrintable(pattern + u'\n' + text));
        QCOMPARE(program.exitStatus(), end == kDone ? QProcess::NormalExit : QProcess::CrashExit);
        QCOMPARE(program.exitCode(), end == kDone ? 0 : end);
    }

    void ownStack()
    {
        nameOwnStack();
        const auto *const frame = std::find_if(backtrace.frames.begin(), backtrace.frames.end(),
            [](const auto &any) { return std::strstr(any.symbol.text(), "nameOwnStack"); });
        QVERIFY(frame != backtrace.frames.end());
        QCOMPARE(frame->address - frame->displacement, reinterpret_cast<quint64>(&nameOwnStack));
        QVERIFY(std::strstr(frame->file.text(), "tst_CrashHandler.cpp") && frame->line > 0);
        QVERIFY(QByteArray(frame->module.text()).startsWith("tst_internal_CrashHandler"));
        QVERIFY(frame->moduleStart < frame->address);

        backtrace.count = 2;
        backtrace.frames[0].symbol.clear();
        backtrace.frames[1].symbol.clear();
        backtrace.frames[0].symbol << "f"; // of C; as a type it would be float
        backtrace.frames[1].symbol << "_Z1fi";
        vex::detail::demangleNames(&backtrace);
        QCOMPARE(backtrace.frames[0].symbol.text(), "f");
        QCOMPARE(backtrace.frames[1].symbol.text(), "f(int)");

        vex::detail::Frame bare;
        bare.address = 0x1234;
        bare.moduleStart = 0x1000;
        bare.module << "m";
        QCOMPARE(vex::detail::frameLine(bare).text(),
            "\t(No symbol) [0x0000000000001234](No line info)");
        QCOMPARE(vex::detail::moduleLine(bare).text(), "\t0x0000000000001234 m+0x234");
    }

    void numbersOfTheEnvironment()
    {
        for (const char *text : {" 1 ", "+7", "2147483647", "2147483648", "-2147483648",
                 "-2147483649", "99999999999999999999", "", "1x", "- 1", "010"})
            QCOMPARE(vex::detail::decimalOrZero(text), QByteArray(text).toInt(nullptr, 10));
    }

    void folderOfReports()
    {
        const QString byDefault = CrashPad::reportsDirPath();
        QVERIFY(byDefault.endsWith(u"/tst_internal_CrashHandler/CrashPad"_s));
        QCoreApplication::setApplicationName(u"chemist"_s);
        QVERIFY(CrashPad::reportsDirPath().endsWith(u"/chemist/CrashPad"_s));
        QCoreApplication::setApplicationName({});
        for (const QString &path : {u"a%1b"_s, QString()}) {
            CrashPad::setReportsDirPath(path);
            QCOMPARE(CrashPad::reportsDirPath(), path.isEmpty() ? byDefault : path);
        }
    }
};

QTEST_GUILESS_MAIN(TestCrashHandler)
#include "tst_CrashHandler.moc"

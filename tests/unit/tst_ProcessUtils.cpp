#include "Files.h"
#include "LoggedMessage.h"
#include "Processes.h"

#include <vex/ProcessUtils.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QUuid>

#include <thread>

#include <pthread.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using vex::test::contentOf;

namespace {

/// The processes that run with @p mark in their environment, which they all inherit.
QStringList marked(const QByteArray &mark)
{
    QStringList ids = QDir(u"/proc"_s).entryList({u"[1-9]*"_s}, QDir::Dirs);
    ids.removeIf([&mark](const QString &id) {
        return id.toLongLong() == getpid()
            || !contentOf(u"/proc/%1/environ"_s.arg(id)).contains(mark);
    });
    return ids;
}

/// A process whose first thread has ended, while another one makes processes.
int runWithoutFirstThread()
{
    std::thread([] {
        usleep(50000); // the first thread ends meanwhile
        for (int i = 0; i < 20; ++i) {
            if (fork() == 0)
                execlp("sleep", "sleep", "30", nullptr);
            usleep(1000);
        }
        sleep(30);
    }).detach();
    pthread_exit(nullptr);
}

} // namespace

class tst_ProcessUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void treesEnd_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<int>("count"); // of processes, at least
        const auto shell = [](const char *script) {
            return QStringList{u"sh"_s, u"-c"_s, QString::fromLatin1(script)};
        };
        // each makes the next one and a sleeping one, for longer than ending them all may take
        const QString chain =
            u"[ $1 -eq 0 ] || { sleep 30 & sleep 0.05; sh -c \"$0\" \"$0\" $(($1 - 1)); }; wait"_s;
        for (const auto &[name, command, count] :
            {std::tuple("alone", QStringList{u"sleep"_s, u"30"_s}, 1),
                {"below", shell("sleep 30 & sh -c 'sleep 30 & sleep 30 & wait' & wait"), 5},
                {"deaf", shell("trap '' HUP INT QUIT TERM TSTP; (sleep 30; :) & wait"), 3},
                {"own sessions",
                    shell("setsid sleep 30 & setsid sh -c 'setsid sleep 30 & wait' & wait"), 4},
                {"stopped", shell("sleep 30 & sleep 30 & kill -STOP $$; :"), 3},
                {"zombies", shell("true & true & sleep 30 & exec sleep 30"), 2},
                {"forks on", {u"sh"_s, u"-c"_s, chain, chain, u"150"_s}, 20},
                {"odd name", {m_folder.filePath(u"x) Z 1 (\ny"_s), u"30"_s}, 1},
                {"first thread ended",
                    {QCoreApplication::applicationFilePath(), u"--without-first-thread"_s}, 3}})
            QTest::newRow(name) << command << count;
    }
    void treesEnd()
    {
        QFETCH(QStringList, command);
        QFETCH(const int, count);
        const QString program = command.takeFirst();
        const int runs = qMax(1, qEnvironmentVariableIntValue("VEX_RUNS"));
        for (int run = 0; run < runs; ++run) {
            const QByteArray mark = "VEX_TREE=" + QUuid::createUuid().toByteArray();
            QProcess process;
            process.setEnvironment(QProcess::systemEnvironment() << QString::fromLatin1(mark));
            process.start(program, command);
            if (!process.waitForStarted() && process.errorString() == vex::test::kNoProcesses)
                QSKIP("qemu-user cannot start the program.");
            // not asked again: a process has no environment for a moment when it becomes a program
            while (marked(mark).size() < count)
                usleep(1000);
            const QString id = QString::number(process.processId());
            QElapsedTimer timer;
            timer.start();
            const QString logged =
                vex::test::loggedBy([&process] { vex::ProcessUtils::killProcessTree(&process); });
            QVERIFY(timer.elapsed() < 5000);
            QVERIFY2(logged.startsWith("0 src/ProcessUtils:42 "_L1), qPrintable(logged));
            QVERIFY2(logged.contains(": Ended %1"_L1.arg(id)), qPrintable(logged));
            QCOMPARE(marked(mark), QStringList());
            QVERIFY(process.waitForFinished());
            QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        }
    }
    /// Whatever cannot be ended is told, and nothing else is.
    void nothingToEndIsTold()
    {
        QProcess process;
        const auto logged = [](QProcess *of) {
            return vex::test::loggedBy([of] { vex::ProcessUtils::killProcessTree(of); });
        };
        QVERIFY(logged(nullptr).endsWith(": Couldn't stop 0"_L1));
        QVERIFY(logged(&process).startsWith("1 src/ProcessUtils:40 "_L1));
        process.start(u"true"_s, {});
        const qint64 id = process.processId();
        // ended, which Qt does not notice as long as nothing asks it
        while (!contentOf(u"/proc/%1/stat"_s.arg(id)).contains(") Z "))
            usleep(1000);
        QVERIFY(logged(&process).endsWith(u": Couldn't stop %1"_s.arg(id)));
        QVERIFY(process.waitForFinished());
    }

    void initTestCase()
    {
        QVERIFY(QFile::copy(u"/bin/sleep"_s, m_folder.filePath(u"x) Z 1 (\ny"_s)));
    }

private:
    const QTemporaryDir m_folder;
};

int main(int argc, char *argv[])
{
    if (argc == 2 && QByteArrayView(argv[1]) == "--without-first-thread")
        return runWithoutFirstThread();
    QCoreApplication application(argc, argv);
    tst_ProcessUtils test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ProcessUtils.moc"

#include "platform/ProcessTree.h"

#include "Files.h"
#include "Processes.h"

#include <QProcess>
#include <QTest>

#include <csignal>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestProcessTree : public QObject
{
    Q_OBJECT

private:
    /// Starts a process with one below it, and gives the number of that.
    static void start(QProcess *process, qint64 *below)
    {
        process->start(u"sh"_s, {u"-c"_s, u"sleep 30 & echo $!; wait"_s});
        if (!process->waitForStarted() && process->errorString() == vex::test::kNoProcesses)
            QSKIP("qemu-user cannot start the program.");
        QVERIFY(process->waitForReadyRead());
        *below = process->readAll().trimmed().toLongLong();
        QVERIFY(*below > 0);
    }
    static char stateOf(qint64 id)
    {
        const QByteArray line = vex::test::contentOf(u"/proc/%1/stat"_s.arg(id));
        return line.isEmpty() ? 'X' : line[line.lastIndexOf(')') + 2];
    }

private Q_SLOTS:
    /// A number that does not belong to a child of ours may have gone to a stranger.
    void othersStay()
    {
        QProcess process;
        qint64 below = 0;
        start(&process, &below);
        QVERIFY(!vex::detail::endProcessTree(below));
        QVERIFY(QByteArrayView("RS").contains(stateOf(below)));
        QVERIFY(vex::detail::endProcessTree(process.processId()));
        QVERIFY(QByteArrayView("XZ").contains(stateOf(below)));
        QVERIFY(process.waitForFinished());
    }
    /// Without descriptors to look for processes with, none is called ended that is not.
    void lackOfDescriptorsIsTold()
    {
        int refused = 0;
        for (rlim_t spare = 0; spare < 5; ++spare) {
            QProcess process;
            qint64 below = 0;
            start(&process, &below);
            const int next = dup(0);
            close(next);
            rlimit before{};
            getrlimit(RLIMIT_NOFILE, &before);
            const rlimit tight{rlim_t(next) + spare, before.rlim_max};
            setrlimit(RLIMIT_NOFILE, &tight);
            const bool isEnded = vex::detail::endProcessTree(process.processId()).has_value();
            setrlimit(RLIMIT_NOFILE, &before);
            refused += isEnded ? 0 : 1;
            if (isEnded)
                QVERIFY(QByteArrayView("XZ").contains(stateOf(below)));
            kill(static_cast<pid_t>(below), SIGKILL); // which may not have been found
            QVERIFY(process.waitForFinished()); // ended, or it would stay stopped for good
        }
        QVERIFY(refused > 0 && refused < 5);
    }
};

QTEST_GUILESS_MAIN(TestProcessTree)
#include "tst_ProcessTree.moc"

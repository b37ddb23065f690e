#include "Files.h"
#include "Processes.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <memory>

#if defined(Q_OS_UNIX)
#    include <csignal>

#    include <fcntl.h>
#    include <poll.h>
#    include <pty.h>
#    include <sys/stat.h>
#    include <sys/wait.h>
#    include <termios.h>
#    include <unistd.h>
#    include <utmp.h>
constexpr bool kOnUnix = true;
#else
#    include <windows.h>
constexpr bool kOnUnix = false;
#endif

using namespace Qt::StringLiterals;

namespace {

struct Outcome
{
    int exitCode;
    QString output;
    QString errors;
};

/// Runs a program in @p folder and waits for its end. Standard input is a file, or empty.
Outcome runIn(const QString &folder, const QString &program, const QStringList &arguments,
    const QString &input = QProcess::nullDevice())
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardInputFile(input);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

/// The content of every file below a folder, by its path in there.
QMap<QString, QByteArray> filesIn(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        files.insert(QDir(folder).relativeFilePath(path), vex::test::contentOf(path));
    }
    return files;
}

/// What Ctrl-C does in a terminal; the process ends as one that failed.
void interrupt(QProcess &process)
{
    const qint64 id = process.processId();
#if defined(Q_OS_UNIX)
    QCOMPARE(kill(static_cast<pid_t>(id), SIGINT), 0);
#else
    FreeConsole();
    QVERIFY(AttachConsole(static_cast<DWORD>(id)));
    QVERIFY(SetConsoleCtrlHandler(nullptr, TRUE)); // this process shares the console now
    QVERIFY(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    FreeConsole();
#endif
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitCode(), 1);
}

} // namespace

class tst_vexcli : public QObject
{
    Q_OBJECT

private:
    /// Runs the program; '' is an empty argument, and "..." may hold blanks. Standard input is the
    /// file behind " < " or the text behind " <<< ".
    Outcome vex(const QString &command)
    {
        QString typed = command.section(" <<< "_L1, 0, 0);
        if (typed != command) {
            write(u"../input"_s, command.section(" <<< "_L1, 1).toUtf8());
            typed += " < ../input"_L1;
        }
        QStringList arguments = QProcess::splitCommand(typed.section(" < "_L1, 0, 0));
        arguments.replaceInStrings(u"''"_s, QString());
        const QString input = typed.section(" < "_L1, 1);
        return runIn(m_folder.path(), m_program, arguments,
            input.isEmpty() ? QProcess::nullDevice() : m_folder.filePath(input));
    }
    void write(const QString &name, const QByteArray &content)
    {
        vex::test::writeFile(m_folder.filePath(name), content);
    }
    /// Also a path that is absolute.
    QByteArray read(const QString &name) { return vex::test::contentOf(m_folder.filePath(name)); }

    /// @p record for each number from 0 on.
    static QByteArray many(const char *record, int count)
    {
        QByteArray text;
        for (int i = 0; i < count; ++i)
            text += QByteArray(record).replace("%1", QByteArray::number(i));
        return text;
    }
    /// What a line of a transcript does, in lines: standard output as it is but for blank lines,
    /// JSON in one line; then standard error behind "!" and the exit code.
    QStringList outcomeOf(QString command)
    {
        for (const auto &[text, meant] :
            {std::pair("\\n"_L1, u'\n'), {"\\r"_L1, u'\r'}, {"\\t"_L1, u'\t'}, {"\\e"_L1, u'\x1b'},
                {"\\u2028"_L1, u'\u2028'}, {"\\BOM"_L1, u'\ufeff'}})
            command.replace(text, QString(QChar(meant)));
        const QString name = command.section(u' ', 0, 0);
        const QString rest = command.section(u' ', 1);
        if (name == "write"_L1) {
            write(rest.section(u' ', 0, 0), rest.section(u' ', 1).toUtf8());
            return {};
        }
        QStringList lines;
        Outcome outcome{0, {}, {}};
        if (name == "cat"_L1)
            outcome.output = QString::fromUtf8(read(rest));
        else if (name == "sum"_L1)
            outcome.output = QString::fromLatin1(
                QCryptographicHash::hash(read(rest), QCryptographicHash::Sha256).toHex());
        else if (name == "ls"_L1)
            outcome.output = files().join(", "_L1);
        else
            outcome = vex(rest);
        if (outcome.output.startsWith(u'[') || outcome.output.startsWith(u'{')) // JSON
            outcome.output = outcome.output.simplified();
        const QString error = "!"_L1 + QString::number(outcome.exitCode) + u' ';
        for (const auto &[mark, text] :
            {std::pair(QString(), outcome.output), {error, outcome.errors}})
            for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts))
                lines.append(mark + line);
        return lines;
    }
    /// True when @p line is @p expected, in which "..." stands for anything.
    static bool matches(const QString &line, const QString &expected)
    {
        QString pattern = QRegularExpression::escape(expected).replace("\\.\\.\\."_L1, ".*"_L1);
        pattern = QRegularExpression::anchoredPattern(pattern);
        return QRegularExpression(pattern, QRegularExpression::DotMatchesEverythingOption)
            .match(line)
            .hasMatch();
    }
    QStringList files() const { return m_folder.entryList(QDir::Files | QDir::Hidden); }
    void start(QProcess *process, const QString &command)
    {
        process->setWorkingDirectory(m_folder.path());
        process->start(m_program, command.split(u' '));
    }

    const QString m_program = QCoreApplication::applicationDirPath() + u"/vex"_s;
    // absolute also for the drive letter that a path of the build machine has under Wine
    const QDir m_source = QDir(QFileInfo(QStringLiteral(VEX_SOURCE_FOLDER)).absoluteFilePath());
    std::unique_ptr<QTemporaryDir> m_outer;
    QDir m_folder; ///< of the test's own, in one that nothing else is in

private Q_SLOTS:
    void initTestCase()
    {
        if (runIn(u"."_s, m_program, {u"--version"_s}).errors == vex::test::kNoProcesses)
            QSKIP("qemu-user cannot start the program.");
    }
    void init()
    {
        m_outer = std::make_unique<QTemporaryDir>();
        QVERIFY(m_outer->isValid());
        m_folder = QDir(m_outer->filePath(u"work"_s));
        QVERIFY(m_folder.mkpath(u"."_s));
#if defined(Q_OS_WIN)
        // interrupt() has it ignored, which programs started from here would inherit
        SetConsoleCtrlHandler(nullptr, FALSE);
#endif
    }
    void cleanup()
    {
        // under Wine a process that has ended holds its working folder a little longer
        QTRY_VERIFY(!m_outer->isValid() || m_folder.removeRecursively());
    }

    /// Commands and all that they print, as recorded in tests/app/transcripts. To record anew what
    /// is right now, set VEX_RECORD and look at the difference.
    void transcripts_data()
    {
        QTest::addColumn<QString>("path");
        const QDir folder(m_source.filePath(u"tests/app/transcripts"_s));
        for (const QString &name : folder.entryList({u"*.txt"_s})) {
            if (VEX_HAS_PLOT || name != "plots.txt"_L1)
                QTest::newRow(qPrintable(name)) << folder.filePath(name);
        }
    }
    void transcripts()
    {
        QFETCH(const QString, path);
        const QDir data(m_source.filePath(u"data"_s));
        for (const QString &name : data.entryList(QDir::Files))
            QVERIFY(QFile::copy(data.filePath(name), m_folder.filePath(name)));
        QStringList actual;
        QStringList expected = QString::fromUtf8(read(path)).split(u'\n');
        expected.removeLast();
        for (qsizetype i = 0; i < expected.size();) {
            const QString command = expected[i++];
            const auto isAnswer = [&] {
                return i < expected.size() && !expected[i].startsWith("$ "_L1)
                    && !expected[i].startsWith("# "_L1);
            };
            if (!command.startsWith("$ "_L1)) {
                actual.append(command); // a comment
                continue;
            }
            const QString typed = command.section("  !"_L1, 0, 0);
            const QStringList answers = outcomeOf(typed.sliced(2));
            const bool isError = answers.size() == 1 && answers[0].startsWith(u'!');
            const QString line = isError ? typed + "  "_L1 + answers[0] : typed;
            actual.append(matches(line, command) ? command : line);
            for (const QString &answer : answers.sliced(isError ? 1 : 0)) {
                const bool isRest = isAnswer() && expected[i] == "..."_L1;
                if (isRest && !matches(answer, expected.value(i + 1))) {
                    if (actual.last() != "..."_L1)
                        actual.append(u"..."_s); // many lines
                    continue;
                }
                i += isRest ? 1 : 0;
                const bool isExpected = isAnswer() && matches(answer, expected[i]);
                actual.append(isExpected ? expected[i] : answer);
                i += isExpected ? 1 : 0;
            }
            while (isAnswer())
                ++i; // not what came
        }
        const QByteArray text = actual.join(u'\n').toUtf8() + '\n';
        if (qEnvironmentVariableIsSet("VEX_RECORD")) {
            vex::test::writeFile(path, text);
        }
        for (qsizetype i = 0; i < std::max(actual.size(), expected.size()); ++i)
            QVERIFY2(actual.value(i) == expected.value(i),
                qPrintable(u"line %1: %2\nis now: %3"_s.arg(
                    QString::number(i + 1), expected.value(i), actual.value(i))));
    }
    /// An input is not overwritten through any other spelling of its path; devices are no files.
    void pathsAreThePlatforms()
    {
        QVERIFY(m_folder.mkdir(u"sub"_s));
        const QString native = QDir::toNativeSeparators(m_folder.path());
        const QString drive = kOnUnix ? u"C:"_s : native.left(2);
#if defined(Q_OS_UNIX)
        QCOMPARE(mkfifo(qPrintable(m_folder.filePath(u"pipe"_s)), 0600), 0);
        const int reader = open(qPrintable(m_folder.filePath(u"pipe"_s)), O_RDWR);
        const auto closed = qScopeGuard([reader] { ::close(reader); });
#endif
        // "nowhere" is a device
        for (const auto &[path, onUnix, onWindows] :
            {std::tuple(m_folder.filePath(u"sub/../in"_s), "refused", "refused"),
                {u"IN"_s, "written", "refused"}, {u"SUB/../In"_s, "fails", "refused"},
                {u".\\sub\\..\\in"_s, "written", "refused"}, {u"in."_s, "written", "refused"},
                {u"\\\\?\\%1\\in"_s.arg(native), "fails", "refused"},
                {drive + "in"_L1, "written", "refused"}, {u"Q:\\out.csv"_s, "written", "fails"},
                {u"\\\\none\\x\\out.csv"_s, "written", "fails"}, {u"a?b.csv"_s, "written", "fails"},
                {u"\u03bc\U0001F600.csv"_s, "written", "written"}, {u"NUL"_s, "written", "nowhere"},
                {u"pipe"_s, "nowhere", "written"}}) {
            write(u"in"_s, ">a\nACD\n");
            const auto [exitCode, output, errors] =
                vex(u"pattern --fasta in --min-share 100 -o \"%1\""_s.arg(path));
            const QLatin1StringView expected(kOnUnix ? onUnix : onWindows);
            const int expectedCode = expected == "refused"_L1 ? 2 : expected == "fails"_L1 ? 1 : 0;
            QVERIFY2(exitCode == expectedCode, qPrintable(path + errors));
            QCOMPARE(output.isEmpty(), exitCode > 0);
            if (expected == "fails"_L1)
                QVERIFY(errors.startsWith("vex: cannot write "_L1 + path + u':'));
            QCOMPARE(read(u"in"_s), ">a\nACD\n");
            QVERIFY2(files().size() == (expected == "written"_L1 ? 2 : 1), qPrintable(path));
            for (const QString &file : files())
                QVERIFY(QFile::remove(m_folder.filePath(file)));
        }
    }

    void longSecretsAreWhole()
    {
        QByteArray plain(3 * 65536 - 1, '\0'); // read in pieces: one ends between CR and LF
        QByteArray list;
        for (int i = 0; i < plain.size(); ++i) {
            plain[i] = static_cast<char>(i % 251);
            list += (i > 0 ? ", " : "") + QByteArray::number(i % 251 + i + 1);
        }
        write(u"plain"_s, plain + "\r\n");
        QCOMPARE(vex(u"obfuscate --drop-line-end -o list < plain"_s).exitCode, 0);
        QCOMPARE(read(u"list"_s), list + '\n');
        QCOMPARE(vex(u"deobfuscate -o again < list"_s).exitCode, 0);
        QCOMPARE(read(u"again"_s), plain);
    }

    void interruptedMoveLeavesEveryFileWhole()
    {
        constexpr int kFiles = 3000;
        QVERIFY(m_folder.mkdir(u"from"_s) && m_folder.mkdir(u"to"_s));
        for (int i = 0; i < kFiles; ++i)
            write(u"from/%1"_s.arg(i), QByteArray(i, 'x'));
        const QString command = u"move from to -o steps.csv"_s;
        QProcess process;
        start(&process, command);
        QTRY_VERIFY_WITH_TIMEOUT(!QDir(m_folder.filePath(u"to"_s)).isEmpty(), 30000);
        interrupt(process);
        QCOMPARE(process.readAllStandardError(),
            "vex: Moving from was cancelled\nvex: run the same command again to go on\n");
        const auto left = filesIn(m_folder.filePath(u"from"_s));
        auto all = filesIn(m_folder.filePath(u"to"_s));
        QCOMPARE(read(u"steps.csv"_s).count("\ncopied,"), all.size());
        QCOMPARE(read(u"steps.csv"_s).count("\nleft behind,file,"), left.size());
        QCOMPARE(left.size() + all.size(), kFiles);
        const QByteArray summary = process.readAllStandardOutput();
        QVERIFY(summary.endsWith(u"  and %1 more\n"_s.arg(1 + left.size() - 20).toUtf8()));
        QCOMPARE(summary.count('\n'), 26); // five on the whole, 20 entries, and how many more
        all.insert(left);
        for (auto file = all.cbegin(); file != all.cend(); ++file)
            QCOMPARE(file.value().size(), file.key().toInt());
        QCOMPARE(vex(command).exitCode, 0);
        QCOMPARE(filesIn(m_folder.filePath(u"to"_s)), all);
    }

#if defined(Q_OS_UNIX)
    /// What a link leads to is touched only when that is asked for.
    void moveFollowsLinksOnlyWhenAsked()
    {
        const QTemporaryDir elsewhere(u"/dev/shm/vex-XXXXXX"_s);
        const QByteArray device = QStorageInfo(m_folder.path()).device();
        if (!elsewhere.isValid() || QStorageInfo(elsewhere.path()).device() == device)
            QSKIP("there is no second file system");
        const QString to = elsewhere.filePath(u"a/b"_s);
        write(u"from/sub folder/\u03bc.bin"_s, QByteArray(100000, '\xff'));
        write(u"outside/a, b.txt"_s, "abc");
        const QString outsidePath = m_folder.filePath(u"outside"_s);
        const auto tree = filesIn(m_folder.filePath(u"from"_s));
        const auto outside = filesIn(outsidePath);
        QVERIFY(QFile::link(outsidePath, m_folder.filePath(u"from/link"_s)));

        const Outcome refused = vex(u"move from %1 -o steps.csv"_s.arg(to));
        QCOMPARE(refused.exitCode, 1);
        QVERIFY(refused.errors.contains("the link from/link leads to"_L1));
        QCOMPARE(refused.output, QString());
        QVERIFY(QDir(elsewhere.path()).isEmpty() && read(u"steps.csv"_s).isNull());
        QCOMPARE(filesIn(m_folder.filePath(u"from"_s)), tree);
        QCOMPARE(filesIn(outsidePath), outside);

        const Outcome followed = vex(u"move --follow-links from "_s + to);
        QVERIFY(filesIn(outsidePath).isEmpty());
        QCOMPARE(filesIn(to + "/link"_L1), outside);
        // the link stays, and so does the folder; as told, the way back is open
        QCOMPARE(followed.errors,
            u"vex: Cannot remove from\nvex: see what was left behind; to undo, move %1 back\n"_s
                .arg(to));
        QCOMPARE(vex(u"move --keep-undeletable %1 from"_s.arg(to)).exitCode, 0);
        QCOMPARE(filesIn(m_folder.filePath(u"from"_s)), tree);
        QCOMPARE(filesIn(outsidePath), outside);
        // nothing to follow; and ".." is above what the link leads to
        QCOMPARE(vex(u"move from/link/../from renamed"_s).exitCode, 0);
        QCOMPARE(filesIn(outsidePath), outside);
    }

    /// What a shell can do to a program: an error that tells, and nothing lost or left behind.
    void circumstancesAreTold()
    {
        write(u"many.fasta"_s, many(">p%1\nACDEFGHIK\n", 60));
        write(u"masses.txt"_s, QByteArray("1000\n").repeated(4000000));
        // read in pieces of 1 MiB: one ends between CR and LF
        write(u"edge.txt"_s, "123\r\n" + QByteArray("1\r\n").repeated(349524) + "x\r\n");
        for (const auto &[name, command, code, expected] :
            {std::tuple("full device", "pattern 1000 >/dev/full", 1,
                 "cannot write standard output: No space left on device"),
                {"help to a full device", "--help >/dev/full", 1, "No space left on device"},
                {"file too large", "pattern 1 2 3 4 5 6 7 -o out.csv", 1,
                    "cannot write out.csv: File too large"},
                {"plot too large", "pattern 1 2 3 4 5 6 7 --plot out.svg", 1,
                    "cannot write out.svg: File too large"},
                {"closed output", "pattern 1000 >&-", 1,
                    "cannot write standard output: Bad file descriptor"},
                {"closed output, file", "pattern --mass 99 -o new.csv >&- 2>&-", 1, ""},
                {"closed input", "pattern --masses - <&-", 1, "cannot read standard input: "},
                {"gone reader",
                    "--version; (sleep 0.3; \"$0\" pattern 1000 -o new.csv; echo code $? >&2) | "
                    "true;"
                    "exit 1",
                    1, "cannot write standard output: Broken pipe\ncode 1"},
                {"full log", "pattern x --log /dev/full", 2,
                    "cannot write /dev/full: No space left on device"},
                {"log onto the input", "mass --masses in --log in", 2, "in would overwrite in"},
                {"argument of bytes", "pattern --masses \"$(printf 'a\\377')\"", 2,
                    "argument 3 is no UTF-8 text"},
                {"little memory", "mass --masses masses.txt -o new.csv", 1,
                    "there is not enough memory"},
                {"line end in two pieces", "mass --masses edge.txt", 1,
                    "edge.txt, line 349526: mass 'x' is not a number"},
                {"few descriptors", "pattern --fasta many.fasta --plot 'plots/{name}.png'", 0, ""},
                {"name of a folder above", "pattern --fasta in.fasta --plot 'plots/{name}/x.svg'",
                    1, "cannot write plots/__/x.svg"},
                {"options of Qt", "pattern 1000 -platform nonsense", 2, "no option -p"},
                std::tuple("style of nobody", "pattern 1000 --plot new.svg", 0, "")}) {
            const QString text = QLatin1StringView(command);
            if (!VEX_HAS_PLOT && text.contains("--plot"_L1))
                continue; // there is nothing to be written
            if (VEX_SANITIZED && text.contains("masses.txt"_L1))
                continue; // a sanitizer takes all addresses for itself
            m_folder.mkdir(u"plots"_s);
            write(u"in"_s, "1\n");
            write(u"in.fasta"_s, ">..\nACD\n");
            write(u"out.csv"_s, "old");
            write(u"out.svg"_s, "old");
            const QString limits = text.contains("out."_L1) ? u"trap '' XFSZ; ulimit -f 8;"_s
                : text.contains("masses.txt"_L1)            ? u"ulimit -v 90000;"_s
                : text.contains("many"_L1)                  ? u"ulimit -n 40;"_s
                                                            : QString();
            const Outcome outcome = runIn(m_folder.path(), u"sh"_s,
                {u"-c"_s,
                    limits + u"export QT_QPA_PLATFORM=none QT_STYLE_OVERRIDE=none; \"$0\" "_s
                        + text,
                    m_program});
            const QString told = QLatin1StringView(name) + u": "_s
                + QString::number(outcome.exitCode) + outcome.errors;
            QVERIFY2(outcome.exitCode == code, qPrintable(told));
            QVERIFY2(outcome.errors.contains(QLatin1StringView(expected)), qPrintable(told));
            QVERIFY2(outcome.errors.count(u'\n') <= 2, qPrintable(told));
            QCOMPARE(read(u"in"_s), "1\n");
            QCOMPARE(read(u"out.csv"_s) + read(u"out.svg"_s), "oldold");
            const bool isNew = QFile::remove(m_folder.filePath(u"new.csv"_s))
                || QFile::remove(m_folder.filePath(u"new.svg"_s));
            QVERIFY2(isNew == (code == 0 && text.contains("new."_L1)), qPrintable(told));
            QCOMPARE(files().size(), 7);
            if (text.contains("{name}.png"_L1))
                QCOMPARE(QDir(m_folder.filePath(u"plots"_s)).count(), 2 + 60);
        }
    }

    /// What is typed for a secret is not seen, and the terminal is as before whatever happens.
    void typedSecretsAreHidden()
    {
        for (const auto &[command, typed, code, expected] :
            {std::tuple("obfuscate", "AA hunter2\n", 0, "\r\n66, 67, 35, "),
                {"deobfuscate", "[66, 67]\n", 0, "\r\nAA"},
                {"obfuscate", "AA\x04\x04", 0, "66, 67"},
                {"obfuscate", "AA\x1a\x1c\n", 0, "66, 67"}, // Ctrl-Z and Ctrl-\ are data here
                {"obfuscate", "AA\nBB\n", 1, "vex: more than one line was typed"},
                std::tuple("obfuscate", "hunter2\x03", 1, "vex: interrupted")}) {
            int terminal = -1;
            int ours = -1;
            QCOMPARE(openpty(&terminal, &ours, nullptr, nullptr, nullptr), 0);
            const auto closed = qScopeGuard([terminal, ours] { ::close(terminal), ::close(ours); });
            termios before;
            QCOMPARE(tcgetattr(ours, &before), 0);
            const QByteArray program = QFile::encodeName(m_program);
            const pid_t child = fork();
            if (child == 0) {
                login_tty(ours);
                execl(program.constData(), "vex", command, nullptr);
                _exit(127);
            }
            auto ended = qScopeGuard([child] { kill(child, SIGKILL); });
            QByteArray shown;
            const auto shows = [&shown, terminal](const char *text) {
                pollfd more{terminal, POLLIN, 0};
                char piece[4096];
                if (poll(&more, 1, 10) > 0)
                    shown.append(piece, qMax<ssize_t>(0, ::read(terminal, piece, sizeof piece)));
                return shown.contains(text);
            };
            QTRY_VERIFY2(shows("it is not shown\r\n"), shown.constData());
            QCOMPARE(::write(terminal, typed, strlen(typed)), ssize_t(strlen(typed)));
            int status = 0;
            bool isEnded = false; // the macro asks again
            QTRY_VERIFY2(
                (shows(""), isEnded = isEnded || waitpid(child, &status, WNOHANG) == child),
                shown.constData());
            ended.dismiss();
            QVERIFY(WIFEXITED(status));
            QTRY_VERIFY2(shows(expected), shown.constData());
            QCOMPARE(WEXITSTATUS(status), code);
            QVERIFY2(!shown.contains("hunter2") && !shown.contains("[66"), shown.constData());
            termios after;
            QCOMPARE(tcgetattr(ours, &after), 0);
            QCOMPARE(after.c_lflag, before.c_lflag);
            QCOMPARE(after.c_cc[VSUSP], before.c_cc[VSUSP]);
        }
    }

    /// Ctrl-C ends the program whatever it waits for.
    void interruptIsAnswered()
    {
        QCOMPARE(mkfifo(qPrintable(m_folder.filePath(u"pipe"_s)), 0600), 0);
        for (const QString &command : {u"pattern --fasta - -o out.csv"_s, u"mass --masses -"_s,
                 u"mass --masses pipe -o out.csv"_s, u"apex -"_s, u"pattern --fasta pipe"_s,
                 u"mass --mono 1 --averagine pipe"_s, u"mass --mono 1 -o pipe"_s,
                 u"pattern 1 --log pipe"_s, u"deobfuscate -o out.csv"_s}) {
            QProcess process;
            start(&process, command);
            QVERIFY(process.waitForStarted() && !process.waitForFinished(100));
            interrupt(process);
            QCOMPARE(process.readAllStandardError(), "vex: interrupted, no file was written\n");
            QCOMPARE(files(), QStringList());
        }
    }
#endif

    void interruptLeavesNothingBehind()
    {
        write(u"in"_s, many(">p%1\nACDEFGHIKLMNPQRSTVWY\n", 400000));
        QProcess process;
        start(&process, u"pattern --fasta in -o out.csv"_s);
        QVERIFY(process.waitForReadyRead(30000)); // the input is read, the output under way
        interrupt(process);
        QVERIFY(process.readAllStandardError().contains("interrupted"));
        QCOMPARE(files(), QStringList{u"in"_s});
    }
};

QTEST_GUILESS_MAIN(tst_vexcli)
#include "tst_vexcli.moc"

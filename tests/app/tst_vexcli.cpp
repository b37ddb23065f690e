#include "Processes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStorageInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <memory>

#if defined(Q_OS_UNIX)
#    include <csignal>
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

/// Runs a program in @p folder and waits for its end.
Outcome runIn(const QString &folder, const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

QJsonDocument jsonOf(const Outcome &outcome)
{
    return QJsonDocument::fromJson(outcome.output.toUtf8());
}

/// The content of every file below a folder, by its path in there.
QMap<QString, QByteArray> filesIn(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        if (file.open(QIODevice::ReadOnly))
            files.insert(QDir(folder).relativeFilePath(file.fileName()), file.readAll());
    }
    return files;
}

/// What Ctrl-C does in a terminal.
void interrupt(const QProcess &process)
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
}

} // namespace

class tst_vexcli : public QObject
{
    Q_OBJECT

private:
    Outcome vex(const QStringList &arguments)
    {
        return runIn(m_folder->path(), m_program, arguments);
    }
    Outcome vex(const QString &command) { return vex(command.split(u' ', Qt::SkipEmptyParts)); }
    void write(const QString &name, const QByteArray &content)
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    QByteArray read(const QString &name)
    {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Writes some files below the folder and tells their content by path.
    QMap<QString, QByteArray> writeTree(const QString &name)
    {
        const QMap<QString, QByteArray> files{{u"a, b.txt"_s, "abc"}, {u"empty"_s, {}},
            {u"sub folder/\u03bc.bin"_s, QByteArray(100000, '\xff')}, {u"sub folder/x/y"_s, "\n"}};
        QDir(m_folder->path()).mkpath(name + "/sub folder/x"_L1);
        for (auto file = files.cbegin(); file != files.cend(); ++file)
            write(name + u'/' + file.key(), file.value());
        return files;
    }
    QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
    }

    const QString m_program = QCoreApplication::applicationDirPath() + u"/vex"_s;
    // absolute also for the drive letter that a path of the build machine has under Wine
    const QDir m_source = QDir(QFileInfo(QStringLiteral(VEX_SOURCE_FOLDER)).absoluteFilePath());
    std::unique_ptr<QTemporaryDir> m_folder;

private Q_SLOTS:
    void initTestCase()
    {
        if (runIn(u"."_s, m_program, {u"--version"_s}).errors == vex::test::kNoProcesses)
            QSKIP("qemu-user cannot start the program.");
    }
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
#if defined(Q_OS_WIN)
        // interrupt() has it ignored, which programs started from here would inherit
        SetConsoleCtrlHandler(nullptr, FALSE);
#endif
    }
    void cleanup()
    {
        // under Wine a process that has ended holds its working folder a little longer
        QTRY_VERIFY(QDir(m_folder->path()).removeRecursively());
    }

    /// One clear line, the right exit code, nothing on standard output and no file left behind.
    void badInput_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QByteArray>("content"); // of the file "in"
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("error");
        const auto table = QString::fromUtf8(R"(
no command | 2 | | | no command
unknown command | 2 | patern | | 'patern'
unknown option | 2 | mass --frobnicate | | frobnicate
two sources of masses | 2 | mass --mono 1 --average 1 | | exactly one
no formula text | 2 | formula | | no formula
formula without letters | 1 | formula 123 | | '123' holds no element symbol
count without digits | 1 | formula H2 C- | | the count '-' at character 2 is not a number
count out of range | 1 | mass --mono 5 --formula C1e999 | | '1e999' at character 2 is out of range
decimals in a formula | 2 | mass --mono 5 --formula C4.9384H7.75 | | (C49384H77500)
decimal comma | 2 | mass --mono 5 --formula C4,9H7 | | (C49H70)
group in a composition | 2 | mass --mono 5 --formula C(H3)2 | | ')' at character 5
composition without mass | 1 | mass --mono 5 --formula Xy2 | | no positive finite mass
negative count | 1 | pattern --mass 5 --formula C5H-1 | | negative count
unknown averagine | 1 | pattern --mass 5 --averagine mine | | cannot read mine
two compositions | 2 | mass --mono 5 --averagine senko --formula C1 | | exclude
mass is no number | 2 | pattern --mass 1,5 | | '1,5' is not a number
mass is not finite | 2 | pattern --mass nan | | 'nan' is not finite
negative mass | 2 | pattern --mass -1 | | '-1' is negative
averagine file is no JSON | 1 | mass --mono 1 --averagine in | {\n"atoms": oops} | in, line 2
averagine file without atoms | 1 | mass --mono 1 --averagine in | {} | no object "atoms"
averagine of iron | 1 | mass --mono 1 --averagine in | {"atoms": {"Fe": 1}} | 'Fe'
averagine of less than nothing | 1 | mass --mono 1 --averagine in | {"atoms": {"C": -1}} | count of C
bad mass in a file | 1 | mass --masses in | mass\n100\nabc\n | in, line 3: mass 'abc'
mistyped first mass | 1 | mass --masses in | 1O0\n100\n | in, line 1: mass '1O0'
infinite first mass | 1 | mass --masses in | inf\n100\n | in, line 1: mass 'inf'
file without masses | 1 | mass --masses in | mass\n | no mass
binary file | 1 | mass --masses in | 1§\n\n | in, line 1
missing FASTA file | 1 | pattern --fasta missing | | cannot read missing
folder as FASTA file | 1 | pattern --fasta . | | cannot read .
empty FASTA file | 1 | pattern --fasta in -o out.csv | \n | in holds no sequence
no residue | 1 | pattern --fasta in -o out.csv | >a one\nACD\n>b\nAC*D\n | in, line 4, column 3: '*' is no residue code (b)
building block of the table | 1 | pattern --fasta in | >a\nA1\n | line 2, column 2: '1'
byte that is no text | 1 | pattern --fasta in | >a\r\nA§\r\n | column 2: byte 0xc2
sequence without header | 1 | pattern --fasta in | ACD\n | in, line 1: sequence without
header without sequence | 1 | pattern --fasta in | >a\nACD\n>b | in, line 3: b has no sequence
bad published masses | 1 | pattern --fasta in --published in | >a\nACD\n | in, line 1: expected name
output onto the input | 2 | pattern --fasta in -o ./in | >a\nACD\n | ./in would overwrite in
two outputs in one file | 2 | pattern --mass 1 -o a.svg --plot ./a.svg | | ./a.svg would overwrite a.svg
output in a missing folder | 1 | pattern --mass 1 -o no/out.csv | | cannot write no/out.csv
share above 1 | 2 | pattern --mass 1 --min-share 5 | | above 1
unknown model | 2 | pattern --mass 1 --model fine | | 'fine' is none of
capacity of the classic model | 2 | pattern --mass 1 --capacity 9 | | goes with --model list
capacity below one atom | 2 | pattern --mass 1 --model list --capacity 2 | | at least 3
capacity without end | 2 | pattern --mass 1 --model list --capacity 1e9 | | '1e9' is above
composition of the grid | 2 | pattern --mass 1 --model grid --formula C1 | | --formula does not go
table without patterns | 2 | distribution --count 0 -o out.csv | | '0' is not a whole number of at least 1
patterns in one place | 2 | distribution --spacing 0 | | '0' is not above 0
trim of everything | 2 | distribution --final-trim 1 | | cuts every pattern away
table without end | 1 | distribution --count 1e9 -o out.csv | | largest mass
peak of no mass | 2 | distribution --peak 1 | | goes with --mass
signal with a decimal comma | 1 | apex in | t;y\n1,5;2\n | in, line 2: x '1,5' has a decimal comma
decimal commas between commas | 1 | apex in | 1,5,2,3\n | found 4; numbers take a decimal point
two kinds of separators | 1 | apex in | t,y\n1,2\n2;3\n | in, line 3: expected x and y, separated by a comma
mistyped first point | 1 | apex in | # c\n1O,5\n1,2\n | in, line 2: x '1O' is not a number
intensity is not finite | 1 | compare in in -o out.csv | 1,2\n2,nan\n | in, line 2: y 'nan' is not finite
intensity out of range | 1 | apex in | 1,1e999\n | in, line 1: y '1e999' is out of range
signal without points | 1 | compare in in | minutes,intensity\n | in holds no point
comparison onto its input | 2 | compare missing in -o ./in | 1,2\n | ./in would overwrite in
range of nothing | 2 | apex in --start 5 --end 5 | 1,2\n | no later than it starts
unit of neither kind | 2 | apex in --x-unit hours | 1,2\n | neither minutes nor seconds
two outputs on standard output | 2 | distribution --mass 1 -o - | | cannot hold both
file types of nothing | 2 | filetype | | no file name
file type of no name | 2 | filetype a.csv '' | | an empty text
list of some types | 2 | filetype --list a.csv | | takes no names
no path | 2 | checkpath --kind name | | no path
kind of nothing | 2 | checkpath --kind folder in | | 'folder' is none of name, path, local
move to nowhere | 2 | move . | | give a source and a destination
move of nothing | 2 | move '' to | | an empty text
move to no name | 2 | move . '' | | an empty text
missing source | 1 | move missing to | | there is no such folder
file as source | 1 | move in to | | in: it is not a folder
file as destination | 1 | move . in | | in is not a folder
move to itself | 2 | move . ./ | | the same folder
move into itself | 2 | move . a/b | | a/b lies in it
steps inside the source | 2 | move . ../vex-moved -o steps.csv | | cannot write the steps to steps.csv
steps in the place of a folder | 2 | move . ../vex-moved/a -o ../vex-moved | | cannot write the steps
steps in a missing folder | 1 | move . ../vex-moved -o ../vex-none/steps.csv | | cannot write ../vex-none/steps.csv
)")
                               .trimmed();
        for (const QString &line : table.split(u'\n')) {
            const QStringList fields = line.split(u'|');
            QString content = fields[3].trimmed();
            content.replace("\\n"_L1, "\n"_L1).replace("\\r"_L1, "\r"_L1);
            QTest::newRow(fields[0].trimmed().toLatin1())
                << fields[2] << content.toUtf8() << fields[1].toInt() << fields[4].trimmed();
        }
        QTest::newRow("plot of an unknown format")
            << u"pattern --mass 1 -o out.csv --plot p.pdf"_s << QByteArray()
            << (VEX_HAS_PLOT ? 2 : 1) << (VEX_HAS_PLOT ? u"p.pdf"_s : u"cannot draw"_s);
    }
    void badInput()
    {
        QFETCH(QString, command);
        QFETCH(QByteArray, content);
        QFETCH(int, exitCode);
        QFETCH(QString, error);
        write(u"in"_s, content);
        QStringList arguments = command.split(u' ', Qt::SkipEmptyParts);
        arguments.replaceInStrings(u"''"_s, QString());
        const Outcome outcome = vex(arguments);
        QCOMPARE(outcome.exitCode, exitCode);
        QCOMPARE(outcome.output, QString());
        QVERIFY2(outcome.errors.startsWith("vex: "_L1) && outcome.errors.contains(error),
            qPrintable(outcome.errors));
        QCOMPARE(outcome.errors.count(u'\n'), 1);
        QCOMPARE(files(), QStringList{u"in"_s});
    }

    void formulaTellsWhatItLeavesOut()
    {
        const Outcome outcome = vex(u"formula --json C(H3)2Cl"_s);
        QCOMPARE(outcome.exitCode, 0);
        const QJsonObject reading = jsonOf(outcome)[0].toObject();
        QCOMPARE(reading.value("counts"_L1).toObject(),
            (QJsonObject{{u"C"_s, 1}, {u"Cl"_s, 1}, {u"H"_s, 32}}));
        QStringList found;
        for (const QJsonValue &finding : reading.value("findings"_L1).toArray()) {
            found += finding["kind"_L1].toString() + u' '
                + QString::number(finding["position"_L1].toInt());
        }
        QCOMPARE(found, (QStringList{u"dropped 1"_s, u"digits joined 4"_s, u"symbol ignored 6"_s}));
    }

    void compositionsFromEverySourceAgree()
    {
        write(u"mine.json"_s,
            R"({"name": "mine", "atoms": {"C": 4.9384, "H": 7.7583, "N": 1.3577, "O": 1.4773, "S": 0.0417}})");
        write(u"masses.txt"_s, "# daltons\nmass\r\n10000"); // and no end of the last line
        const Outcome builtIn = vex(u"mass --average 1e4"_s);
        QCOMPARE(builtIn.exitCode, 0);
        for (const QString &source : {u""_s, u"--averagine senko"_s, u"--averagine mine.json"_s,
                 u"--formula C49384H77583N13577O14773S417"_s})
            QCOMPARE(vex(u"mass --masses masses.txt "_s + source).output, builtIn.output);
    }

    void proteinsHaveTheirPublishedMasses()
    {
        const Outcome outcome = vex(
            {u"pattern"_s, u"--json"_s, u"--fasta"_s, m_source.filePath(u"data/proteins.fasta"_s)});
        QCOMPARE(outcome.exitCode, 0);
        const QJsonArray proteins = jsonOf(outcome).array();
        QFile file(m_source.filePath(u"data/published_masses.csv"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QList<QByteArray> lines = file.readAll().trimmed().split('\n').sliced(2);
        QCOMPARE(proteins.size(), lines.size());
        for (qsizetype i = 0; i < lines.size(); ++i) {
            const QList<QByteArray> fields = lines[i].split(',');
            const QJsonObject protein = proteins[i].toObject();
            QCOMPARE(protein["name"_L1].toString().toLatin1(), fields[0]);
            // 5 ppm: the tables of atomic weights differ by less than 1
            for (const auto &[key, field] :
                {std::pair("averageMass"_L1, 1), std::pair("monoisotopicMass"_L1, 2)}) {
                const double published = fields[field].toDouble();
                QVERIFY(std::abs(protein[key].toDouble() - published) < 5e-6 * published);
            }
            // The most intense peak lies within 1 Da of the average mass.
            const double top = protein["monoisotopicMass"_L1].toDouble()
                + protein["bestIndex"_L1].toInt() * 1.0023;
            QVERIFY(std::abs(top - protein["averageMass"_L1].toDouble()) < 1.0);
            QVERIFY(protein["coverage"_L1].toDouble() > 0.999);
        }
    }

    void outputIsTheSameOnEveryPlatform()
    {
        QFile expected(m_source.filePath(u"tests/data/pattern.txt"_s));
        QVERIFY(expected.open(QIODevice::ReadOnly));
        const Outcome outcome = vex({u"pattern"_s, u"--fasta"_s,
            m_source.filePath(u"data/proteins.fasta"_s), u"--published"_s,
            m_source.filePath(u"data/published_masses.csv"_s), u"--min-share"_s, u"0.01"_s});
        QCOMPARE(outcome.errors, QString());
        QCOMPARE(outcome.output, QString::fromUtf8(expected.readAll()));
    }

    /// An input is not overwritten through any other spelling of its path; devices are no files.
    void pathsAreThePlatforms_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("onUnix"); // written, nowhere: 0; fails: 1; refused: 2
        QTest::addColumn<QString>("onWindows");
        QTest::newRow("itself") << u"%1/in"_s << u"refused"_s << u"refused"_s;
        QTest::newRow("by way of a folder") << u"sub/../in"_s << u"refused"_s << u"refused"_s;
        QTest::newRow("other case") << u"IN"_s << u"written"_s << u"refused"_s;
        QTest::newRow("other case of a folder") << u"SUB/../In"_s << u"fails"_s << u"refused"_s;
        QTest::newRow("backslashes") << u".\\sub\\..\\in"_s << u"written"_s << u"refused"_s;
        QTest::newRow("dot at the end") << u"in."_s << u"written"_s << u"refused"_s;
        QTest::newRow("long form") << u"\\\\?\\%2\\in"_s << u"fails"_s << u"refused"_s;
        QTest::newRow("place on a drive") << u"%3in"_s << u"written"_s << u"refused"_s;
        QTest::newRow("no such drive") << u"Q:\\out.csv"_s << u"written"_s << u"fails"_s;
        QTest::newRow("no such server") << u"\\\\none\\x\\out.csv"_s << u"written"_s << u"fails"_s;
        QTest::newRow("character") << u"a?b.csv"_s << u"written"_s << u"fails"_s;
        QTest::newRow("not of this code page")
            << u"\u03bc\U0001F600.csv"_s << u"written"_s << u"written"_s;
        QTest::newRow("null device") << u"NUL"_s << u"written"_s << u"nowhere"_s;
        QTest::newRow("null device of Unix") << u"/dev/null"_s << u"nowhere"_s << u"fails"_s;
    }
    void pathsAreThePlatforms()
    {
        QFETCH(QString, path);
        QFETCH(QString, onUnix);
        QFETCH(QString, onWindows);
        const QDir folder(m_folder->path());
        QVERIFY(folder.mkdir(u"sub"_s));
        write(u"in"_s, ">a\nACD\n");
        // the folder, the same as the system writes it, and its drive, if any
        path.replace("%1"_L1, folder.path());
        path.replace("%2"_L1, QDir::toNativeSeparators(folder.path()));
        path.replace("%3"_L1, kOnUnix ? u"C:"_s : folder.path().left(2));
        const Outcome outcome =
            vex({u"pattern"_s, u"--fasta"_s, u"in"_s, u"-o"_s, path, u"--min-share"_s, u"1"_s});
        const QString expected = kOnUnix ? onUnix : onWindows;
        const int exitCode = expected == "refused"_L1 ? 2 : expected == "fails"_L1 ? 1 : 0;
        QVERIFY2(outcome.exitCode == exitCode, qPrintable(outcome.errors));
        QCOMPARE(read(u"in"_s), ">a\nACD\n");
        QCOMPARE(files().size(), expected == "written"_L1 ? 2 : 1);
        if (expected == "fails"_L1)
            QVERIFY(outcome.errors.startsWith("vex: cannot write "_L1 + path + u':'));
    }

    void sequencesMayBeWrittenInManyWays()
    {
        write(u"plain"_s, ">p\nACDEFGHIKLMNPQRSTVWY\n");
        write(u"odd"_s,
            "\xEF\xBB\xBF; a comment\r\n>p of no importance\r\nacdefghik \tlmnp\r\n\r\nqrstvwy");
        QCOMPARE(vex(u"pattern --fasta odd"_s).output, vex(u"pattern --fasta plain"_s).output);
        write(u"ambiguous"_s, ">p\nAXU\n");
        const Outcome warned = vex(u"pattern --fasta ambiguous"_s);
        QCOMPARE(warned.exitCode, 0);
        QVERIFY(warned.errors.contains("U stands for"_L1));
        QVERIFY(warned.errors.contains("X stands for"_L1));
    }

    void patternsGoToFilesAndPlots()
    {
        const QStringList drawn{u"--plot"_s, u"plot {name}.svg"_s};
        const Outcome outcome = vex(u"pattern --mass 1000 150000 -o out.csv"_s.split(u' ')
            + (VEX_HAS_PLOT ? drawn : QStringList()));
        QCOMPARE(outcome.exitCode, 0);
        // 73 % of the signal at 150 kDa: said, not hidden
        QVERIFY(outcome.errors.contains("150000 Da: the 100 peaks hold only"_L1));
        QVERIFY(outcome.errors.contains("--model list --capacity 200 holds 100.00 %"_L1));
        const QList<QByteArray> lines = read(u"out.csv"_s).trimmed().split('\n');
        QCOMPARE(lines.size(), 201);
        double sum = 0.0;
        for (const QByteArray &line : lines.sliced(1, 100))
            sum += line.split(',').last().toDouble();
        QVERIFY(sum > 0.999 && sum < 1.0000001);
        if (!VEX_HAS_PLOT)
            QSKIP("this build cannot draw");
        QVERIFY(read(u"plot 1000_Da.svg"_s).contains("<svg"));
        QVERIFY(read(u"plot 150000_Da.svg"_s).contains("share of the whole signal"));
        QCOMPARE(vex(u"pattern --mass 1000 --plot p.png"_s).exitCode, 0);
        QVERIFY(read(u"p.png"_s).startsWith("\x89PNG"));
        write(u"wide"_s, "-1e308,1\n1e308,2\n"); // no double holds its width
        write(u"short"_s, "0,1\n5e-324,2\n1e-323,3\n"); // nor the steps of an axis for this
        for (const QString &name : {u"wide"_s, u"short"_s}) {
            const Outcome plotted = vex(u"apex --plot a.svg "_s + name);
            QVERIFY(plotted.exitCode == 0 && !plotted.errors.contains("invalid range"_L1));
        }
    }

    void tablesHaveTheSameBytesOnEveryPlatform()
    {
        for (const auto &[option, hash] :
            {std::pair(u""_s, "f34cda0fcc4637338174381a3634a766d0b54fb0d21b97a5973a07857f316bdb"),
                {u"--accurate"_s,
                    "3abcc8cdf9200e290e1c37edd145e5394402f51d904e8cdd3a4721d4a9303889"}}) {
            QCOMPARE(vex(u"distribution -o out.csv "_s + option).exitCode, 0);
            const QByteArray table = read(u"out.csv"_s);
            QCOMPARE(QCryptographicHash::hash(table, QCryptographicHash::Sha256).toHex(), hash);
        }
    }

    void modelsAgreeWhereTheyCan()
    {
        const auto pattern = [this](const QString &options) {
            return jsonOf(vex(u"pattern --json --mass "_s + options))[0];
        };
        const int best = pattern(u"50000"_s)["bestIndex"_L1].toInt();
        QCOMPARE(best, 31); // the mean of the isotopes' shifts is 31.1 Da
        QCOMPARE(pattern(u"50000 --model list"_s)["bestIndex"_L1].toInt(), best);
        QCOMPARE(pattern(u"50030 --model grid"_s)["gridMass"_L1].toDouble(), 50000.0);
        QVERIFY(
            pattern(u"150000 --model list --capacity 400"_s)["coverage"_L1].toDouble() > 0.9999);
    }

    /// The published area is that between the outermost samples in the range.
    void chromatogramHasItsPublishedApexAndArea()
    {
        write(u"s"_s, "0,1\n7.7,4\n120,2\n"); // 7.7 / 60 * 60 is not 7.7
        const QString file = m_source.filePath(u"data/l_glutamate_xic.csv"_s);
        for (const auto &[name, options, time, intensity, area] :
            {std::tuple(
                 file, u"--start 2.472833334 --end 3.022891666"_s, 2.7045, 966489.0, 71558.1),
                {u"s"_s, u"--x-unit seconds"_s, 7.7, 4.0, 356.15},
                {u"s"_s, u"--x-unit seconds --start 7 --end 8.1"_s, 7.55, 0.0, 4.30}}) {
            const QStringList arguments{u"apex"_s, u"--json"_s, name};
            const auto found = jsonOf(vex(arguments + options.split(u' ')));
            QVERIFY(std::abs(found["area"_L1].toDouble() - area) < 0.05);
            // a sample's time to the last digit
            const double tolerance = intensity > 0.0 ? 0.0 : 1e-12;
            QVERIFY(std::abs(found["apexTime"_L1].toDouble() - time) <= tolerance);
            QCOMPARE(found["apexIntensity"_L1].toDouble(), intensity); // null is 0
            QCOMPARE(found["isMiddleOfRange"_L1].toBool(), intensity == 0.0);
            if (name == file)
                QVERIFY(std::abs(found["areaBetweenSamples"_L1].toDouble() - 71540.2) < 0.05);
        }
    }

    void signalsMayBeWrittenInManyWays()
    {
        write(u"a"_s, "minutes,intensity\n1,0\n2,1e3\n3,0\n");
        const QString plain = vex(u"apex a"_s).output;
        QVERIFY(plain.contains("1000 counts x min"_L1));
        for (const char *other :
            {"1,0\r\n2,1000\r\n3,0", "\xEF\xBB\xBFt;y\r\n1;0\n\n# c\n2; +1000\n3;0",
                "1\t-0.0\n 2 \t1000 \n3\t1e-999"}) {
            write(u"a"_s, other);
            QCOMPARE(vex(u"apex a"_s).output, plain);
        }
        write(u"a"_s, "1,0\n\n3,5\n2,5\n2,5\n");
        const QString warned = vex(u"compare a a"_s).errors;
        QVERIFY(warned.contains("a, line 4: x 2 is below"_L1));
        QVERIFY(warned.contains("a, line 5: x 2 repeats"_L1));
    }

    void comparisonsNameTheRuleThatDecided()
    {
        write(u"a"_s, "1,0\n2,10\n3,0\n4,0\n5,0\n");
        write(u"0"_s, "1,0\n5,0\n");
        write(u"shifted"_s, "1,0\n2,0\n3,0\n4,10\n5,0\n");
        for (const auto &[names, rule] : {std::pair("a a", "within both"),
                 {"a 0", "one without intensity"}, {"0 0", "both without intensity"},
                 {"a shifted", "area of error"}, {"a shifted --max-area 3", "correlation"}}) {
            const Outcome outcome = vex(u"compare --json -o c.csv "_s + QLatin1StringView(names));
            QCOMPARE(outcome.exitCode, 0);
            QCOMPARE(jsonOf(outcome)["rule"_L1].toString(), QLatin1StringView(rule));
        }
        QVERIFY(read(u"c.csv"_s).contains("\n2,10,0,10\n3,0,0,0\n4,0,10,-10\n"));
    }

    void fileTypesTellWhoElseListsTheSuffix()
    {
        const auto outcome = vex(u"filetype --json a.LVCFG b/c.tar.csv noext d.p3Djs e.tabc"_s);
        QCOMPARE(outcome.exitCode, 0);
        QStringList found;
        for (const QJsonValue &file : jsonOf(outcome).array()) {
            found += file["type"_L1].toString();
            if (file["isTrace"_L1].toBool())
                found.last() += " trace"_L1;
            for (const QJsonValue &other : file["alsoListedBy"_L1].toArray())
                found.last() += ", "_L1 + other.toString();
        }
        QCOMPARE(found,
            (QStringList{u"REPORT_MODULE_RPTC_BACKWARD, REPORT_MODULE_LOAD_EXTENSIONS"_s,
                u"CSV trace"_s, u"Invalid"_s, u"Invalid"_s,
                u"REPORT_MODULE_TABC, REPORT_MODULE_TABC_BACKWARD, REPORT_MODULE_LOAD_EXTENSIONS"_s}));

        const QString list = vex({u"filetype"_s, u"--list"_s}).output;
        QCOMPARE(list.count(u'\n'), 1 + 46 + 3 + 5); // all types, odd suffixes
        QVERIFY(list.contains("\np3Djs "_L1) && list.contains("\nlvcfg "_L1));
    }

    /// One line for each file whatever its name holds.
    void namesDoNotBreakTables()
    {
        const Outcome outcome = vex({u"filetype"_s, u"a\nb.csv"_s, u"c\u2028\x1b\u202ed.txt"_s,
            u"\u03bc \U0001F600.png"_s});
        const QStringList lines = outcome.output.split(u'\n');
        QCOMPARE(lines.size(), 5);
        QVERIFY(lines[1].startsWith("a<U+000A>b.csv  "_L1));
        QVERIFY(lines[2].startsWith("c<U+2028><U+001B><U+202E>d.txt  "_L1));
        QVERIFY(lines[3].startsWith(u"\u03bc \U0001F600.png  "_s));
    }

    void pathsAreJudgedAsWhatIsAskedFor()
    {
        const QString two = u"vex: 2 of 3 are not valid\n"_s;
        for (const auto &[kinds, errors] :
            {std::pair(u"--kind name"_s, two), {u"--kind path"_s, u"vex: 1 of 3 is not valid\n"_s},
                {u"--kind local"_s, u""_s}, {u"--kind local --kind name"_s, two}, {u""_s, two}}) {
            const Outcome outcome = vex(u"checkpath a.txt data/b.txt 1:/c "_s + kinds);
            QCOMPARE(outcome.exitCode, errors.isEmpty() ? 0 : 1);
            QCOMPARE(outcome.errors, errors);
            QVERIFY(outcome.output.contains("1:/c\n"_L1)); // the report comes either way
        }
        const QString odd = u"checkpath x/../NUL\t. --kind local"_s;
        QCOMPARE(vex(odd).output,
            u"x/../NUL<U+0009>.\n"
            "  local path  not valid, taken as NUL<U+0009>.\n"
            "    reason at 4: U+0009 is not allowed\n"
            "    advice at 5: Windows drops dots and blanks at the end of a name\n"_s);
        const QJsonArray findings =
            jsonOf(vex(odd + " --json"_L1))[0]["as"_L1]["local"_L1]["findings"_L1].toArray();
        QCOMPARE(findings.size(), 2);
        QCOMPARE(findings[0]["position"_L1].toInt(), 3);
        QVERIFY(findings[0]["isReason"_L1].toBool() && !findings[1]["isReason"_L1].toBool());
    }

    void mergingMoveTellsEveryStep()
    {
        auto expected = writeTree(u"from"_s);
        QVERIFY(QDir(m_folder->path()).mkdir(u"to"_s));
        write(u"to/mine"_s, "1");
        expected.insert(u"mine"_s, "1");
        const Outcome outcome = vex(u"move from/ to -o steps.csv --json"_s);
        QCOMPARE(outcome.errors, QString());
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(!QFileInfo::exists(m_folder->filePath(u"from"_s)));
        QCOMPARE(filesIn(m_folder->filePath(u"to"_s)), expected);
        const QByteArray steps = read(u"steps.csv"_s);
        for (const auto &[kind, count] :
            {std::pair("\ncopied,", 2), {"\ndeleted,", 3}, {"\nrenamed,", 1}, {"\n", 7}})
            QCOMPARE(steps.count(kind), count);
        QVERIFY(jsonOf(outcome)["isDone"_L1].toBool());
        QCOMPARE(jsonOf(outcome)["steps"_L1].toArray().size(), 6);
    }

    void failedMoveTellsEveryStep()
    {
        const auto expected = writeTree(u"from"_s);
        QVERIFY(QDir(m_folder->path()).mkdir(u"to"_s));
        write(u"to/a, b.txt"_s, "other");
        const QStringList command{u"move"_s, u"from"_s, u"to"_s, u"-o"_s, u"steps.csv"_s};
        const Outcome outcome = vex(command);
        QCOMPARE(outcome.exitCode, 1);
        const QString start = u"vex: Cannot copy from/a, b.txt to to/a, b.txt: "_s;
        QVERIFY2(outcome.errors.startsWith(start), qPrintable(outcome.errors));
        const QString reason = outcome.errors.section(u'\n', 0, 0).mid(start.size());
        const QString steps = QString::fromUtf8(read(u"steps.csv"_s));
        QVERIFY(steps.contains("\nleft behind,file,\"from/a, b.txt\",,3,"_L1 + reason + ",\n"_L1));
        const bool hasChanged = filesIn(m_folder->filePath(u"to"_s)).size() > 1;
        QCOMPARE(outcome.errors.section(u'\n', 1),
            hasChanged ? u"once that is put right, run the same command again to go on\n"_s
                       : QString());

        QVERIFY(QFile::remove(m_folder->filePath(u"to/a, b.txt"_s)));
        QCOMPARE(vex(command).exitCode, 0);
        QCOMPARE(filesIn(m_folder->filePath(u"to"_s)), expected);
    }

    void interruptedMoveLeavesEveryFileWhole()
    {
        constexpr int kFiles = 3000;
        const QDir folder(m_folder->path());
        QVERIFY(folder.mkdir(u"from"_s) && folder.mkdir(u"to"_s));
        for (int i = 0; i < kFiles; ++i)
            write(u"from/%1"_s.arg(i), QByteArray(i, 'x'));
        const QStringList command{u"move"_s, u"from"_s, u"to"_s, u"-o"_s, u"steps.csv"_s};
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(m_program, command);
        QTRY_VERIFY_WITH_TIMEOUT(!QDir(folder.filePath(u"to"_s)).isEmpty(), 30000);
        interrupt(process);
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.readAllStandardError(),
            "vex: Moving from was cancelled\nrun the same command again to go on\n");
        QCOMPARE(process.exitCode(), 1);
        const auto left = filesIn(folder.filePath(u"from"_s));
        auto all = filesIn(folder.filePath(u"to"_s));
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
        QCOMPARE(filesIn(folder.filePath(u"to"_s)), all);
    }

#if defined(Q_OS_UNIX)
    /// What a link leads to is touched only when that is asked for.
    void moveFollowsLinksOnlyWhenAsked()
    {
        const QTemporaryDir elsewhere(u"/dev/shm/vex-XXXXXX"_s);
        const QByteArray device = QStorageInfo(m_folder->path()).device();
        if (!elsewhere.isValid() || QStorageInfo(elsewhere.path()).device() == device)
            QSKIP("there is no second file system");
        const QString to = elsewhere.filePath(u"a/b"_s);
        const auto tree = writeTree(u"from"_s);
        const auto outside = writeTree(u"outside"_s);
        const QString outsidePath = m_folder->filePath(u"outside"_s);
        QVERIFY(QFile::link(outsidePath, m_folder->filePath(u"from/link"_s)));

        const Outcome refused = vex({u"move"_s, u"from"_s, to, u"-o"_s, u"steps.csv"_s});
        QCOMPARE(refused.exitCode, 1);
        QVERIFY(refused.errors.contains("the link from/link leads to"_L1));
        QCOMPARE(refused.output, QString());
        QVERIFY(QDir(elsewhere.path()).isEmpty() && read(u"steps.csv"_s).isNull());
        QCOMPARE(filesIn(m_folder->filePath(u"from"_s)), tree);
        QCOMPARE(filesIn(outsidePath), outside);

        const Outcome followed = vex({u"move"_s, u"from"_s, to, u"--follow-links"_s});
        QVERIFY(filesIn(outsidePath).isEmpty());
        QCOMPARE(filesIn(to + "/link"_L1), outside);
        // the link stays, and so does the folder; as told, the way back is open
        QCOMPARE(followed.errors,
            u"vex: Cannot remove from\nsee what was left behind; to undo, move %1 back\n"_s.arg(
                to));
        QCOMPARE(vex({u"move"_s, u"--keep-undeletable"_s, to, u"from"_s}).exitCode, 0);
        QCOMPARE(filesIn(m_folder->filePath(u"from"_s)), tree);
        QCOMPARE(filesIn(outsidePath), outside);
        // nothing to follow; and ".." is above what the link leads to
        QCOMPARE(vex({u"move"_s, u"from/link/../from"_s, u"renamed"_s}).exitCode, 0);
        QCOMPARE(filesIn(outsidePath), outside);
    }
#endif

#if defined(Q_OS_UNIX)
    /// A device without room, and a limit on the size of files: errors, and the old file stays.
    void fullDiskLeavesNothingBehind()
    {
        const Outcome toDevice = runIn(m_folder->path(), u"sh"_s,
            {u"-c"_s, u"exec \"$0\" pattern --mass 1000 >/dev/full"_s, m_program});
        QCOMPARE(toDevice.exitCode, 1);
        QCOMPARE(
            toDevice.errors, u"vex: cannot write standard output: No space left on device\n"_s);

        write(u"out.csv"_s, "old");
        for (const QString &kind : {u"-o"_s, u"--plot"_s}) {
            if (kind == "--plot"_L1 && !VEX_HAS_PLOT)
                continue; // there is nothing to be written
            const QString name = kind == "-o"_L1 ? u"out.csv"_s : u"out.svg"_s;
            const Outcome toFile = runIn(m_folder->path(), u"sh"_s,
                {u"-c"_s, // a limit of 4 or 8 KiB
                    u"trap '' XFSZ; ulimit -f 8; exec \"$0\" pattern --mass 1 2 3 4 5 6 7 %1 %2"_s
                        .arg(kind, name),
                    m_program});
            QCOMPARE(toFile.exitCode, 1);
            QCOMPARE(toFile.errors, u"vex: cannot write %1: File too large\n"_s.arg(name));
            QCOMPARE(read(u"out.csv"_s), "old");
            QCOMPARE(files(), QStringList{u"out.csv"_s});
        }
    }
#endif

    void interruptLeavesNothingBehind()
    {
        QByteArray fasta;
        for (int i = 0; i < 400000; ++i)
            fasta += ">p" + QByteArray::number(i) + "\nACDEFGHIKLMNPQRSTVWY\n";
        write(u"in"_s, fasta);
        QProcess process;
        process.setWorkingDirectory(m_folder->path());
        process.start(m_program, {u"pattern"_s, u"--fasta"_s, u"in"_s, u"-o"_s, u"out.csv"_s});
        QVERIFY(process.waitForReadyRead(30000)); // the input is read, the output under way
        interrupt(process);
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("interrupted"));
        QCOMPARE(files(), QStringList{u"in"_s});
    }

    void helpLogAndTraceHelpToFindOut()
    {
        QVERIFY(vex({u"mass"_s, u"--help"_s}).output.startsWith(u"Usage: vex mass"_s));
        const auto lines = vex(u"pattern --trace --fasta missing"_s).errors.trimmed().split(u'\n');
        QVERIFY(lines[0].startsWith("vex: cannot read missing: "_L1));
        QVERIFY(lines[1].contains("at readFasta ("_L1) && lines[1].contains("Fasta.cpp:"_L1));
        QVERIFY(lines.last().contains("at runPattern ("_L1));
        const QString command = u"pattern --mass 160000 --log log.txt"_s;
        QCOMPARE(vex(command).exitCode, 0);
        QVERIFY(read(u"log.txt"_s).contains("warning: 160000 Da"));
        QCOMPARE(vex(command + " --log-severity critical"_L1).errors, QString());
        // one line, however often the library warns
        const QString emptied = vex(u"distribution --inter-trim 0.9"_s).errors;
        QVERIFY(emptied.contains("998 of 1000 patterns are cut to nothing"_L1));
        QCOMPARE(emptied.count(u'\n'), 1);
    }
};

QTEST_GUILESS_MAIN(tst_vexcli)
#include "tst_vexcli.moc"

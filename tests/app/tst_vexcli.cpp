#include "Processes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QStorageInfo>
#include <QTemporaryDir>
#include <QTest>

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
    /// Runs the program; '' is an empty argument, and "..." may hold blanks.
    Outcome vex(const QString &command)
    {
        QStringList arguments = QProcess::splitCommand(command);
        arguments.replaceInStrings(u"''"_s, QString());
        return runIn(m_folder->path(), m_program, arguments);
    }
    void write(const QString &name, const QByteArray &content)
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    QByteArray read(const QString &name)
    {
        QFile file(QDir(m_folder->path()).filePath(name)); // as it is where absolute
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Writes some files below the folder and tells their content by path.
    QMap<QString, QByteArray> writeTree(const QString &name)
    {
        const QMap<QString, QByteArray> files{{u"a, b.txt"_s, "abc"}, {u"empty"_s, {}},
            {u"sub folder/\u03bc.bin"_s, QByteArray(100000, '\xff')}, {u"sub folder/x/y"_s, "\n"}};
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
    void badInput()
    {
        const auto table = QString::fromUtf8(R"(
no command | 2 | | | no command
unknown command | 2 | patern | | 'patern'
unknown option | 2 | mass --frobnicate | | frobnicate
two sources of masses | 2 | mass --mono 1 --average 1 | | exactly one
no formula text | 2 | formula | | no formula
formula without letters | 1 | formula 123 | | '123' holds no element symbol
count out of range | 1 | mass --mono 5 --formula C1e999 | | '1e999' at character 2 is out of range
decimals in a formula | 2 | mass --mono 5 --formula C4.9384H7.75 | | (C49384H77500)
decimal comma | 2 | mass --mono 5 --formula C4,9H7 | | (C49H70)
group in a composition | 2 | mass --mono 5 --formula C(H3)2 | | ')' at character 5
composition without mass | 1 | mass --mono 5 --formula Xy2 | | no positive finite mass
negative count | 1 | pattern --mass 5 --formula C5H-1 | | negative count
unknown averagine | 1 | pattern --mass 5 --averagine mine | | cannot read mine
two compositions | 2 | mass --mono 5 --averagine senko --formula C1 | | exclude
negative mass | 2 | pattern --mass -1 | | '-1' is negative
averagine file is no JSON | 1 | mass --mono 1 --averagine in | {\n"atoms": oops} | in, line 2
averagine file without atoms | 1 | mass --mono 1 --averagine in | {} | no object "atoms"
averagine of iron | 1 | mass --mono 1 --averagine in | {"atoms": {"Fe": 1}} | 'Fe'
averagine of less than nothing | 1 | mass --mono 1 --averagine in | {"atoms": {"C": -1}} | count of C
bad mass in a file | 1 | mass --masses in | mass\n100\nabc\n | in, line 3: mass 'abc' is not a number
mistyped first mass | 1 | mass --masses in | 1O0\n100\n | in, line 1: mass '1O0'
infinite first mass | 1 | mass --masses in | inf\n100\n | in, line 1: mass 'inf' is not finite
file without masses | 1 | mass --masses in | mass\n | no mass
empty FASTA file | 1 | pattern --fasta in -o out.csv | \n | in holds no sequence
no residue | 1 | pattern --fasta in -o out.csv | >a one\nACD\n>b\nAC*D\n | in, line 4, column 3: '*' is no residue code (b)
building block of the table | 1 | pattern --fasta in | >a\nA1\n | line 2, column 2: '1'
byte that is no text | 1 | pattern --fasta in | >a\r\nA§\r\n | column 2: byte 0xc2
sequence without header | 1 | pattern --fasta in | ACD\n | in, line 1: sequence without
header without sequence | 1 | pattern --fasta in | >a\nACD\n>b | in, line 3: b has no sequence
bad published masses | 1 | pattern --fasta in --published in | >a\nACD\n | in, line 1: expected name
two outputs in one file | 2 | pattern --mass 1 -o a.svg --plot ./a.svg | | ./a.svg would overwrite a.svg
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
plot of an unknown format | %1 | pattern --mass 1 -o out.csv --plot p.pdf | | %2
)")
                               .arg(VEX_HAS_PLOT ? 2 : 1)
                               .arg(VEX_HAS_PLOT ? "p.pdf"_L1 : "cannot draw"_L1);
        for (const QString &line : table.trimmed().split(u'\n')) {
            const QStringList fields = line.split(u'|');
            QString content = fields[3].trimmed(); // of the file "in"
            content.replace("\\n"_L1, "\n"_L1).replace("\\r"_L1, "\r"_L1);
            write(u"in"_s, content.toUtf8());
            const auto [exitCode, output, errors] = vex(fields[2]);
            const QString told =
                u"%1\nends with %2, %3%4"_s.arg(line).arg(exitCode).arg(errors, output);
            QVERIFY2(exitCode == fields[1].toInt() && output.isEmpty(), qPrintable(told));
            QVERIFY2(errors.startsWith("vex: "_L1) && errors.contains(fields[4].trimmed())
                    && errors.count(u'\n') == 1,
                qPrintable(told));
            QVERIFY2(files() == QStringList{u"in"_s}, qPrintable(told + files().join(u' ')));
        }
    }

    /// What commands tell: texts in this order; JSON without blanks.
    void reports()
    {
        for (const auto &[name, content] : {std::pair("ambiguous", ">p\nAXU\n"),
                 {"peak", "1,0\n2,10\n3,0\n4,0\n5,0\n"}, {"zero", "1,0\n5,0\n"},
                 {"shifted", "1,0\n2,0\n3,0\n4,10\n5,0\n"}, {"odd", "1,0\n\n3,5\n2,5\n2,5\n"},
                 {"three", "0,1\n7.7,4\n120,2\n"}}) // 7.7 / 60 * 60 is not 7.7
            write(QLatin1StringView(name), content);
        // The masses of proteins are published, and the areas between samples. One line tells of
        // each file whatever its name holds. 31.1 Da is the mean of the isotopes' shifts at 50 kDa.
        const auto table = QString::fromUtf8(R"(
0 | mass --help | Usage: vex mass
0 | formula --json C(H3)2Cl | "counts":{"C":1,"Cl":1,"H":32} | "findings":[{"kind":"dropped" | "position":1 | "kind":"digits joined" | "position":4 | "kind":"symbol ignored" | "position":6,"text":"Cl"}],
0 | pattern --json --fasta "%1/proteins.fasta" | [{"averageMass":8564.75675 | "bestIndex":5,"coverage":0.9998 | "formula":"C378H629N105O118S"
0 | pattern --json --fasta "%1/proteins.fasta" | "monoisotopicMass":8559.61668 | "name":"ubiquitin","residues":76} | "apomyoglobin" | "cytochrome_c","residues":104}]
0 | pattern --fasta ambiguous | U stands for | X stands for
0 | pattern --json --mass 50000 | "bestIndex":31,
0 | pattern --json --mass 50000 --model list | "bestIndex":31, | "capacity":100,
0 | pattern --json --mass 50030 --model grid | "gridMass":50000,
0 | pattern --json --mass 150000 --model list --capacity 400 | "bestIndex":93,"capacity":400,
0 | apex --json "%1/l_glutamate_xic.csv" --start 2.472833334 --end 3.022891666 | "apexIntensity":966489,"apexTime":2.7045,"area":71558.1 | "areaBetweenSamples":71540.2
0 | apex --json three --x-unit seconds | "apexIntensity":4,"apexTime":7.7,"area":356.1 | "isMiddleOfRange":false
0 | apex --json three --x-unit seconds --start 7 --end 8.1 | "apexIntensity":null,"apexTime":7.55,"area":4.30 | "isMiddleOfRange":true
0 | compare --json peak peak | "rule":"within both"
0 | compare --json peak zero | "rule":"one without intensity"
0 | compare --json zero zero | "rule":"both without intensity"
0 | compare --json peak shifted | "rule":"area of error"
0 | compare --json peak shifted --max-area 3 | "rule":"correlation"
0 | compare odd odd | odd, line 4: x 2 is below | odd, line 5: x 2 repeats
0 | filetype --json a.LVCFG | "alsoListedBy":["REPORT_MODULE_LOAD_EXTENSIONS"],"isTrace":false | "type":"REPORT_MODULE_RPTC_BACKWARD"
0 | filetype --json b/c.tar.csv noext d.p3Djs | "alsoListedBy":[],"isTrace":true | "type":"CSV" | "isTrace":false | "type":"Invalid" | "type":"Invalid"
0 | filetype --json e.tabc | "alsoListedBy":["REPORT_MODULE_TABC_BACKWARD","REPORT_MODULE_LOAD_EXTENSIONS"] | "type":"REPORT_MODULE_TABC"
0 | filetype --list | \nlvcfg  | \np3Djs
0 | filetype "a\nb.csv" "%2" "μ 😀.png" | \na<U+000A>b.csv   | \nc<U+2028><U+001B><U+202E>d.txt   | \nμ 😀.png
1 | checkpath a.txt data/b.txt 1:/c --kind name | vex: 2 of 3 are not valid\n | 1:/c\n
1 | checkpath a.txt data/b.txt 1:/c --kind path | vex: 1 of 3 is not valid\n | 1:/c\n
0 | checkpath a.txt data/b.txt 1:/c --kind local | 1:/c\n
1 | checkpath a.txt data/b.txt 1:/c --kind local --kind name | vex: 2 of 3 are not valid\n | 1:/c\n
1 | checkpath a.txt data/b.txt 1:/c | vex: 2 of 3 are not valid\n | 1:/c\n
1 | checkpath "x/../NUL\t." --kind local | x/../NUL<U+0009>.\n  local path  not valid, taken as NUL<U+0009>. | \n    reason at 4: U+0009 is not allowed\n    advice at 5: Windows drops dots
1 | checkpath "x/../NUL\t." --kind local --json | "local":{"findings":[{"isReason":true | "position":3},{"isReason":false | "position":4}],
)")
                               .arg(m_source.filePath(u"data"_s), u"c\u2028\x1b\u202ed.txt"_s);
        for (QString line : table.trimmed().split(u'\n')) {
            line.replace("\\n"_L1, "\n"_L1).replace("\\t"_L1, "\t"_L1);
            const QStringList fields = line.split(u" | "_s);
            const auto [exitCode, output, errors] = vex(fields[1]);
            const auto json = QJsonDocument::fromJson(output.toUtf8());
            const QString told = errors
                + (json.isNull() ? output : QString::fromUtf8(json.toJson(QJsonDocument::Compact)));
            QVERIFY2(exitCode == fields[0].toInt(), qPrintable(line + u'\n' + told));
            qsizetype from = 0;
            for (const QString &text : fields.sliced(2)) {
                from = told.indexOf(text, from);
                QVERIFY2(from >= 0, qPrintable(text + " in "_L1 + told));
                from += text.size();
            }
        }
        // all types, odd suffixes
        QCOMPARE(vex(u"filetype --list"_s).output.count(u'\n'), 1 + 46 + 3 + 5);
        QCOMPARE(vex(u"compare peak shifted -o c.csv"_s).exitCode, 0);
        QVERIFY(read(u"c.csv"_s).contains("\n2,10,0,10\n3,0,0,0\n4,0,10,-10\n"));
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

    void outputIsTheSameOnEveryPlatform()
    {
        const Outcome outcome =
            vex(u"pattern --min-share 0.01 --fasta \"%1/proteins.fasta\" "
                "--published \"%1/published_masses.csv\""_s.arg(m_source.filePath(u"data"_s)));
        QCOMPARE(outcome.errors, QString());
        QCOMPARE(outcome.output.toUtf8(), read(m_source.filePath(u"tests/data/pattern.txt"_s)));
    }

    /// An input is not overwritten through any other spelling of its path; devices are no files.
    void pathsAreThePlatforms()
    {
        const QDir folder(m_folder->path());
        QVERIFY(folder.mkdir(u"sub"_s));
        const QString native = QDir::toNativeSeparators(folder.path());
        const QString drive = kOnUnix ? u"C:"_s : native.left(2);
        // "nowhere" is a device
        for (const auto &[path, onUnix, onWindows] :
            {std::tuple(folder.filePath(u"sub/../in"_s), "refused", "refused"),
                {u"IN"_s, "written", "refused"}, {u"SUB/../In"_s, "fails", "refused"},
                {u".\\sub\\..\\in"_s, "written", "refused"}, {u"in."_s, "written", "refused"},
                {u"\\\\?\\%1\\in"_s.arg(native), "fails", "refused"},
                {drive + "in"_L1, "written", "refused"}, {u"Q:\\out.csv"_s, "written", "fails"},
                {u"\\\\none\\x\\out.csv"_s, "written", "fails"}, {u"a?b.csv"_s, "written", "fails"},
                {u"\u03bc\U0001F600.csv"_s, "written", "written"}, {u"NUL"_s, "written", "nowhere"},
                {u"/dev/null"_s, "nowhere", "fails"}}) {
            write(u"in"_s, ">a\nACD\n");
            const auto [exitCode, output, errors] =
                vex(u"pattern --fasta in --min-share 1 -o \"%1\""_s.arg(path));
            const QLatin1StringView expected(kOnUnix ? onUnix : onWindows);
            const int expectedCode = expected == "refused"_L1 ? 2 : expected == "fails"_L1 ? 1 : 0;
            QVERIFY2(exitCode == expectedCode, qPrintable(path + errors));
            QCOMPARE(output.isEmpty(), exitCode > 0);
            if (expected == "fails"_L1)
                QVERIFY(errors.startsWith("vex: cannot write "_L1 + path + u':'));
            QCOMPARE(read(u"in"_s), ">a\nACD\n");
            QVERIFY2(files().size() == (expected == "written"_L1 ? 2 : 1), qPrintable(path));
            for (const QString &file : files())
                QVERIFY(QFile::remove(m_folder->filePath(file)));
        }
    }

    void sequencesMayBeWrittenInManyWays()
    {
        write(u"plain"_s, ">p\nACDEFGHIKLMNPQRSTVWY\n");
        write(u"odd"_s,
            "\xEF\xBB\xBF; a comment\r\n>p of no importance\r\nacdefghik \tlmnp\r\n\r\nqrstvwy");
        QCOMPARE(vex(u"pattern --fasta odd"_s).output, vex(u"pattern --fasta plain"_s).output);
    }

    void patternsGoToFilesAndPlots()
    {
        const auto plot = VEX_HAS_PLOT ? "--plot \"plot {name}.svg\""_L1 : ""_L1;
        const Outcome outcome = vex(u"pattern --mass 1000 150000 -o out.csv "_s + plot);
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
    }

    void mergingMoveTellsEveryStep()
    {
        auto expected = writeTree(u"from"_s);
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
        QVERIFY(outcome.output.contains("\"isDone\": true"_L1));
        QCOMPARE(outcome.output.count("\"kind\": "_L1), 6);
    }

    void failedMoveTellsEveryStep()
    {
        writeTree(u"from"_s);
        write(u"to/a, b.txt"_s, "other");
        const Outcome outcome = vex(u"move from to -o steps.csv"_s);
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
    }

    void interruptedMoveLeavesEveryFileWhole()
    {
        constexpr int kFiles = 3000;
        const QDir folder(m_folder->path());
        QVERIFY(folder.mkdir(u"from"_s) && folder.mkdir(u"to"_s));
        for (int i = 0; i < kFiles; ++i)
            write(u"from/%1"_s.arg(i), QByteArray(i, 'x'));
        const QString command = u"move from to -o steps.csv"_s;
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(m_program, command.split(u' '));
        QTRY_VERIFY_WITH_TIMEOUT(!QDir(folder.filePath(u"to"_s)).isEmpty(), 30000);
        interrupt(process);
        QCOMPARE(process.readAllStandardError(),
            "vex: Moving from was cancelled\nrun the same command again to go on\n");
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

        const Outcome refused = vex(u"move from %1 -o steps.csv"_s.arg(to));
        QCOMPARE(refused.exitCode, 1);
        QVERIFY(refused.errors.contains("the link from/link leads to"_L1));
        QCOMPARE(refused.output, QString());
        QVERIFY(QDir(elsewhere.path()).isEmpty() && read(u"steps.csv"_s).isNull());
        QCOMPARE(filesIn(m_folder->filePath(u"from"_s)), tree);
        QCOMPARE(filesIn(outsidePath), outside);

        const Outcome followed = vex(u"move --follow-links from "_s + to);
        QVERIFY(filesIn(outsidePath).isEmpty());
        QCOMPARE(filesIn(to + "/link"_L1), outside);
        // the link stays, and so does the folder; as told, the way back is open
        QCOMPARE(followed.errors,
            u"vex: Cannot remove from\nsee what was left behind; to undo, move %1 back\n"_s.arg(
                to));
        QCOMPARE(vex(u"move --keep-undeletable %1 from"_s.arg(to)).exitCode, 0);
        QCOMPARE(filesIn(m_folder->filePath(u"from"_s)), tree);
        QCOMPARE(filesIn(outsidePath), outside);
        // nothing to follow; and ".." is above what the link leads to
        QCOMPARE(vex(u"move from/link/../from renamed"_s).exitCode, 0);
        QCOMPARE(filesIn(outsidePath), outside);
    }

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
        process.start(m_program, u"pattern --fasta in -o out.csv"_s.split(u' '));
        QVERIFY(process.waitForReadyRead(30000)); // the input is read, the output under way
        interrupt(process);
        QVERIFY(process.readAllStandardError().contains("interrupted"));
        QCOMPARE(files(), QStringList{u"in"_s});
    }

    void helpLogAndTraceHelpToFindOut()
    {
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

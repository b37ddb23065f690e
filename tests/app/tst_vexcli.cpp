#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

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

QJsonArray jsonArray(const Outcome &outcome)
{
    return QJsonDocument::fromJson(outcome.output.toUtf8()).array();
}

} // namespace

class tst_vexcli : public QObject
{
    Q_OBJECT

private:
    Outcome vex(const QStringList &arguments)
    {
        return runIn(m_folder->path(), QStringLiteral(VEX_PROGRAM), arguments);
    }
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

    std::unique_ptr<QTemporaryDir> m_folder;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    /// One clear line, the right exit code, nothing on standard output and no file left behind.
    void badInput_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("content"); // of the file "in"
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("error");

        const QByteArray none;
        QTest::newRow("no command") << QStringList{} << none << 2 << u"no command"_s;
        QTest::newRow("unknown command") << QStringList{u"patern"_s} << none << 2 << u"'patern'"_s;
        QTest::newRow("unknown option")
            << QStringList{u"mass"_s, u"--frobnicate"_s} << none << 2 << u"frobnicate"_s;
        QTest::newRow("no formula text")
            << QStringList{u"formula"_s} << none << 2 << u"no formula"_s;
        QTest::newRow("empty formula")
            << QStringList{u"formula"_s, u""_s} << none << 1 << u"no element symbol"_s;
        QTest::newRow("formula without letters")
            << QStringList{u"formula"_s, u"123"_s} << none << 1 << u"'123'"_s;
        QTest::newRow("count without digits") << QStringList{u"formula"_s, u"H2"_s,
            u"C-"_s} << none << 1 << u"the count '-' at character 2 is not a number"_s;
        QTest::newRow("count out of range")
            << QStringList{u"mass"_s, u"--mono"_s, u"5"_s, u"--formula"_s, u"C1e999"_s} << none << 1
            << u"'1e999' at character 2 is out of range"_s;
        QTest::newRow("decimals in a formula")
            << QStringList{u"mass"_s, u"--mono"_s, u"5"_s, u"--formula"_s, u"C4.9384H7.75"_s}
            << none << 2 << u"(C49384H77500)"_s;
        QTest::newRow("composition without mass") << QStringList{u"mass"_s, u"--mono"_s, u"5"_s,
            u"--formula"_s, u"Xy2"_s} << none << 1 << u"no positive finite mass"_s;
        QTest::newRow("composition with a negative count")
            << QStringList{u"pattern"_s, u"--mass"_s, u"5"_s, u"--formula"_s, u"C1H-50"_s} << none
            << 1 << u"negative count"_s;
        QTest::newRow("unknown averagine")
            << QStringList{u"pattern"_s, u"--mass"_s, u"5"_s, u"--averagine"_s, u"mine"_s} << none
            << 1 << u"cannot read mine"_s;
        QTest::newRow("two compositions") << QStringList{u"pattern"_s, u"--mass"_s, u"5"_s,
            u"--averagine"_s, u"senko"_s, u"--formula"_s, u"C1"_s}
                                          << none << 2 << u"exclude"_s;
        for (const auto &[mass, reason] :
            {std::pair(u"nan"_s, u"not finite"_s), std::pair(u"inf"_s, u"not finite"_s),
                std::pair(u"-1"_s, u"negative"_s), std::pair(u"1,5"_s, u"not a number"_s)}) {
            QTest::addRow("mass %s", qPrintable(mass)) << QStringList{u"pattern"_s, u"--mass"_s,
                mass} << none << 2 << u"'%1' is %2"_s.arg(mass, reason);
        }
        QTest::newRow("two sources of masses")
            << QStringList{u"mass"_s, u"--mono"_s, u"1"_s, u"--average"_s, u"1"_s} << none << 2
            << u"exactly one"_s;

        const QStringList averagine{u"mass"_s, u"--mono"_s, u"1"_s, u"--averagine"_s, u"in"_s};
        QTest::newRow("averagine file is no JSON")
            << averagine << QByteArray("{\n\"atoms\": oops}") << 1 << u"in, line 2"_s;
        QTest::newRow("averagine file without atoms")
            << averagine << QByteArray("{}") << 1 << u"no object \"atoms\""_s;
        QTest::newRow("averagine file with an unknown element")
            << averagine << QByteArray(R"({"atoms": {"Fe": 1}})") << 1 << u"'Fe'"_s;
        QTest::newRow("averagine file with a negative count")
            << averagine << QByteArray(R"({"atoms": {"C": -1}})") << 1 << u"count of C"_s;

        const QStringList masses{u"mass"_s, u"--masses"_s, u"in"_s};
        QTest::newRow("bad mass in a file")
            << masses << QByteArray("mass\n100\nabc\n") << 1 << u"in, line 3: mass 'abc'"_s;
        QTest::newRow("file without masses") << masses << QByteArray("mass\n") << 1 << u"no mass"_s;
        QTest::newRow("file of binary data")
            << masses << QByteArray("\x01\0\xff\n\x02", 5) << 1 << u"in, line 2"_s;

        const QStringList fasta{u"pattern"_s, u"--fasta"_s, u"in"_s, u"-o"_s, u"out.csv"_s};
        QTest::newRow("missing FASTA file") << QStringList{u"pattern"_s, u"--fasta"_s, u"missing"_s}
                                            << none << 1 << u"cannot read missing"_s;
        QTest::newRow("folder as FASTA file")
            << QStringList{u"pattern"_s, u"--fasta"_s, u"."_s} << none << 1 << u"cannot read ."_s;
        QTest::newRow("empty FASTA file")
            << fasta << QByteArray("\n") << 1 << u"in holds no sequence"_s;
        QTest::newRow("character that is no residue")
            << fasta << QByteArray(">a one\nACD\n>b\nAC*D\n") << 1
            << u"in, line 4, column 3: '*' is no residue code (b)"_s;
        QTest::newRow("building block of the table is no residue")
            << fasta << QByteArray(">a\nA1\n") << 1 << u"in, line 2, column 2: '1'"_s;
        QTest::newRow("byte that is no text")
            << fasta << QByteArray(">a\r\nA\xc3\r\n") << 1 << u"line 2, column 2: byte 0xc3"_s;
        QTest::newRow("sequence without header")
            << fasta << QByteArray("ACD\n") << 1 << u"in, line 1: sequence without"_s;
        QTest::newRow("header without sequence")
            << fasta << QByteArray(">a\nACD\n>b") << 1 << u"in, line 3: b has no sequence"_s;
        QTest::newRow("bad published masses")
            << QStringList{u"pattern"_s, u"--fasta"_s, u"in"_s, u"--published"_s, u"in"_s}
            << QByteArray(">a\nACD\n") << 1 << u"in, line 2: expected name"_s;

        QTest::newRow("output in a missing folder")
            << QStringList{u"pattern"_s, u"--mass"_s, u"1"_s, u"-o"_s, u"no/out.csv"_s} << none << 1
            << u"cannot write no/out.csv"_s;
        QTest::newRow("plot of an unknown format")
            << QStringList{u"pattern"_s, u"--mass"_s, u"1"_s, u"-o"_s, u"out.csv"_s, u"--plot"_s,
                   u"p.pdf"_s}
            << none << (VEX_HAS_PLOT ? 2 : 1) << (VEX_HAS_PLOT ? u"p.pdf"_s : u"cannot draw"_s);
        QTest::newRow("share above 1")
            << QStringList{u"pattern"_s, u"--mass"_s, u"1"_s, u"--min-share"_s, u"5"_s} << none << 2
            << u"above 1"_s;
    }
    void badInput()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, content);
        QFETCH(int, exitCode);
        QFETCH(QString, error);
        write(u"in"_s, content);
        const Outcome outcome = vex(arguments);
        QCOMPARE(outcome.exitCode, exitCode);
        QCOMPARE(outcome.output, QString());
        QVERIFY2(outcome.errors.startsWith("vex: "_L1) && outcome.errors.contains(error),
            qPrintable(outcome.errors));
        QCOMPARE(outcome.errors.count(u'\n'), 1);
        QCOMPARE(
            QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"in"_s});
    }

    void formulaTellsWhatItLeavesOut()
    {
        const Outcome outcome = vex({u"formula"_s, u"--json"_s, u"C(H3)2Cl"_s});
        QCOMPARE(outcome.exitCode, 0);
        const QJsonObject reading = jsonArray(outcome).first().toObject();
        QCOMPARE(reading.value("counts"_L1).toObject(),
            (QJsonObject{{u"C"_s, 1}, {u"Cl"_s, 1}, {u"H"_s, 32}}));
        QStringList found;
        for (const QJsonValue &finding : reading.value("findings"_L1).toArray()) {
            found += finding["kind"_L1].toString() + u' '
                + QString::number(finding["position"_L1].toInt());
        }
        QCOMPARE(found, (QStringList{u"dropped 1"_s, u"dropped 4"_s, u"symbol ignored 6"_s}));
    }

    void massesConvertThereAndBack()
    {
        write(u"masses.txt"_s, "# daltons\nmass\r\n1000\r\n\n25000.5");
        const Outcome there =
            vex({u"mass"_s, u"--masses"_s, u"masses.txt"_s, u"-o"_s, u"out.csv"_s});
        QCOMPARE(there.exitCode, 0);
        const QList<QByteArray> lines = read(u"out.csv"_s).trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        const QByteArray mono = lines[2].split(',').last();
        const Outcome back = vex({u"mass"_s, u"--json"_s, u"--mono"_s, QString::fromLatin1(mono)});
        const double average = QJsonDocument::fromJson(back.output.toUtf8())
                                   .object()["masses"_L1][0]["averageMass"_L1]
                                   .toDouble();
        QVERIFY(std::abs(average - 25000.5) < 1e-9); // two roundings of a value of 2.5e4
    }

    void compositionsFromEverySourceAgree()
    {
        write(u"mine.json"_s,
            R"({"name": "mine", "atoms": {"C": 4.9384, "H": 7.7583, "N": 1.3577, "O": 1.4773, "S": 0.0417}})");
        const QStringList base{u"mass"_s, u"--average"_s, u"10000"_s};
        const Outcome builtIn = vex(base);
        QCOMPARE(builtIn.exitCode, 0);
        for (const QStringList &source : {QStringList{u"--averagine"_s, u"senko"_s},
                 QStringList{u"--averagine"_s, u"mine.json"_s},
                 QStringList{u"--formula"_s, u"C49384H77583N13577O14773S417"_s}})
            QCOMPARE(vex(base + source).output, builtIn.output);
    }

    void proteinsHaveTheirPublishedMasses()
    {
        const QString data = QStringLiteral(VEX_DATA);
        const Outcome outcome =
            vex({u"pattern"_s, u"--json"_s, u"--fasta"_s, data + u"/proteins.fasta"_s});
        QCOMPARE(outcome.exitCode, 0);
        const QJsonArray proteins = jsonArray(outcome);
        QFile file(data + u"/published_masses.csv"_s);
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
            // The most intense peak lies within 1 Da below the average mass.
            const double top = protein["monoisotopicMass"_L1].toDouble()
                + protein["bestIndex"_L1].toInt() * 1.0023;
            QVERIFY(std::abs(top - protein["averageMass"_L1].toDouble()) < 1.0);
            QVERIFY(protein["coverage"_L1].toDouble() > 0.999);
        }
    }

    void sequencesMayBeWrittenInManyWays()
    {
        write(u"plain"_s, ">p\nACDEFGHIKLMNPQRSTVWY\n");
        write(u"odd"_s, "; a comment\r\n>p of no importance\r\nacdefghik \tlmnp\r\n\r\nqrstvwy");
        const QStringList base{u"pattern"_s, u"--fasta"_s};
        QCOMPARE(
            vex(base + QStringList{u"odd"_s}).output, vex(base + QStringList{u"plain"_s}).output);
        write(u"ambiguous"_s, ">p\nAXU\n");
        const Outcome warned = vex(base + QStringList{u"ambiguous"_s});
        QCOMPARE(warned.exitCode, 0);
        QVERIFY(
            warned.errors.contains("U stands for"_L1) && warned.errors.contains("X stands for"_L1));
    }

    void patternsGoToFilesAndPlots()
    {
        write(u"out.csv"_s, "old");
        QStringList arguments{
            u"pattern"_s, u"--mass"_s, u"1000"_s, u"150000"_s, u"-o"_s, u"out.csv"_s};
        if (VEX_HAS_PLOT)
            arguments += {u"--plot"_s, u"plot {name}.svg"_s};
        const Outcome outcome = vex(arguments);
        QCOMPARE(outcome.exitCode, 0);
        // 73 % of the signal at 150 kDa: said, not hidden
        QVERIFY(outcome.errors.contains("150000 Da: the 100 peaks hold only"_L1));
        const QList<QByteArray> lines = read(u"out.csv"_s).trimmed().split('\n');
        QCOMPARE(lines.size(), 201);
        const double sum = std::accumulate(
            lines.begin() + 1, lines.begin() + 101, 0.0, [](double all, const QByteArray &line) {
                return all + line.split(',').last().toDouble();
            });
        QVERIFY(sum > 0.999 && sum < 1.0000001);
        if (!VEX_HAS_PLOT)
            QSKIP("this build cannot draw");
        QVERIFY(read(u"plot 1000_Da.svg"_s).contains("<svg"));
        QVERIFY(read(u"plot 150000_Da.svg"_s).contains("share of the whole signal"));
        QCOMPARE(vex({u"pattern"_s, u"--mass"_s, u"1000"_s, u"--plot"_s, u"p.png"_s}).exitCode, 0);
        QVERIFY(read(u"p.png"_s).startsWith("\x89PNG"));
    }

#if defined(Q_OS_UNIX)
    /// A device without room, and a limit on the size of files: errors, and the old file stays.
    void fullDiskLeavesNothingBehind()
    {
        const QString program = QStringLiteral(VEX_PROGRAM);
        const Outcome toDevice = runIn(m_folder->path(), u"sh"_s,
            {u"-c"_s, u"exec \"$0\" pattern --mass 1000 >/dev/full"_s, program});
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
                    program});
            QCOMPARE(toFile.exitCode, 1);
            QCOMPARE(toFile.errors, u"vex: cannot write %1: File too large\n"_s.arg(name));
            QCOMPARE(read(u"out.csv"_s), "old");
            QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                QStringList{u"out.csv"_s});
        }
    }

    void interruptLeavesNothingBehind()
    {
        QByteArray fasta;
        for (int i = 0; i < 400000; ++i)
            fasta += ">p" + QByteArray::number(i) + "\nACDEFGHIKLMNPQRSTVWY\n";
        write(u"in"_s, fasta);
        QProcess process;
        process.setWorkingDirectory(m_folder->path());
        process.start(QStringLiteral(VEX_PROGRAM),
            {u"pattern"_s, u"--fasta"_s, u"in"_s, u"-o"_s, u"out.csv"_s});
        QVERIFY(process.waitForReadyRead(30000)); // the input is read, the output under way
        process.terminate();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("interrupted"));
        QCOMPARE(
            QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"in"_s});
    }
#endif

    void logAndTraceHelpToFindOut()
    {
        const Outcome traced = vex({u"pattern"_s, u"--trace"_s, u"--fasta"_s, u"missing"_s});
        const QStringList lines = traced.errors.trimmed().split(u'\n');
        QVERIFY(lines[0].startsWith("vex: cannot read missing: "_L1));
        QVERIFY(lines[1].contains("at readFasta ("_L1) && lines[1].contains("Fasta.cpp:"_L1));
        QVERIFY(lines.last().contains("at runPattern ("_L1));
        const QStringList base{u"pattern"_s, u"--mass"_s, u"160000"_s, u"--log"_s, u"log.txt"_s};
        QCOMPARE(vex(base).exitCode, 0);
        QVERIFY(read(u"log.txt"_s).contains("warning: 160000 Da"));
        QCOMPARE(vex(base + QStringList{u"--log-severity"_s, u"critical"_s}).errors, QString());
    }

    void helpNamesEveryOption()
    {
        QCOMPARE(vex({u"--version"_s}).output.trimmed(), u"vex 6.0.0"_s);
        for (const QString &command : {u"formula"_s, u"mass"_s, u"pattern"_s}) {
            QVERIFY(vex({u"--help"_s}).output.contains(command));
            const Outcome outcome = vex({command, u"--help"_s});
            QCOMPARE(outcome.exitCode, 0);
            QVERIFY(outcome.output.startsWith(u"Usage: vex %1"_s.arg(command)));
            QVERIFY(outcome.output.contains("--log-severity"_L1));
        }
    }
};

QTEST_GUILESS_MAIN(tst_vexcli)
#include "tst_vexcli.moc"

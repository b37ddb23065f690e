#include "PlainFileTypes.h"

#include <QLibrary>
#include <QRandomGenerator>
#include <QTest>

#include <vex/FileTypes.h>
#include <vex/TraceFileTypes.h>

using namespace Qt::StringLiterals;
using Ref = FileTypes::TypeRef;

class TestFileTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registryHoldsTheTypesInOrder()
    {
        const auto &values = FileTypes::Type::registeredValues();
        QCOMPARE(values.size(), 46U);
        QStringList all;
        for (const FileTypes::Type &type : values)
            all += type.name() + u'=' + type.data().suffixes.join(u'+');
        // First and last ones, and those whose place decides who wins.
        QCOMPARE(all.first(4),
            (QStringList{u"Invalid="_s, u"JPG=jpg+jpeg"_s, u"PDF=pdf"_s, u"PNG=png"_s}));
        QCOMPARE(all.sliced(18, 5),
            (QStringList{u"REPORT_MODULE_RPTC_BACKWARD=rptc+lvcfg"_s,
                u"REPORT_MODULE_TABC_BACKWARD=tabc+pvtcfg"_s,
                u"REPORT_MODULE_LOAD_EXTENSIONS=rptc+tabc+lvcfg+pvtcfg"_s,
                u"REPORT_MODULE_RPTC=rptc"_s, u"REPORT_MODULE_TABC=tabc"_s}));
        QCOMPARE(all.last(3),
            (QStringList{u"TEMPLATEEDITORSCRIPT=tes"_s, u"THERMO_CSV=bpf"_s, u"TSV=tsv"_s}));
    }

    void lookups_data()
    {
        QTest::addColumn<QString>("found");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &what, Ref found, const char *expected) {
            QTest::newRow(qPrintable(what))
                << FileTypes::typeToString(found) << QString::fromLatin1(expected);
        };
        for (const auto &[name, type] : {std::pair("CSV", "CSV"), {"csv", "Invalid"},
                 {"", "Invalid"}, {"FASTA", "FASTA"}, {"CSVX", "Invalid"}})
            row(u"name "_s + QLatin1StringView(name),
                FileTypes::stringToType(QString::fromLatin1(name)), type);
        for (const auto &[suffix, type] :
            {std::pair("JPEG", "JPG"), {"htm", "HTML"}, {"tabc", "REPORT_MODULE_TABC"},
                {"rptc", "REPORT_MODULE_RPTC"}, {"lvcfg", "REPORT_MODULE_RPTC_BACKWARD"},
                {"pvtcfg", "REPORT_MODULE_TABC_BACKWARD"}, {"p3Djs", "Invalid"}, {"*", "ALLFILES"},
                {"", "Invalid"}, {"xyz", "Invalid"}})
            row(u"suffix "_s + QLatin1StringView(suffix),
                FileTypes::suffixToType(QString::fromLatin1(suffix)), type);
        for (const auto &[file, type] : {std::pair("C:/data/run.Mgf", "MGF"),
                 {"archive.tar.zip", "ZIP"}, {"noext", "Invalid"}, {".csv", "CSV"}})
            row(u"file "_s + QLatin1StringView(file),
                FileTypes::fileToType(QString::fromLatin1(file)), type);
    }
    void lookups()
    {
        QFETCH(QString, found);
        QTEST(found, "expected");
    }

    /// The suffix is the one that Qt sees, whatever the path looks like.
    void suffixesAreThoseOfQt()
    {
        const QStringList pieces{u"."_s, u"/"_s, u"\\"_s, u":"_s, u"csv"_s, u"RPTC"_s, u"C:"_s,
            u" "_s, u"\u0130"_s, u"txt"_s, u".."_s, QString(40, u'x')};
        QRandomGenerator random(4);
        for (int i = 0; i < 100000; ++i) {
            QString file;
            for (quint32 n = random.bounded(8U); n > 0; --n)
                file += pieces[random.bounded(int(pieces.size()))];
            QVERIFY2(FileTypes::fileToType(file) == plain::fileToType(file), qPrintable(file));
        }
        const QString longName(40000, u'x');
        QVERIFY(
            FileTypes::fileToType(longName + ".csv"_L1) == plain::fileToType(longName + ".csv"_L1));
    }

    void tableTellsWhoWins()
    {
        QStringList clashes;
        QStringList unmatchable;
        for (const FileTypes::SuffixEntry &entry : FileTypes::suffixTable()) {
            QCOMPARE(entry.winner, FileTypes::suffixToType(entry.suffix).name());
            if (entry.types.size() > 1)
                clashes +=
                    entry.suffix + u':' + QString::number(entry.types.size()) + u' ' + entry.winner;
            const QString file = u"x."_s + entry.suffix;
            if (!entry.isMatchable)
                unmatchable += entry.suffix;
            else
                QCOMPARE(FileTypes::fileToType(file).name(), entry.winner);
        }
        QCOMPARE(clashes,
            (QStringList{u"rptc:3 REPORT_MODULE_RPTC"_s, u"lvcfg:2 REPORT_MODULE_RPTC_BACKWARD"_s,
                u"tabc:3 REPORT_MODULE_TABC"_s, u"pvtcfg:2 REPORT_MODULE_TABC_BACKWARD"_s}));
        QCOMPARE(unmatchable, QStringList{u"p3Djs"_s});
    }

    void namesOfFiles()
    {
        QCOMPARE(FileTypes::fileName(u"a.csv"_s, FileTypes::CSV), u"a.csv.csv"_s);
        QCOMPARE(FileTypes::fileName(u"a"_s, FileTypes::Invalid), u"a."_s);
        QCOMPARE(FileTypes::addMissingExtension(u"out"_s, FileTypes::JSON), u"out.json"_s);
        QCOMPARE(FileTypes::addMissingExtension(u"out.JSON"_s, FileTypes::JSON), u"out.JSON"_s);
        QCOMPARE(FileTypes::addMissingExtension(
                     u"v.p3Djs"_s, FileTypes::REPORT_MODULE_PROTEIN_3D_SCRIPT_FILES),
            u"v.p3Djs.p3Djs"_s);
        QCOMPARE(FileTypes::removeExtension(u"data.fasta"_s, FileTypes::FASTA), u"data"_s);
        QCOMPARE(FileTypes::removeExtension(u"X.CSV"_s, FileTypes::CSV), u"X"_s);
        QCOMPARE(FileTypes::removeExtension(u"a.csv.csv"_s, FileTypes::CSV), u"a.csv"_s);
        QCOMPARE(FileTypes::removeExtension(u"a.txt"_s, FileTypes::CSV), u"a.txt"_s);
        QVERIFY(FileTypes::isType(u"noext"_s, FileTypes::Invalid));
        QVERIFY(!FileTypes::isType(u"a.csv"_s, FileTypes::ALLFILES));
        QCOMPARE(FileTypes::extractMatching({u"a.fa"_s, u"b"_s, u"c.FASTA"_s}, FileTypes::FASTA),
            (QStringList{u"a.fa"_s, u"c.FASTA"_s}));
        QVERIFY(vex::TraceFileTypes::isTraceFileType(u"a.ARW"_s)
            && vex::TraceFileTypes::isTraceFileType(u"a.txt"_s)
            && !vex::TraceFileTypes::isTraceFileType(u"a.pdf"_s));
    }

    void listsOfSuffixesAndMasks()
    {
        const QList<Ref> types{FileTypes::JPG, FileTypes::ALLFILES, FileTypes::JPG};
        QCOMPARE(FileTypes::fileMasksForExtensionTypes(types),
            (QStringList{u"*.jpg"_s, u"*.jpeg"_s, u"*.*"_s, u"*.jpg"_s, u"*.jpeg"_s}));
        QCOMPARE(FileTypes::fileSuffixesFromExtensionTypes(types).size(), 5);
        const QStringList byName =
            FileTypes::fileSuffixesFromExtensionTypes(QStringList{u"CSV"_s, u"NOPE"_s, u"TSV"_s});
        QCOMPARE(byName, (QStringList{u"csv"_s, QString(), u"tsv"_s}));
        QVERIFY(byName[1].isNull());
    }

    /// Last: the registry is larger from here on.
    void anotherModuleAddsToTheSameRegistry()
    {
        QCOMPARE(FileTypes::fileToType(u"a.plg2"_s).name(), "Invalid"_L1);
        QLibrary plugin(QCoreApplication::applicationDirPath() + u"/vex_test_plugin_types"_s);
        QVERIFY2(plugin.load(), qPrintable(plugin.errorString()));
        QCOMPARE(FileTypes::Type::registeredValues().size(), 47U);
        QCOMPARE(FileTypes::fileToType(u"a.PLG2"_s).name(), "FROM_PLUGIN"_L1);
        const QList<FileTypes::SuffixEntry> table = FileTypes::suffixTable();
        QCOMPARE(table.constLast().suffix, u"plg2"_s); // not that of a type whose name was taken
        QCOMPARE(table[table.size() - 2].types, QStringList{u"FROM_PLUGIN"_s}); // listed twice
        QVERIFY(Ref(FileTypes::CSV) == FileTypes::suffixToType(u"csv"_s));
    }
};

QTEST_GUILESS_MAIN(TestFileTypes)
#include "tst_FileTypes.moc"

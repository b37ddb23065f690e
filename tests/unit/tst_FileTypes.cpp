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
        all.remove(23, 20);
        all.remove(4, 14);
        QCOMPARE(all.join(u' '),
            u"Invalid= JPG=jpg+jpeg PDF=pdf PNG=png REPORT_MODULE_RPTC_BACKWARD=rptc+lvcfg "
            "REPORT_MODULE_TABC_BACKWARD=tabc+pvtcfg "
            "REPORT_MODULE_LOAD_EXTENSIONS=rptc+tabc+lvcfg+pvtcfg REPORT_MODULE_RPTC=rptc "
            "REPORT_MODULE_TABC=tabc TEMPLATEEDITORSCRIPT=tes THERMO_CSV=bpf TSV=tsv"_s);
    }

    void lookups()
    {
        for (const auto &[name, type] : {std::pair(u"CSV"_s, "CSV"), {u"csv"_s, "Invalid"},
                 {u""_s, "Invalid"}, {u"CSVX"_s, "Invalid"}})
            QCOMPARE(FileTypes::stringToType(name).name(), QLatin1StringView(type));
        for (const auto &[suffix, type] : {std::pair(u"JPEG"_s, "JPG"), {u"p3Djs"_s, "Invalid"},
                 {u"*"_s, "ALLFILES"}, {u""_s, "Invalid"}})
            QCOMPARE(FileTypes::suffixToType(suffix).name(), QLatin1StringView(type));
        QCOMPARE(FileTypes::typeToString(FileTypes::fileToType(u"C:/data/run.Mgf"_s)), u"MGF"_s);
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
        const QString longName = QString(40000, u'x') + ".csv"_L1;
        QVERIFY(FileTypes::fileToType(longName) == plain::fileToType(longName));
    }

    void tableTellsWhoWins()
    {
        QStringList odd; // listed by several types, or matched by no file
        for (const FileTypes::SuffixEntry &entry : FileTypes::suffixTable()) {
            QCOMPARE(FileTypes::fileToType(u"x."_s + entry.suffix).name(), entry.winner);
            if (entry.types.size() > 1 || !entry.isMatchable)
                odd += entry.suffix + QString::number(entry.types.size()) + u' ' + entry.winner;
        }
        QCOMPARE(odd.join(u", "_s),
            u"rptc3 REPORT_MODULE_RPTC, lvcfg2 REPORT_MODULE_RPTC_BACKWARD, "
            "tabc3 REPORT_MODULE_TABC, pvtcfg2 REPORT_MODULE_TABC_BACKWARD, p3Djs1 Invalid"_s);
    }

    void namesOfFiles()
    {
        // a name with the suffix of a type, with it unless it has one, and without it
        for (const auto &[file, type, named, completed, shortened] :
            {std::tuple(u"a.csv"_s, Ref(FileTypes::CSV), u"a.csv.csv"_s, u"a.csv"_s, u"a"_s),
                {u"a"_s, FileTypes::Invalid, u"a."_s, u"a"_s, u"a"_s},
                {u"a.txt"_s, FileTypes::JSON, u"a.txt.json"_s, u"a.txt.json"_s, u"a.txt"_s},
                {u"X.FA"_s, FileTypes::FASTA, u"X.FA.fasta"_s, u"X.FA"_s, u"X"_s},
                {u"a.csv.csv"_s, FileTypes::CSV, u"a.csv.csv.csv"_s, u"a.csv.csv"_s, u"a.csv"_s},
                {u"v.p3Djs"_s, FileTypes::REPORT_MODULE_PROTEIN_3D_SCRIPT_FILES, u"v.p3Djs.p3Djs"_s,
                    u"v.p3Djs.p3Djs"_s, u"v"_s}}) {
            QCOMPARE(FileTypes::fileName(file, type), named);
            QCOMPARE(FileTypes::addMissingExtension(file, type), completed);
            QCOMPARE(FileTypes::removeExtension(file, type), shortened);
        }
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

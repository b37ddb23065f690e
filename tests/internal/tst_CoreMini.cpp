#include "detail/Companions.h"

#include "Files.h"
#include "PlainDistribution.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

/// The stand-in for the companion library vex_common_core_mini.
class TestCoreMini : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void convolutionEqualsThePlainForm()
    {
        QRandomGenerator random(3);
        for (int round = 0; round < 2000; ++round) {
            const auto any = [&](int most) {
                plain::Shares values(std::size_t(random.bounded(most + 1)));
                for (double &value : values)
                    value = random.generateDouble() - 0.5;
                return values;
            };
            const plain::Shares a = any(round % 50 ? 12 : 400);
            const plain::Shares b = any(round % 9 ? 8 : 60);
            plain::Shares out{3.0, 4.0};
            QCOMPARE(vex::core::convForReal(a, b, out), !a.empty() && !b.empty());
            const plain::Shares expected = plain::convolve(a, b);
            QVERIFY(out == expected);
            vex::core::convForReal(out = a, b, out);
            QVERIFY(out == expected);
            vex::core::convForReal(a, out = b, out);
            QVERIFY(out == expected);
        }
    }

    void rowsAreQuotedWhereNeeded()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"rows.csv"_s);
        vex::CsvWriter writer(path, u"\r\n"_s, u';');
        QVERIFY(!writer.writeRow({u"not open"_s}));
        QVERIFY(writer.open());
        QVERIFY(writer.writeRow({u"plain, µ"_s, u""_s, u"a;b"_s, u"say \"x\""_s, u"two\nlines"_s}));
        QVERIFY(writer.writeRow({}));
        QVERIFY(writer.close());
        QCOMPARE(vex::test::contentOf(path),
            "plain, µ;;\"a;b\";\"say \"\"x\"\"\";\"two\nlines\"\r\n\r\n");
    }

    void failuresAreReported()
    {
        QTest::failOnWarning(QRegularExpression(u".?"_s));
        const QTemporaryDir folder;
        for (const QString &path : {folder.path(), QString(), folder.filePath(u"a\0b"_s)}) {
            vex::CsvWriter writer(path, u"\n"_s, u',');
            QVERIFY(!writer.open() && !writer.errorString().isEmpty());
        }
        QVERIFY(QDir(folder.path()).isEmpty());
        if (!QFile::exists(u"/dev/full"_s))
            return;
        vex::CsvWriter full(u"/dev/full"_s, u"\n"_s, u',');
        QVERIFY(full.open() && full.writeRow({u"held back"_s}));
        QVERIFY(!full.close() && !full.errorString().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCoreMini)
#include "tst_CoreMini.moc"

#include "PlainDistribution.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <vex/AveragineIsotopeDistribution.h>
#include <vex/IsotopeWorkspace.h>

#include <limits>
#include <stdexcept>
#include <thread>

using namespace Qt::StringLiterals;
using vex::AveragineIsotopeDistribution;
using vex::IsotopeWorkspace;
using Parameters = AveragineIsotopeDistribution::Parameters;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Parameters withGrid(double count, double spacing)
{
    Parameters parameters;
    parameters.avgDistCount = count;
    parameters.massSpacing = spacing;
    return parameters;
}

} // namespace

Q_DECLARE_METATYPE(Parameters)

class TestAveragineIsotopeDistribution : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tableAndLookUpsEqualThePlainForm_data()
    {
        QTest::addColumn<Parameters>("parameters");
        QTest::addColumn<int>("count");
        QTest::newRow("default") << Parameters() << 1000;
        QTest::newRow("accurate") << Parameters::makeDefaultForAccurate() << 1000;
        QTest::newRow("fractional count") << withGrid(3.25, 100.0) << 4;
        QTest::newRow("one point") << withGrid(1.0, 100.0) << 1;
        QTest::newRow("count below one") << withGrid(0.5, 100.0) << 1;
        QTest::newRow("fractional spacing") << withGrid(300.0, 33.3) << 300;
        QTest::newRow("negative spacing") << withGrid(5.0, -100.0) << 5;
    }
    void tableAndLookUpsEqualThePlainForm()
    {
        QFETCH(Parameters, parameters);
        QFETCH(int, count);
        const AveragineIsotopeDistribution table(parameters);
        const plain::Distribution expected(parameters);
        QCOMPARE(table.patternCount(), count);
        const double spacing = parameters.massSpacing;
        for (double position = -1.75; position < count + 2.0; position += 0.125) {
            const double mass = position * spacing;
            QCOMPARE(table.isotopeIntensityFractions(mass), expected.nearest(mass));
            for (const int isotope : {-1, 0, 1, 5, 20, 60, 1000}) // == tells bits but for zeros
                QVERIFY(table.isotopeFractionInterpolated(mass, isotope)
                    == expected.interpolated(mass, isotope));
        }
        QCOMPARE(table.isotopeIntensityFractions(0.0), plain::Shares{1.0});
    }

    void grid_data()
    {
        QTest::addColumn<double>("count");
        QTest::addColumn<double>("spacing");
        QTest::addColumn<int>("patterns"); // -1: refused
        QTest::newRow("no point") << 0.0 << 100.0 << 0;
        QTest::newRow("negative count") << -3.0 << 100.0 << 0;
        QTest::newRow("NaN as count") << kNaN << 100.0 << 0;
        QTest::newRow("infinite count") << kInf << 100.0 << -1;
        QTest::newRow("1e9 points") << 1e9 << 100.0 << -1;
        QTest::newRow("1e9 points at one mass") << 1e9 << 0.0 << -1;
        QTest::newRow("too long patterns") << 2e5 << 100.0 << -1;
        QTest::newRow("no spacing") << 3.0 << 0.0 << 3;
        QTest::newRow("NaN as spacing") << 3.0 << kNaN << 3;
        QTest::newRow("infinite spacing") << 3.0 << kInf << -1;
        QTest::newRow("infinite negative spacing") << 3.0 << -kInf << 3;
        QTest::newRow("huge spacing") << 2.0 << 1e9 << -1;
    }
    void grid()
    {
        QFETCH(double, count);
        QFETCH(double, spacing);
        QFETCH(int, patterns);
        if (patterns < 0) {
            QVERIFY_THROWS_EXCEPTION(
                std::length_error, AveragineIsotopeDistribution(withGrid(count, spacing)));
            return;
        }
        const AveragineIsotopeDistribution table(withGrid(count, spacing));
        QCOMPARE(table.patternCount(), patterns);
        const plain::Shares first = patterns ? plain::Shares{1.0} : plain::Shares{};
        for (const double mass : {0.0, -5.0, 1e3, 1e300, kInf, -kInf, kNaN}) {
            QCOMPARE(table.isotopeIntensityFractions(mass), first);
            QVERIFY(table.isotopeFractionInterpolated(mass, 0) <= 1.0);
        }
    }

    void emptiedPatternsAreKeptAsSuch()
    {
        Parameters parameters = withGrid(2.0, 100.0);
        parameters.finalTrim = 2.0;
        for (int i = 0; i < 2; ++i)
            QTest::ignoreMessage(QtWarningMsg, "isoVector is empty");
        const AveragineIsotopeDistribution table(parameters);
        QCOMPARE(table.isotopeIntensityFractions(100.0), plain::Shares());
        QCOMPARE(table.csvRow(1), QList<QString>{u"100"_s});
        QTest::ignoreMessage(QtDebugMsg, "m_averagTable size is <= 0");
        const AveragineIsotopeDistribution none(withGrid(0.0, 100.0));
        QCOMPARE(&none.isotopeIntensityFractions(1.0), &none.isotopeIntensityFractions(2.0));
    }

    /// Rows as long as their pattern, and the same bytes on every platform.
    void csv_data()
    {
        QTest::addColumn<Parameters>("parameters");
        QTest::addColumn<QByteArray>("sha256");
        QTest::newRow("default")
            << Parameters()
            << QByteArray("f34cda0fcc4637338174381a3634a766d0b54fb0d21b97a5973a07857f316bdb");
        QTest::newRow("accurate")
            << Parameters::makeDefaultForAccurate()
            << QByteArray("3abcc8cdf9200e290e1c37edd145e5394402f51d904e8cdd3a4721d4a9303889");
        QTest::newRow("none") << withGrid(0.0, 100.0)
                              << QCryptographicHash::hash({}, QCryptographicHash::Sha256).toHex();
    }
    void csv()
    {
        QFETCH(Parameters, parameters);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"table.csv"_s);
        AveragineIsotopeDistribution(parameters).saveToFile(path);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        QTEST(QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex(), "sha256");
        if (content.isEmpty())
            return;
        const QList<QByteArray> lines = content.split('\n');
        QVERIFY(lines[0].startsWith("MassDalton,iso0,iso1,") && lines[0].endsWith('\r'));
        QCOMPARE(lines[1], "0,1\r");
        QCOMPARE(lines.size(), 1002);
        AveragineIsotopeDistribution(parameters).saveToFile(folder.path()); // fails silently
    }

    void threadsShareOneTable()
    {
        const AveragineIsotopeDistribution table;
        const double alone = table.isotopeFractionInterpolated(54321.0, 33);
        std::array<double, 4> answers{};
        std::vector<std::thread> threads;
        for (double &answer : answers)
            threads.emplace_back([&] { answer = table.isotopeFractionInterpolated(54321.0, 33); });
        for (std::thread &thread : threads)
            thread.join();
        for (const double answer : answers)
            QCOMPARE(answer, alone);
    }

    void parametersInOneWord()
    {
        QCOMPARE(Parameters().toStringDevFriendly(),
            u"massspacing_100__avgDist_1000__interTrim_0.0001__finalTrim_0.001"_s);
        QCOMPARE(withGrid(1e9 / 3.0, 1e-7).toStringDevFriendly(),
            u"massspacing_1e-07__avgDist_3.33333e+08__interTrim_0.0001__finalTrim_0.001"_s);
    }

    void workspaceSets_data()
    {
        QTest::addColumn<int>("set");
        QTest::addColumn<plain::Shares>("sulfur");
        QTest::newRow("0") << 0 << plain::Shares{0.9499, 0.0075, 0.0425, 0.0, 0.0001};
        QTest::newRow("1") << 1 << plain::Shares{0.9502, 0.0075, 0.0421, 0.0002, 0.0};
        QTest::newRow("2") << 2 << plain::Shares{0.9499, 0.0076, 0.0429, 0.0, 0.0002};
        QTest::newRow("beyond") << 7 << plain::Shares{0.9499, 0.0076, 0.0429, 0.0, 0.0002};
    }
    void workspaceSets()
    {
        QFETCH(int, set);
        const IsotopeWorkspace workspace(
            static_cast<IsotopeWorkspace::IsotopeCompositionRatios>(set));
        QTEST(workspace.isotopeAbundances[4], "sulfur");
        QCOMPARE(workspace.residueCompositions.size(), 27U);
        const vex::ResidueCompositions::AtomCounts tryptophan{11, 10, 2, 1, 0};
        QCOMPARE(workspace.residueCompositions.at("W").get(), tryptophan);
    }

    void stepAddsAtomsOfEveryElement()
    {
        const IsotopeWorkspace workspace(IsotopeWorkspace::RatiosSet0);
        std::vector<int> totals{1, 2, 3, 4, 5};
        plain::Shares pattern{1.0};
        vex::constructNextIsotope(1e-3, workspace, {0, 0, 0, 0, 1}, pattern, totals);
        QCOMPARE(pattern, (plain::Shares{0.9499, 0.0075, 0.0425}));
        vex::constructNextIsotope(1e-4, workspace, {5, 9, 1, 1, -2}, pattern, totals);
        plain::Shares expected{0.9499, 0.0075, 0.0425};
        for (std::size_t e = 0; e < 4; ++e)
            plain::convolveRepeatedly(
                1e-4, std::vector{5, 9, 1, 1}[e], workspace.isotopeAbundances[e], &expected);
        QCOMPARE(pattern, expected);
        QCOMPARE(totals, (std::vector<int>{6, 11, 4, 5, 4}));
        QTest::ignoreMessage(QtWarningMsg, "isoVector is empty");
        vex::constructNextIsotope(2.0, workspace, {1, 1, 1, 1, 1}, pattern, totals);
        QVERIFY(pattern.empty());
        QCOMPARE(totals, (std::vector<int>{7, 12, 5, 6, 5}));
    }
};

QTEST_GUILESS_MAIN(TestAveragineIsotopeDistribution)
#include "tst_AveragineIsotopeDistribution.moc"

#include "Files.h"
#include "LoggedMessage.h"
#include "Numbers.h"
#include "PlainDistribution.h"

#include <QCryptographicHash>
#include <QTemporaryDir>

#include <vex/AveragineIsotopeDistribution.h>
#include <vex/IsotopeWorkspace.h>

#include <stdexcept>
#include <vector>

using namespace Qt::StringLiterals;
using vex::AveragineIsotopeDistribution;
using vex::IsotopeWorkspace;
using vex::test::kInf;
using vex::test::kNaN;
using Parameters = AveragineIsotopeDistribution::Parameters;

namespace {

Parameters withGrid(double count, double spacing)
{
    Parameters parameters;
    parameters.avgDistCount = count;
    parameters.massSpacing = spacing;
    return parameters;
}

} // namespace

class TestAveragineIsotopeDistribution : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tableAndLookUpsEqualThePlainForm()
    {
        for (const auto &[parameters, count] :
            {std::pair(Parameters(), 1000), {Parameters::makeDefaultForAccurate(), 1000},
                {withGrid(3.25, 100.0), 4}, {withGrid(1.0, 100.0), 1}, {withGrid(0.5, 100.0), 1},
                {withGrid(300.0, 33.3), 300}, {withGrid(5.0, -100.0), 5}}) {
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
    }

    void gridsOfNoUse()
    {
        for (const auto &[count, spacing] : {std::pair(kInf, 100.0), {1e9, 100.0}, {1e9, 0.0},
                 {2e5, 100.0}, {3.0, kInf}, {2.0, 1e9}}) // too many points or too long patterns
            QVERIFY_THROWS_EXCEPTION(
                std::length_error, AveragineIsotopeDistribution(withGrid(count, spacing)));
        for (const auto &[count, spacing, patterns] :
            {std::tuple(0.0, 100.0, 0), {-3.0, 100.0, 0}, {0.0, -0.0, 0}, {kNaN, 100.0, 0},
                {3.0, 0.0, 3}, {3.0, -0.0, 3}, {3.0, kNaN, 3}, {3.0, -100.0, 3}, {3.0, -kInf, 3}}) {
            const AveragineIsotopeDistribution table(withGrid(count, spacing));
            QCOMPARE(table.patternCount(), patterns);
            const plain::Shares first = patterns ? plain::Shares{1.0} : plain::Shares{};
            for (const double mass : {0.0, -5.0, 1e3, 1e300, kInf, -kInf, kNaN}) {
                QCOMPARE(table.isotopeIntensityFractions(mass), first);
                const double position = mass / spacing; // below the first point: the first pattern
                const bool isFirst = patterns > 0 && mass >= 0.0 && position < patterns - 1.0;
                QCOMPARE(table.isotopeFractionInterpolated(mass, 0), isFirst ? 1.0 : 0.0);
            }
        }
    }

    void movedFromTablesAreWhole()
    {
        AveragineIsotopeDistribution first(withGrid(3.0, 100.0));
        AveragineIsotopeDistribution second = std::move(first);
        second = std::move(first); // NOLINT(bugprone-use-after-move)
        QCOMPARE(
            first.patternCount() + second.patternCount(), 6); // NOLINT(bugprone-use-after-move)
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
        const AveragineIsotopeDistribution none = withGrid(0.0, 100.0);
        const QString logged = vex::test::loggedBy([&none] {
            QCOMPARE(&none.isotopeIntensityFractions(1.0), &none.isotopeIntensityFractions(2.0));
        });
        static const QRegularExpression expected(
            u"^0 src/algo/AveragineIsotopeDistribution.cpp:\\d+ .*isotopeIntensityFractions.*: "
            "m_averagTable size is <= 0$"_s);
        QVERIFY2(logged.contains(expected), qPrintable(logged));
    }

    /// Rows as long as their pattern, and the same bytes on every platform.
    void csv()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"table.csv"_s);
        const std::pair<Parameters, QByteArray> recorded[] = {
            {Parameters(), "f34cda0fcc4637338174381a3634a766d0b54fb0d21b97a5973a07857f316bdb"},
            {Parameters::makeDefaultForAccurate(),
                "3abcc8cdf9200e290e1c37edd145e5394402f51d904e8cdd3a4721d4a9303889"},
            {withGrid(0.0, 100.0), // nothing at all
                "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"}};
        for (const auto &[parameters, sha256] : recorded) {
            const AveragineIsotopeDistribution table(parameters);
            table.saveToFile(folder.path()); // fails silently
            table.saveToFile(path);
            QVERIFY(QFile::exists(path));
            const QByteArray content = vex::test::contentOf(path);
            QCOMPARE(QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex(), sha256);
        }
    }

    void parametersInOneWord()
    {
        QCOMPARE(Parameters().toStringDevFriendly(),
            u"massspacing_100__avgDist_1000__interTrim_0.0001__finalTrim_0.001"_s);
        QCOMPARE(withGrid(1e9 / 3.0, 1e-7).toStringDevFriendly(),
            u"massspacing_1e-07__avgDist_3.33333e+08__interTrim_0.0001__finalTrim_0.001"_s);
    }

    void workspaceSets()
    {
        const plain::Shares sulfurs[] = {{0.9499, 0.0075, 0.0425, 0.0, 0.0001},
            {0.9502, 0.0075, 0.0421, 0.0002, 0.0}, {0.9499, 0.0076, 0.0429, 0.0, 0.0002}};
        for (const int set : {0, 1, 2, 7}) { // one beyond the last
            const IsotopeWorkspace workspace =
                static_cast<IsotopeWorkspace::IsotopeCompositionRatios>(set);
            QCOMPARE(workspace.isotopeAbundances[4], sulfurs[std::min(set, 2)]);
            QCOMPARE(workspace.residueCompositions.size(), 27U);
            QCOMPARE(workspace.residueCompositions.at("W").get(),
                (vex::ResidueCompositions::AtomCounts{11, 10, 2, 1, 0}));
        }
    }

    void stepAddsAtomsOfEveryElement()
    {
        IsotopeWorkspace workspace(IsotopeWorkspace::RatiosSet0);
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

        // Five elements, however many lists there are.
        for (const std::size_t lists : {6U, 4U, 0U}) {
            workspace.isotopeAbundances.resize(lists, {0.5, 0.5});
            pattern = {1.0};
            totals.assign(5, 0);
            vex::constructNextIsotope(0.0, workspace, {0, 0, 0, 0, 1}, pattern, totals);
            QCOMPARE(pattern.size(), lists > 4 ? 5U : 1U);
            QCOMPARE(totals.back(), 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestAveragineIsotopeDistribution)
#include "tst_AveragineIsotopeDistribution.moc"

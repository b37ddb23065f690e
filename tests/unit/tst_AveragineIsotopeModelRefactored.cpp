#include "ErrorTrace.h"

#include <QTest>

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/ElementsIsoMassAndAbundances.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;

namespace {

using Type = MolecularFormula::AtomType;
using Counts = QHash<Type, double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const Counts kAveragine{
    {Type::C, 4.9384}, {Type::H, 7.7583}, {Type::N, 1.3577}, {Type::O, 1.4773}, {Type::S, 0.0417}};

MolecularFormula formulaOf(const Counts &counts)
{
    MolecularFormula formula;
    formula.setMolecularFormula(counts);
    return formula;
}

using Isotopes = QList<ElementsIsoMassAndAbundances::Isotope>;

ElementsIsoMassAndAbundances tableOf(const QList<Isotopes> &elements)
{
    ElementsIsoMassAndAbundances table;
    for (const Isotopes &isotopes : elements) {
        QList<double> masses;
        QList<double> abundances;
        for (const auto &isotope : isotopes) {
            masses.append(isotope.mass);
            abundances.append(isotope.abundance);
        }
        std::ignore = table.insertIsoMassAndAbundance(masses, abundances);
    }
    return table;
}

/// One unit of averagine convolved with itself, one unit at a time.
std::vector<long double> exactPattern(int units, std::size_t peaks)
{
    const long double atoms = 4.9384L + 7.7583L + 1.3577L + 1.4773L + 0.0417L;
    const long double shares[][3] = {{4.9384L, 0.9893L, 0.0107L}, {7.7583L, 0.999885L, 0.000115L},
        {1.3577L, 0.99632L, 0.00368L}};
    long double unit[3] = {};
    for (const auto &element : shares) {
        unit[0] += element[0] * element[1] / atoms;
        unit[1] += element[0] * element[2] / atoms;
    }
    const long double oxygen[] = {0.99757L, 0.00038L, 0.00205L};
    const long double sulfur[] = {0.9493L, 0.0076L, 0.0431L};
    for (int i = 0; i < 3; ++i)
        unit[i] += (1.4773L * oxygen[i] + 0.0417L * sulfur[i]) / atoms;
    std::vector<long double> pattern(peaks);
    pattern[0] = 1.0L;
    for (; units > 0; --units) {
        for (std::size_t k = peaks; k-- > 0;) {
            pattern[k] *= unit[0];
            for (std::size_t shift = 1; shift < 3 && shift <= k; ++shift)
                pattern[k] += unit[shift] * pattern[k - shift];
        }
    }
    return pattern;
}

} // namespace

Q_DECLARE_METATYPE(ElementsIsoMassAndAbundances)

class TestAveragineIsotopeModelRefactored : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void patternsAreExact_data()
    {
        QTest::addColumn<int>("capacity");
        QTest::addColumn<int>("units");
        for (const int units : {0, 1, 9, 10, 111, 1000, 14033, 21047, 70007}) {
            for (const int capacity : {3, 100, 400})
                QTest::addRow("%d units, %d peaks", units, capacity) << capacity << units;
        }
    }
    void patternsAreExact()
    {
        QFETCH(int, capacity);
        QFETCH(int, units);
        AveragineIsotopeModelRefactored model(capacity);
        QVERIFY(!model.init(formulaOf(kAveragine)).hasError());
        const double mass = units * model.merMass();
        QList<double> pattern{7.0};
        const int best = model.peakIntensityRatiosFromMass(mass, &pattern).value();
        QCOMPARE(pattern.size(), capacity);
        const auto expected = exactPattern(units, std::size_t(capacity));
        double sum = 0.0;
        for (int k = 0; k < capacity; ++k) {
            QVERIFY(std::fabs(pattern[k] - double(expected[std::size_t(k)])) < 1e-12);
            sum += pattern[k];
        }
        const auto highest = std::max_element(pattern.cbegin(), pattern.cend());
        QCOMPARE(best, *highest > 0.0 ? int(highest - pattern.cbegin()) : -1);
        QVERIFY(std::fabs(model.signalCoverage(mass) - sum) < 1e-15 * capacity);
        if (capacity == 400 && mass < 1.51e5)
            QVERIFY(sum > 0.9999);
    }

    void answersAgreeWithTheClassicModel()
    {
        AveragineIsotopeModel classic;
        AveragineIsotopeModelRefactored list;
        QList<double> pattern;
        for (const Counts &counts : {Counts{}, kAveragine, Counts{{Type::P, 2.0}}}) {
            if (!counts.isEmpty()) {
                std::ignore = classic.init(formulaOf(counts));
                QVERIFY(!list.init(formulaOf(counts)).hasError());
            }
            QVERIFY(std::fabs(list.merMass() - classic.merMass()) < 1e-12);
            for (const double mass : {0.0, -1.0, 3.0, 5808.3, 66430.0, kInf, kNaN}) {
                const int expected = classic.peakIntensityRatiosFromMass(mass, &pattern).value();
                QCOMPARE(list.peakIntensityRatiosFromMass(mass, &pattern).value(), expected);
                if (std::isfinite(mass)) {
                    const double bound = 1e-12 * (1.0 + std::fabs(mass));
                    QVERIFY(std::fabs(list.getMonoFromAverageMer(mass)
                                - classic.getMonoFromAverageMer(mass))
                        < bound);
                    QVERIFY(std::fabs(list.getAverageFromMonoMass(mass)
                                - classic.getAverageFromMonoMass(mass))
                        < bound);
                }
            }
        }
    }

    /// In any order, as percentages, with places left empty.
    void elementsAreReadByTheirMasses()
    {
        AveragineIsotopeModelRefactored own;
        QVERIFY(!own.init(formulaOf({{Type::C, 1.0}})).hasError());
        const AveragineIsotopeModelRefactored builtIn = own;
        const Isotopes carbon{{13.0033548, 1.07}, {0.0, 0.0}, {12.0, 98.93}};
        QVERIFY(!own.initElementsIsoMassAndAbundance(tableOf({carbon})).hasError());
        QVERIFY(std::fabs(own.merMass() - builtIn.merMass()) < 1e-12);
        QList<double> a;
        QList<double> b;
        QCOMPARE(own.peakIntensityRatiosFromMass(6e4, &a).value(),
            builtIn.peakIntensityRatiosFromMass(6e4, &b).value());
        for (int i = 0; i < 100; ++i)
            QVERIFY(std::fabs(a[i] - b[i]) < 1e-13);

        // 36S stands four places above 32S, and the lightest isotope is place 0, however rare.
        const Isotopes sulfur{{31.97, 0.05}, {33.97, 0.2}, {35.97, 0.75}};
        QVERIFY(!own.initElementsIsoMassAndAbundance(tableOf({sulfur})).hasError());
        QCOMPARE(own.peakIntensityRatiosFromMass(35.0, &a).value(), 4);
        QCOMPARE(a.first(5), (QList<double>{0.05, 0.0, 0.2, 0.0, 0.75}));
        QVERIFY(std::fabs(own.getMonoFromAverageMer(own.merMass()) - 31.97) < 1e-12);
    }

    void refusedElementsLeaveTheModelAsItWas_data()
    {
        const Isotopes good{{12.0, 1.0}};
        QTest::addColumn<ElementsIsoMassAndAbundances>("table");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QList<Isotopes> &elements,
                             const QString &text) {
            QTest::newRow(name) << tableOf(elements) << text;
        };
        row("too many", QList<Isotopes>(9, good),
            u"The table holds 9 elements, there are 8 atom types."_s);
        row("no isotope", {good, {}}, u"Element 1 has no abundance above 0."_s);
        row("no abundance", {{{12.0, 0.0}}}, u"Element 0 has no abundance above 0."_s);
        row("negative abundance", {good, {{1.0, 1.0}, {2.0, -0.1}}},
            u"Element 1, isotope 1: the abundance is -0.1."_s);
        row("NaN as abundance", {{{12.0, kNaN}}}, u"Element 0, isotope 0: the abundance is nan."_s);
        row("infinite abundance", {{{12.0, kInf}}},
            u"Element 0, isotope 0: the abundance is inf."_s);
        row("no mass", {{{0.0, 1.0}}}, u"Element 0, isotope 0: the mass is 0."_s);
        row("infinite mass", {{{kInf, 1.0}}}, u"Element 0, isotope 0: the mass is inf."_s);
        row("not of the composition", {},
            u"The composition holds 4.9384 atoms of type 0, which has no isotopes."_s);
        row("isotopes far apart", QList<Isotopes>(5, {{12.0, 0.5}, {1e9, 0.5}}),
            u"Convolution index out of bounds.."_s);
    }
    void refusedElementsLeaveTheModelAsItWas()
    {
        QFETCH(ElementsIsoMassAndAbundances, table);
        QFETCH(QString, message);
        AveragineIsotopeModelRefactored model;
        QVERIFY(!model.init(formulaOf(kAveragine)).hasError());
        QList<double> before;
        QList<double> after;
        std::ignore = model.peakIntensityRatiosFromMass(1e4, &before);
        QTest::ignoreMessage(QtCriticalMsg, qPrintable(message));
        const Error error = model.initElementsIsoMassAndAbundance(table);
        QCOMPARE(error.code(), GeneralFailure);
        QVERIFY(!error.trace().isEmpty());
        std::ignore = model.peakIntensityRatiosFromMass(1e4, &after);
        QCOMPARE(after, before);
        QVERIFY(!model.init(formulaOf({{Type::H, 1.0}, {Type::S, 1.0}})).hasError());
    }

    void refusedCompositions_data()
    {
        QTest::addColumn<int>("capacity");
        QTest::addColumn<Counts>("counts");
        QTest::newRow("nothing") << 100 << Counts{};
        QTest::newRow("negative") << 100 << Counts{{Type::C, 5.0}, {Type::H, -1.0}};
        QTest::newRow("not a number") << 100 << Counts{{Type::C, kNaN}};
        QTest::newRow("infinite") << 100 << Counts{{Type::C, kInf}};
        QTest::newRow("spare type") << 100 << Counts{{Type::Reserved, 1.0}};
        QTest::newRow("capacity below one unit") << 2 << kAveragine;
        QTest::newRow("no capacity") << 0 << kAveragine;
        QTest::newRow("negative capacity") << -1 << kAveragine;
    }
    void refusedCompositions()
    {
        QFETCH(int, capacity);
        QFETCH(Counts, counts);
        AveragineIsotopeModelRefactored model(capacity);
        const QRegularExpression any(u"."_s);
        QTest::ignoreMessage(QtCriticalMsg, any);
        QCOMPARE(model.init(formulaOf(counts)).code(), GeneralFailure);
        QCOMPARE(model.merMass(), 0.0);
        QList<double> pattern;
        if (capacity < 1)
            QTest::ignoreMessage(QtCriticalMsg, any);
        QCOMPARE(model.peakIntensityRatiosFromMass(1e4, &pattern).hasError(), capacity < 1);
        QCOMPARE(model.signalCoverage(1e4), capacity < 1 ? 0.0 : 1.0);
    }

    void elementTable()
    {
        ElementsIsoMassAndAbundances table = tableOf({{{12.0, 0.9893}, {13.0033548, 0.0107}}, {}});
        QTest::ignoreMessage(QtWarningMsg, "Different sized isotopic mass and abundance vectors.");
        const QString check = u"src/algo/AveragineIsotopeModelRefactored:"_s;
        ErrorReport expected{GeneralFailure, {}, {check + u"78"_s, check + u"469"_s}};
        QCOMPARE(test::reportOf(table.insertIsoMassAndAbundance({1.0, 2.0}, {1.0})), expected);
        QTest::ignoreMessage(QtWarningMsg, "Different sized isotopic mass and abundance vectors.");
        expected.trace.last() = check + u"489"_s;
        QCOMPARE(test::reportOf(table.setIsoMassAndAbundanceForElement(0, {}, {1.0})), expected);
        QVERIFY(!table.setIsoMassAndAbundanceForElement(0, {14.0}, {1.0}).hasError());
        QCOMPARE(table.numberOfElements(), 2);
        QCOMPARE(table.numberOfIsotopesForElement(0), 2);
        QCOMPARE(table.numberOfIsotopesForElement(1), 0);
        double mass = 0.0;
        double abundance = 0.0;
        QVERIFY(!table.elementIsoMassAbundanceFromIndex(0, 1, &mass, &abundance).hasError());
        QCOMPARE(mass, 13.0033548);
        QCOMPARE(abundance, 0.0107);
        for (const auto &[element, isotope, line] :
            {std::tuple(-1, 0, u"450"_s), std::tuple(2, 0, u"450"_s), std::tuple(0, 2, u"451"_s),
                std::tuple(1, 0, u"451"_s)}) {
            expected.trace = QStringList{u"src/algo/ErrorUtils:120"_s, check + line};
            const Error error =
                table.elementIsoMassAbundanceFromIndex(element, isotope, &mass, &abundance);
            QCOMPARE(test::reportOf(error), expected);
            QVERIFY(mass == 13.0033548 && abundance == 0.0107);
        }
    }
};

QTEST_GUILESS_MAIN(TestAveragineIsotopeModelRefactored)
#include "tst_AveragineIsotopeModelRefactored.moc"

#include "ErrorTrace.h"
#include "Patterns.h"

#include <QTest>

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/ElementsIsoMassAndAbundances.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;
using namespace vex;
using namespace vex::test;

namespace {

using Isotopes = QList<ElementsIsoMassAndAbundances::Isotope>;

ElementsIsoMassAndAbundances tableOf(const QList<Isotopes> &elements)
{
    ElementsIsoMassAndAbundances table;
    for (const Isotopes &isotopes : elements) {
        QList<double> masses;
        QList<double> abundances;
        for (const auto &[mass, abundance] : isotopes) {
            masses.append(mass);
            abundances.append(abundance);
        }
        std::ignore = table.insertIsoMassAndAbundance(masses, abundances);
    }
    return table;
}

/// A model of one element.
AveragineIsotopeModelRefactored modelOf(const Isotopes &isotopes, int capacity = 100)
{
    AveragineIsotopeModelRefactored model(capacity);
    std::ignore = model.initElementsIsoMassAndAbundance(tableOf({isotopes}));
    std::ignore = model.init(formulaOf({{Type::C, 1.0}}));
    return model;
}

/// What the list-based model reports from these lines, innermost first.
ErrorReport failureAt(const QList<int> &lines)
{
    ErrorReport report{GeneralFailure, {}, {}};
    for (const int line : lines)
        report.trace.append(u"src/algo/AveragineIsotopeModelRefactored:"_s + QString::number(line));
    return report;
}

/// One unit of averagine convolved with itself, one unit at a time.
std::vector<long double> exactPattern(int units, std::size_t peaks)
{
    const long double atoms = 4.9384L + 7.7583L + 1.3577L + 1.4773L + 0.0417L;
    long double unit[3] = {};
    for (const auto &isotopes : {std::array{4.9384L, 0.9893L, 0.0107L, 0.0L},
             {7.7583L, 0.999885L, 0.000115L, 0.0L}, {1.3577L, 0.99632L, 0.00368L, 0.0L},
             {1.4773L, 0.99757L, 0.00038L, 0.00205L}, {0.0417L, 0.9493L, 0.0076L, 0.0431L}}) {
        for (std::size_t shift = 0; shift < 3; ++shift)
            unit[shift] += isotopes[0] * isotopes[shift + 1] / atoms;
    }
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

class TestAveragineIsotopeModelRefactored : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void patternsAreExact()
    {
        for (const int units : {0, 1, 9, 10, 111, 1000, 14033, 21047, 70007}) {
            const auto expected = exactPattern(units, 400); // the first ones of any capacity
            for (const int capacity : {3, 100, 400}) {
                AveragineIsotopeModelRefactored model(capacity);
                QVERIFY(!model.init(formulaOf(kAveragine)).hasError());
                const double mass = (units + 0.45) * model.merMass(); // up to half a unit is none
                const auto [best, pattern] = ask(model, mass);
                QCOMPARE(pattern.size(), capacity);
                for (int k = 0; k < capacity; ++k)
                    QVERIFY(std::fabs(pattern[k] - double(expected[std::size_t(k)])) < 1e-12);
                const double sum = std::accumulate(pattern.cbegin(), pattern.cend(), 0.0);
                const auto highest = std::max_element(pattern.cbegin(), pattern.cend());
                QCOMPARE(best, *highest > 0.0 ? int(highest - pattern.cbegin()) : -1);
                QVERIFY(std::fabs(model.signalCoverage(mass) - sum) < 1e-15 * capacity);
            }
        }
    }

    /// One isotope in a million and fewer, to masses where all that is rounded has been raised to
    /// the same power; and one in a thousand, where the pattern moves off its lightest isotopes.
    void tracesAreExact()
    {
        for (const double trace : {1e-3, 1e-6, 1e-9, 1e-13, 1e-19}) {
            for (const int gap : {1, 60}) { // peaks beyond the capacity lie in between
                const int capacity = gap == 1 ? 500 : 100;
                const auto model = modelOf({{30.0, 1.0 - trace}, {30.0 + gap, trace}}, capacity);
                for (double units = 1.0; units < 1e31; units = std::floor(units * 3.7)) {
                    const double mass = units * model.merMass();
                    const QList<double> pattern = ask(model, mass).pattern;
                    long double ways = 0.0L; // logarithm of the binomial coefficient
                    for (int k = 0; k * gap < capacity && k <= units; ++k) {
                        ways += k > 0 ? std::log((units - k + 1.0L) / k) : 0.0L;
                        const long double expected =
                            std::exp(ways + k * std::log((long double)trace)
                                + (units - k) * std::log1p(-(long double)trace));
                        QVERIFY(std::fabs(pattern[k * gap] - double(expected)) < 1e-12);
                    }
                    QVERIFY(model.signalCoverage(mass) <= 1.0);
                }
                QCOMPARE(model.signalCoverage(kInf), 0.0);
            }
        }
    }

    void hugeMassesAreTakenApart()
    {
        const auto model = modelOf({{32.0, 1.0}});
        // The quotient by 1000 units rounds up to a whole number; and what no subtraction changes.
        for (const double units : {1.4178822104544299e+17, 1.244014285820567e+30, 1e300}) {
            const auto [best, pattern] = ask(model, 32.0 * units);
            QCOMPARE(best, 0);
            QCOMPARE(pattern.first(), 1.0);
        }
    }

    /// Of patterns that are far from their lightest isotopes only what is there is kept.
    void lightestIsotopesMayBeNegligible()
    {
        const auto model = modelOf({{10.0, 1e-30}, {11.0, 1.0}}, 139500);
        for (const int units : {1, 30, 2047, 128000, 139499, 139500, 139600, 140000}) {
            const bool isHeld = units < model.capacity();
            const auto [best, pattern] = ask(model, units * model.merMass());
            QCOMPARE(best, isHeld ? units : -1);
            QCOMPARE(std::count(pattern.cbegin(), pattern.cend(), 0.0), 139500 - int(isHeld));
        }
    }

    void answersAgreeWithTheClassicModel()
    {
        AveragineIsotopeModel classic;
        AveragineIsotopeModelRefactored list;
        for (const Counts &counts : {Counts{}, kAveragine, Counts{{Type::P, 2.0}}}) {
            if (!counts.isEmpty()) {
                std::ignore = classic.init(formulaOf(counts));
                QVERIFY(!list.init(formulaOf(counts)).hasError());
            }
            QVERIFY(std::fabs(list.merMass() - classic.merMass()) < 1e-12);
            for (const double mass : {0.0, -1.0, 3.0, 5808.3, 66430.0, kInf, kNaN}) {
                const Answer expected = ask(classic, mass);
                const Answer exact = ask(list, mass);
                QCOMPARE(exact.best, expected.best);
                for (int k = 0; k < 100; ++k) // what the classic one cuts
                    QVERIFY(std::fabs(expected.pattern[k] - exact.pattern[k]) < 6e-4);
            }
            const double mono = list.getMonoFromAverageMer(66430.0);
            QVERIFY(std::fabs(mono - classic.getMonoFromAverageMer(66430.0)) < 1e-7);
            const double average = list.getAverageFromMonoMass(mono);
            QVERIFY(std::fabs(average - classic.getAverageFromMonoMass(mono)) < 1e-7);
        }
    }

    /// In any order, as percentages, with places left empty.
    void elementsAreReadByTheirMasses()
    {
        AveragineIsotopeModelRefactored builtIn;
        QVERIFY(!builtIn.init(formulaOf({{Type::C, 1.0}})).hasError());
        AveragineIsotopeModelRefactored own = builtIn;
        const Isotopes carbon{{13.0033548, 1.07}, {0.0, 0.0}, {12.0, 98.93}};
        QVERIFY(!own.initElementsIsoMassAndAbundance(tableOf({carbon})).hasError());
        QVERIFY(std::fabs(own.merMass() - builtIn.merMass()) < 1e-12);
        for (int k = 0; k < 100; ++k)
            QVERIFY(std::fabs(ask(own, 6e4).pattern[k] - ask(builtIn, 6e4).pattern[k]) < 1e-13);

        // 36S stands four places above 32S, and the lightest isotope is place 0, however rare.
        const Isotopes sulfur{{31.97, 0.05}, {33.96, 0.2}, {35.96, 0.75}};
        QVERIFY(!own.initElementsIsoMassAndAbundance(tableOf({sulfur})).hasError());
        QVERIFY(!own.init(formulaOf({{Type::C, 2.0}})).hasError()); // of these elements
        const auto [best, pattern] = ask(own, 35.0);
        QCOMPARE(best, 4);
        QCOMPARE(pattern.first(5), (QList<double>{0.05, 0.0, 0.2, 0.0, 0.75}));
        QVERIFY(std::fabs(own.getMonoFromAverageMer(own.merMass()) - 31.97) < 1e-12);
    }

    void refusedElementsLeaveTheModelAsItWas()
    {
        const Isotopes good{{12.0, 1.0}};
        const QByteArray tooLong =
            "A unit of the composition has more isotope peaks than the capacity, 100.";
        struct Row
        {
            QList<Isotopes> elements;
            QByteArray message;
            QList<int> lines{501};
        };
        const Row tables[] = {
            {QList<Isotopes>(9, good), "The table holds 9 elements, there are 8 atom types."},
            {{good, {}}, "Element 1 has no abundance above 0."},
            {{good, {{1.0, 1.0}, {2.0, -0.1}}}, "Element 1, isotope 1: the abundance is -0.1."},
            {{{{12.0, kInf}}}, "Element 0, isotope 0: the abundance is inf."},
            {{{{0.0, 1.0}}}, "Element 0, isotope 0: the mass is 0."},
            {{{{kInf, 1.0}}}, "Element 0, isotope 0: the mass is inf."},
            {{}, "The composition holds 4.9384 atoms of type 0, which has no isotopes.",
                {503, 502}},
            {QList<Isotopes>(5, {{12.0, 0.5}, {1e9, 0.5}}), tooLong, {64, 505, 502}}};
        for (const auto &[elements, message, lines] : tables) {
            AveragineIsotopeModelRefactored model;
            QVERIFY(!model.init(formulaOf(kAveragine)).hasError());
            const Answer before = ask(model, 1e4);
            if (message == tooLong)
                QTest::ignoreMessage(QtCriticalMsg, "Convolution index out of bounds..");
            QTest::ignoreMessage(QtCriticalMsg, message);
            QCOMPARE(test::reportOf(model.initElementsIsoMassAndAbundance(tableOf(elements))),
                failureAt(lines));
            QVERIFY(ask(model, 1e4) == before);
            QVERIFY(!model.init(formulaOf({{Type::H, 1.0}, {Type::S, 1.0}})).hasError());
        }
    }

    void refusedCompositions()
    {
        const std::tuple<int, Counts, QList<int>> refused[] = {{100, {}, {506, 504}},
            {100, {{Type::C, 5.0}, {Type::H, -1.0}}, {503, 504}},
            {100, {{Type::C, kInf}}, {503, 504}}, {100, {{Type::Reserved, 1.0}}, {503, 504}},
            // an atom needs three places
            {2, kAveragine, {64, 505, 504}}, {-1, kAveragine, {64, 505, 504}}};
        const QRegularExpression any(u"."_s);
        for (const auto &[capacity, counts, lines] : refused) {
            AveragineIsotopeModelRefactored model(capacity);
            for (qsizetype i = 1; i < lines.size() + (capacity < 1); ++i)
                QTest::ignoreMessage(QtCriticalMsg, any);
            QCOMPARE(test::reportOf(model.init(formulaOf(counts))), failureAt(lines));
            QCOMPARE(model.merMass(), 0.0);
            QList<double> pattern{1.0, 2.0, 3.0}; // to be replaced
            const Result<int> best = model.peakIntensityRatiosFromMass(1e4, &pattern);
            QCOMPARE(best.hasError() ? test::reportOf(best.error()) : ErrorReport(),
                capacity < 1 ? failureAt({507}) : ErrorReport());
            const auto sum = std::accumulate(pattern.cbegin(), pattern.cend(), 0.0);
            QCOMPARE(sum, capacity < 1 ? 0.0 : 1.0);
            QCOMPARE(model.signalCoverage(1e4), sum);
        }
    }

    void movedFromModelsAreWhole()
    {
        auto first = modelOf({{12.0, 0.5}, {13.0, 0.5}});
        auto second = std::move(first);
        second = std::move(first); // NOLINT(bugprone-use-after-move)
        QVERIFY(ask(first, 1e4) == ask(second, 1e4)); // NOLINT(bugprone-use-after-move)
        QCOMPARE(first.merMass(), 12.5);
    }

    void elementTable()
    {
        ElementsIsoMassAndAbundances table = tableOf({{{12.0, 0.9893}, {13.0033548, 0.0107}}, {}});
        for (const bool isInserted : {true, false}) {
            QTest::ignoreMessage(
                QtWarningMsg, "Different sized isotopic mass and abundance vectors.");
            QCOMPARE(
                test::reportOf(isInserted ? table.insertIsoMassAndAbundance({1.0, 2.0}, {1.0})
                                          : table.setIsoMassAndAbundanceForElement(0, {}, {1.0})),
                failureAt({78, isInserted ? 469 : 489}));
        }
        QVERIFY(!table.setIsoMassAndAbundanceForElement(0, {14.0}, {1.0}).hasError());
        QCOMPARE(table.numberOfElements(), 2);
        double mass = 0.0;
        double abundance = 0.0;
        QVERIFY(!table.elementIsoMassAbundanceFromIndex(0, 1, &mass, &abundance).hasError());
        for (const auto &[element, isotope, line] :
            {std::tuple(-1, 0, 450), {2, 0, 450}, {0, 2, 451}, {1, 0, 451}}) {
            ErrorReport expected = failureAt({line});
            expected.trace.prepend(u"src/algo/ErrorUtils:120"_s);
            const Error error =
                table.elementIsoMassAbundanceFromIndex(element, isotope, &mass, &abundance);
            QCOMPARE(test::reportOf(error), expected);
            QVERIFY(mass == 13.0033548 && abundance == 0.0107);
        }
    }
};

QTEST_GUILESS_MAIN(TestAveragineIsotopeModelRefactored)
#include "tst_AveragineIsotopeModelRefactored.moc"

#include <vex/IsotopePatternCursor.h>

#include "ErrorTrace.h"
#include "Patterns.h"

#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace vex;
using namespace vex::test;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
template <typename Model>
Model modelOf(const Counts &counts, Model model = Model())
{
    std::ignore = model.init(formulaOf(counts)); // what it refuses leaves it without a composition
    return model;
}

/// Masses in an order that a mixture may have: ascending, or going back and forth by few blocks or
/// by many.
QList<double> massesFor(double merMass, int order)
{
    QRandomGenerator random(quint32(order) + 3);
    QList<double> masses{1e3 * merMass};
    double mers = 0.0;
    for (int i = 0; i < 1500; ++i) {
        const double step = std::pow(10.0, random.bounded(5)) * random.generateDouble();
        mers += order == 0 ? 0.02 * step : order == 1 ? step * (random.bounded(2) - 0.5) : 0.0;
        mers = order == 2 ? step : std::fabs(mers);
        masses << mers * merMass;
        if (random.bounded(4) == 0) // one block more, perhaps, or the same ones
            masses << masses.last() + random.generateDouble() * merMass;
        if (random.bounded(10) == 0) // where another block begins
            masses << std::ceil(mers) * merMass << (std::ceil(mers) + 0.5) * merMass
                   << (std::ceil(mers) + 1.0) * merMass;
        if (random.bounded(40) == 0 && order > 0)
            masses << QList{kInf, -kInf, kNaN, 0.0, -1e5, 3e4 * merMass, 8e4 * merMass,
                1e9 * merMass}[random.bounded(8)];
    }
    return masses;
}

template <typename Model>
void compareWithModel(const Model &model)
{
    for (const int order : {0, 1, 2}) {
        IsotopePatternCursor cursor(model);
        for (const double mass : massesFor(model.merMass() > 0.0 ? model.merMass() : 7.0, order)) {
            const Answer expected = ask(model, mass);
            QVERIFY2(ask(cursor, mass) == expected, QByteArray::number(mass, 'g', 17));
        }
    }
}

} // namespace

class TestIsotopePatternCursor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersAreThoseOfTheModel_data()
    {
        QTest::addColumn<Counts>("counts");
        QTest::newRow("averagine") << kAveragine;
        QTest::newRow("nearly monoisotopic") << Counts{{Type::P, 1.0}, {Type::H, 1e-3}};
        QTest::newRow("wide") << Counts{{Type::S, 1.0}};
        QTest::newRow("single peak") << Counts{{Type::P, 1.0}};
        QTest::newRow("no first peak") << Counts{{Type::P, -3.0}, {Type::H, 4.0}};
        QTest::newRow("first peak above 1") << Counts{{Type::P, 2.0}, {Type::C, -1.0}};
        QTest::newRow("no number") << Counts{{Type::C, kNaN}, {Type::H, 8.0}};
        QTest::newRow("overflow") << Counts{{Type::C, kInf}, {Type::H, 8.0}};
        QTest::newRow("nothing") << Counts();
    }
    void answersAreThoseOfTheModel()
    {
        QFETCH(Counts, counts);
        compareWithModel(modelOf<AveragineIsotopeModel>(counts));
        compareWithModel(AveragineIsotopeModel());
        for (const int capacity : {3, 100, 300})
            compareWithModel(modelOf(counts, AveragineIsotopeModelRefactored(capacity)));
    }

    void modelsMayChange()
    {
        auto classic = modelOf<AveragineIsotopeModel>(kAveragine);
        auto list = modelOf<AveragineIsotopeModelRefactored>(kAveragine);
        const Answer expected[] = {ask(classic, 6.6e4), ask(list, 6.6e4)};
        IsotopePatternCursor ofClassic(classic);
        IsotopePatternCursor ofList(list);
        QVERIFY(ask(ofClassic, 1e4) == ask(classic, 1e4));
        std::ignore = classic.init(formulaOf({{Type::S, 1.0}}));
        std::ignore = list.init(formulaOf({{Type::S, 1.0}}));
        QVERIFY(ask(ofClassic, 6.6e4) == expected[0]);
        QVERIFY(ask(ofList, 6.6e4) == expected[1]);
    }

    /// Into the list that the caller keeps, and never into a copy of it.
    void listsAreUsedAgain()
    {
        const auto classic = modelOf<AveragineIsotopeModel>(kAveragine);
        const auto list = modelOf<AveragineIsotopeModelRefactored>(kAveragine);
        IsotopePatternCursor ofClassic(classic);
        IsotopePatternCursor ofList(list);
        for (IsotopePatternCursor *const asked : {&ofClassic, &ofList}) {
            IsotopePatternCursor &cursor = *asked;
            QList<double> pattern;
            std::ignore = cursor.peakIntensityRatiosFromMass(1e4, &pattern);
            const double *const place = pattern.constData();
            for (const double mass : {1e4, 1.2e4, 9e4, 500.0}) {
                std::ignore = cursor.peakIntensityRatiosFromMass(mass, &pattern);
                QCOMPARE(pattern.constData(), place);
            }
            const QList<double> kept = pattern;
            const QList<double> bits(kept.cbegin(), kept.cend());
            std::ignore = cursor.peakIntensityRatiosFromMass(3e4, &pattern);
            QCOMPARE(kept, bits);
            QVERIFY(pattern != kept);
        }
    }

    void capacityBelowOne()
    {
        for (const int capacity : {0, -5}) {
            IsotopePatternCursor cursor{AveragineIsotopeModelRefactored(capacity)};
            QList<double> pattern{1.0};
            QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(u"capacity is .* peaks"_s));
            const auto best = cursor.peakIntensityRatiosFromMass(1e4, &pattern);
            const ErrorReport expected{GeneralFailure, {},
                {u"src/algo/AveragineIsotopeModelRefactored:507"_s,
                    u"src/algo/IsotopePatternCursor:1"_s}};
            QCOMPARE(test::reportOf(best.error()), expected);
            QVERIFY(pattern.isEmpty());
        }
    }

    void threadsShareOneFreshModel()
    {
        const auto masses = massesFor(7.1, 1).first(60);
        const auto oracle = modelOf<AveragineIsotopeModel>(kAveragine);
        const auto list = modelOf<AveragineIsotopeModelRefactored>(kAveragine);
        for (int round = 0; round < 100; ++round) {
            const auto fresh = modelOf<AveragineIsotopeModel>(kAveragine);
            std::atomic<int> waiting = 4;
            std::atomic<int> failures = 0;
            std::vector<std::unique_ptr<QThread>> threads;
            for (int number = 0; number < 4; ++number) {
                threads.emplace_back(QThread::create([&, number] {
                    for (--waiting; waiting > 0;)
                        QThread::yieldCurrentThread();
                    IsotopePatternCursor cursor(fresh);
                    IsotopePatternCursor ofList(list);
                    for (qsizetype i = 0; i < masses.size(); ++i) {
                        const double mass = masses[(number * 7 + i) % masses.size()];
                        failures += ask(cursor, mass) != ask(oracle, mass)
                            || ask(ofList, mass) != ask(list, mass);
                    }
                }));
                threads.back()->start();
            }
            for (const auto &thread : threads)
                thread->wait();
            QCOMPARE(failures.load(), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestIsotopePatternCursor)
#include "tst_IsotopePatternCursor.moc"

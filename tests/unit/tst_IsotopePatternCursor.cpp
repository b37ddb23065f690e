#include <vex/IsotopePatternCursor.h>

#include "ErrorTrace.h"
#include "Patterns.h"

#include <QRandomGenerator>
#include <QTest>

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace vex;
using namespace vex::test;

namespace {

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
    void answersAreThoseOfTheModel()
    {
        // averagine; nearly monoisotopic; wide; a single peak; a first peak of nothing, then one
        // above 1; what is no number; too much; nothing
        for (const Counts &counts :
            {kAveragine, Counts{{Type::P, 1.0}, {Type::H, 1e-3}}, Counts{{Type::S, 1.0}},
                Counts{{Type::P, 1.0}}, Counts{{Type::P, -3.0}, {Type::H, 4.0}},
                Counts{{Type::P, 2.0}, {Type::C, -1.0}}, Counts{{Type::C, kNaN}, {Type::H, 8.0}},
                Counts{{Type::C, kInf}, {Type::H, 8.0}}, Counts()}) {
            compareWithModel(modelOf<AveragineIsotopeModel>(counts));
            for (const int capacity : {3, 100, 300})
                compareWithModel(modelOf(counts, AveragineIsotopeModelRefactored(capacity)));
        }
        compareWithModel(AveragineIsotopeModel());
    }

    /// Whatever becomes of the model, and into the memory that the caller keeps.
    void cursorsHoldTheirModel()
    {
        auto classic = modelOf<AveragineIsotopeModel>(kAveragine);
        auto list = modelOf<AveragineIsotopeModelRefactored>(kAveragine);
        const Answer expected[] = {ask(classic, 6.6e4), ask(list, 6.6e4)};
        IsotopePatternCursor cursors[] = {
            IsotopePatternCursor(classic), IsotopePatternCursor(list)};
        QVERIFY(ask(cursors[0], 1e4) == ask(classic, 1e4));
        std::ignore = classic.init(formulaOf({{Type::S, 1.0}}));
        std::ignore = list.init(formulaOf({{Type::S, 1.0}}));
        for (const std::size_t i : {0U, 1U}) {
            QVERIFY(ask(cursors[i], 6.6e4) == expected[i]);
            QList<double> pattern;
            std::ignore = cursors[i].peakIntensityRatiosFromMass(1e4, &pattern);
            const double *const place = pattern.constData();
            for (const double mass : {1e4, 1.2e4, 9e4, 500.0}) {
                std::ignore = cursors[i].peakIntensityRatiosFromMass(mass, &pattern);
                QCOMPARE(pattern.constData(), place);
            }
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
            std::vector<std::jthread> threads;
            for (int number = 0; number < 4; ++number)
                threads.emplace_back([&, number] {
                    for (--waiting; waiting > 0;)
                        std::this_thread::yield();
                    IsotopePatternCursor cursor(fresh);
                    IsotopePatternCursor ofList(list);
                    for (qsizetype i = 0; i < masses.size(); ++i) {
                        const double mass = masses[(number * 7 + i) % masses.size()];
                        failures += ask(cursor, mass) != ask(oracle, mass)
                            || ask(ofList, mass) != ask(list, mass);
                    }
                });
            threads.clear(); // waits for them
            QCOMPARE(failures.load(), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestIsotopePatternCursor)
#include "tst_IsotopePatternCursor.moc"

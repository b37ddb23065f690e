#include <vex/AveragineIsotopeModel.h>

#include "Patterns.h"
#include "PlainAveragine.h"

#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <numeric>
#include <vector>

using namespace vex;
using namespace vex::test;

namespace {

/// Atoms by type: C, H, O, N, S, P, Na, Reserved; those behind the end are 0.
using Atoms = QList<double>;

constexpr double kMax = std::numeric_limits<double>::max();

const Atoms kAtoms{4.9384, 7.7583, 1.4773, 1.3577, 0.0417};

MolecularFormula formulaOf(const Atoms &atoms)
{
    MolecularFormula formula;
    for (qsizetype i = 0; i < atoms.size(); ++i)
        formula.setMolecularFormula({{static_cast<MolecularFormula::AtomType>(i), atoms[i]}});
    return formula;
}

AveragineIsotopeModel modelOf(const Atoms &atoms)
{
    AveragineIsotopeModel model;
    std::ignore = model.init(formulaOf(atoms)); // never an error
    return model;
}

plain::AveragineModel oracleOf(const Atoms &atoms)
{
    plain::AveragineModel oracle;
    oracle.init(formulaOf(atoms));
    return oracle;
}

} // namespace

class TestAveragineIsotopeModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void everyDoubleIsAnswered_data()
    {
        QList<Atoms> all{kAtoms, {1.0}, {0.0, 0.0, 0.0, 0.0, 0.0, 4.0},
            {0.0, 1e-3, 0.0, 0.0, 0.0, 1.0}, {5.0, 8.0, 1.0, 1.0, 0.1, 0.0, 0.0, 2.0}, {},
            // too small to scale, just large enough, and atoms that cancel
            {5e-13, 3e-13}, {1e-11, 1.5e-11, 2e-12}, {6.0, -2.0, 1.0}, {1e305, -1e305},
            // a first peak above 1, below 0, and a negative sum
            {-1.0, 0.0, 0.0, 0.0, 0.0, 2.0}, {0.0, 0.0, 0.0, 2.0, -3.0, 0.0, 3.0},
            {0.0, -3.0, 0.0, 0.0, 0.0, 0.0, 1.0, 3.0},
            // a mer that is next to nothing, or less
            {1.0, -11.9, 0.0, 0.0, 0.0, 0.0, 0.0, 11.0}, {-3.0, 4.0},
            // what is no number, and a sum that overflows
            {kNaN, 8.0, 1.0}, {5.0, kInf, 1.0}, {kMax, kMax, 1.0}};
        QRandomGenerator random(11);
        for (int number = 0; number < 40; ++number) {
            all.append(Atoms(MolecularFormula::kAtomTypeCount));
            for (double &count : all.last()) {
                const double any = 10.0 * random.generateDouble();
                count = random.bounded(3) ? any - random.bounded(4) : 0.0;
            }
        }
        QTest::addColumn<Atoms>("atoms");
        for (const Atoms &atoms : std::as_const(all))
            QTest::newRow(QDebug::toString(atoms).toLatin1()) << atoms;
    }
    void everyDoubleIsAnswered()
    {
        QFETCH(Atoms, atoms);
        const plain::AveragineModel oracle = oracleOf(atoms);
        const double mer = oracle.merMass();
        QList<double> masses{kInf, -kInf, kNaN, kMax, -kMax, 5e-324, -0.0, -1e12, 1.0, 500.0, 5.8e3,
            6.6e4, 1.5e5, 3e5, 1e6, 1e7, 1e8, 1e9, 1e12, 1e15, 1e20, 1e50, 1e100, 1e200, 1e300,
            3e7 * mer, 1e9 * mer, 2e11 * mer, 1e18 * mer};
        for (const double mers :
            {0.5, 1.0, 1.5, 9.5, 10.0, 100.0, 999.5, 1e3, 2.4e4, 2.5e4, 3.1e4}) {
            const double mass = mers * mer;
            masses << mass << std::nextafter(mass, kInf) << std::nextafter(mass, -kInf);
        }
        QRandomGenerator random(7);
        for (int i = 0; i < 20; ++i)
            masses << random.generateDouble() * 3e5 << random.generateDouble() * 4e4 * mer;
        for (qsizetype i = masses.size() - 1; i > 0; --i)
            masses.swapItemsAt(i, random.bounded(i + 1));

        const AveragineIsotopeModel other = modelOf(kAtoms);
        QVERIFY(other.signalCoverage(2e5) > 0.0); // so it has answered for other atoms
        AveragineIsotopeModel model = other;
        std::ignore = model.init(formulaOf(atoms));
        QVERIFY(sameBits(model.merMass(), mer));
        for (const double mass : std::as_const(masses)) {
            const auto [best, pattern] = ask(model, mass);
            const QByteArray shown = QByteArray::number(mass, 'g', 17);
            QCOMPARE(pattern.size(), AveragineIsotopeModel::kPeakCount);
            QVERIFY2(best >= -1, shown);
            const double highest = best < 0 ? 0.0 : pattern[best];
            const auto isHigher = [=](double value) { return value > highest; };
            QVERIFY2(std::none_of(pattern.cbegin(), pattern.cend(), isHigher), shown);
            const double sum = std::accumulate(pattern.cbegin(), pattern.cend(), 0.0);
            QVERIFY2(sameBits(model.signalCoverage(mass), sum), shown);
            const double mono = oracle.getMonoFromAverageMer(mass);
            QVERIFY2(sameBits(model.getMonoFromAverageMer(mass), mono), shown);

            // As many blocks of 1000 mers are never taken as a power, and the written-out loop
            // ends.
            const double most = 1000.0 * mer * (best < 0 ? 300.0 : 30000.0);
            if (std::fabs(mer) > 1e-12 && mass > 0.5 * mer && !(mer > 0.0 && mass <= most))
                continue;
            const Answer expected = ask(oracle, mass);
            QVERIFY2((Answer{best, pattern}) == expected, shown);
            const AveragineIsotopeModel fresh = modelOf(atoms);
            AveragineIsotopeModel source = model;
            const AveragineIsotopeModel moved = std::move(source);
            const AveragineIsotopeModel *const all[] = {&fresh, &moved, &source};
            for (const AveragineIsotopeModel *each : all)
                QVERIFY2(ask(*each, mass) == expected, shown);
        }
    }

    void averageMassOfWeightlessMers()
    {
        // Mer mass and mass excess agree but for rounding, or both are next to nothing.
        QCOMPARE(modelOf({1.007825, -12.0}).getAverageFromMonoMass(100.0), 0.0);
        QCOMPARE(modelOf({5e-14, 8e-14}).getAverageFromMonoMass(100.0), 0.0);
    }

    void threadsAskOneFreshModel()
    {
        const plain::AveragineModel oracle = oracleOf(kAtoms);
        const QList<double> masses{9e3, 6.6e4, 1.48e5, 1.8e5, 3e5};
        for (int round = 0; round < 1000; ++round) {
            const AveragineIsotopeModel model = modelOf(kAtoms);
            std::atomic<int> waiting = 4;
            std::atomic<int> failures = 0;
            std::vector<std::unique_ptr<QThread>> threads;
            for (int number = 0; number < 4; ++number) {
                threads.emplace_back(QThread::create([&, number] {
                    for (--waiting; waiting > 0;)
                        QThread::yieldCurrentThread();
                    for (qsizetype i = 0; i < masses.size(); ++i) {
                        const double mass = masses[(number + i) % masses.size()];
                        const AveragineIsotopeModel copy = model;
                        const Answer expected = ask(oracle, mass);
                        failures += ask(model, mass) != expected || ask(copy, mass) != expected;
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

QTEST_APPLESS_MAIN(TestAveragineIsotopeModel)
#include "tst_AveragineIsotopeModel.moc"

#include "algo/detail/MerBlocks.h"

#include "Numbers.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace vex::detail;
using vex::test::kInf;

namespace {

bool subtractsLikeThePlainLoop(double mass, double block)
{
    double left = mass;
    const double times = subtractRepeatedly(&left, block);
    double expected = 0.0;
    for (; mass >= block; ++expected)
        mass -= block;
    return times == expected && (left == mass || std::isnan(mass));
}

/// What the loop that takes off one block after another comes to, for a mass at which it ends.
MerBlocks byThePlainLoop(double mass, double merMass)
{
    constexpr double kBlocks[] = {1000.0, 100.0, 10.0, 1.0};
    int counts[4] = {};
    while (mass > 0.5 * merMass) {
        std::size_t block = 0;
        while (block < 3 && mass < kBlocks[block] * merMass)
            ++block;
        mass -= kBlocks[block] * merMass;
        ++counts[block];
    }
    return {double(counts[0]), counts[1], counts[2], counts[3]};
}

} // namespace

class TestMerBlocks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksEqualThoseOfThePlainLoop()
    {
        QRandomGenerator random(17);
        for (int round = 0; round < 20000; ++round) {
            const double mer = round % 2 ? 7.137 + 1e-3 * random.generateDouble()
                                         : std::pow(10.0, 6.0 * random.generateDouble() - 3.0);
            // Next to where another block begins, at any distance from one bit on, and anywhere.
            const int halves = int(std::pow(10.0, 6.4 * random.generateDouble()));
            const int edges[] = {halves, halves / 20 * 20, halves / 2000 * 2000};
            const double near = edges[round % 3] * 0.5 * mer;
            const double off = std::pow(10.0, -16.0 * random.generateDouble());
            for (const double mass : {near * (1.0 + off), near * (1.0 - off), near,
                     near + 1e-4 * off * mer, near + mer * random.generateDouble()})
                QVERIFY2(merBlocksOf(mass, mer) == byThePlainLoop(mass, mer),
                    QByteArray::number(mass, 'g', 17) + " of " + QByteArray::number(mer, 'g', 17));
        }
        for (int round = 0; round < 300; ++round) { // where rounding adds up to more
            const int halves = int(std::pow(10.0, 6.0 + 3.0 * random.generateDouble()));
            const double off = std::pow(10.0, -9.0 * random.generateDouble());
            const double mass = (halves + (round % 2 ? off : -off)) * 3.5689;
            QVERIFY(merBlocksOf(mass, 7.1378) == byThePlainLoop(mass, 7.1378));
        }
        for (const double mass : {0.0, -0.0, -1.0, -1e300, -kInf, std::nan(""), 5e-324})
            QVERIFY(merBlocksOf(mass, 7.1) == MerBlocks());
        QVERIFY(merBlocksOf(kInf, 7.1) == (MerBlocks{kInf, 0, 0, 0}));
    }

    void subtractionEqualsThePlainLoop()
    {
        QRandomGenerator random(9);
        QVERIFY(subtractsLikeThePlainLoop(7.1e7, 7.135479));
        for (int round = 0; round < 200; ++round) {
            const double block = 10.0 * random.generateDouble() + 0.1;
            const double steps = std::pow(10.0, 6.0 * random.generateDouble());
            QVERIFY2(subtractsLikeThePlainLoop(steps * block, block),
                qPrintable(QString::number(round)));
            // Odd multiples of 1/4 to 1, taken off where the doubles are 1/2 to 8 apart: in one or
            // more binades every second difference lies half way between two of them.
            const quint64 odd = (random.generate64() >> random.bounded(21, 28)) | 1;
            const double tying = std::ldexp(static_cast<double>(odd), -random.bounded(3));
            const double top = std::ldexp(1.0 + random.generateDouble(), random.bounded(51, 55));
            QVERIFY2(subtractsLikeThePlainLoop(top, tying), qPrintable(QString::number(round)));
        }
        for (const auto &[mass, block] : {std::pair(0.0, 1.0), std::pair(-1.0, 1.0),
                 std::pair(1.0, 1.0), std::pair(std::nan(""), 1.0), std::pair(kInf, kInf)})
            QVERIFY(subtractsLikeThePlainLoop(mass, block));
    }

    void subtractionWithoutEnd()
    {
        const double two60 = std::ldexp(1.0, 60); // doubles are 256 apart from here on, 128 below
        const double aboveHalf = std::nextafter(128.0, kInf);
        for (const auto &[mass, block, ends] :
            {std::tuple(kInf, 1.0, false), std::tuple(two60 + 512.0, 128.0, false), // tie, even
                std::tuple(two60 + 256.0 * 7.0, 128.0, false), // tie, odd: one step, then even
                std::tuple(two60 + 256.0, 128.0, true), // tie, odd: one step to finer doubles
                std::tuple(two60 + 512.0, aboveHalf, true), std::tuple(two60, 64.0, false),
                std::tuple(two60, aboveHalf / 2.0, true)}) {
            double left = mass;
            const double times = subtractRepeatedly(&left, block);
            QCOMPARE(std::isfinite(times), ends);
            QVERIFY(!ends || (left >= 0.0 && left < block));
        }
    }
};

QTEST_APPLESS_MAIN(TestMerBlocks)
#include "tst_MerBlocks.moc"

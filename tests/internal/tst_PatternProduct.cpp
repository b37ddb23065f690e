#include "algo/detail/PatternProduct.h"

#include "Numbers.h"
#include "PlainAveragine.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>

using namespace vex::detail;
using vex::test::kInf;

namespace {

using Pattern = std::array<double, kPatternSize>;

/// Equal bits, but for those of NaN and for the sign of zero, which no convolution carries on.
bool sameBits(const double *a, const double *b, int count = kPatternSize)
{
    return std::equal(
        a, a + count, b, [](double x, double y) { return vex::test::sameBits(x + 0.0, y + 0.0); });
}

/// A double of any sign and size, infinite now and then; products may become denormal.
double anyDouble(QRandomGenerator *random)
{
    constexpr int kExponents[] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -40, 300, -1050, 1025};
    const double value = random->bounded(8) ? random->generateDouble() - 0.3 : 0.0;
    return std::ldexp(value, kExponents[random->bounded(14)]);
}

/// A stored pattern of which the first @p length entries count; now and then one is no number.
Pattern storedPattern(QRandomGenerator *random, int length)
{
    Pattern pattern;
    pattern.fill(0.5); // behind the end as well
    std::generate_n(pattern.begin(), length,
        [&] { return 0.0001 + (random->bounded(5) ? random->generateDouble() / length : 0.0); });
    if (length < kPatternSize)
        *(pattern.begin() + length) = random->bounded(2) ? std::nextafter(0.0001, 0.0) : -0.5;
    if (random->bounded(12) == 0)
        *(pattern.begin() + random->bounded(kPatternSize)) =
            random->bounded(2) ? kInf : std::nan("");
    return pattern;
}

} // namespace

class TestPatternProduct : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }
    void cleanup() { setActiveKernel(fastestKernel()); }

    void productsEqualThePlainConvolution()
    {
        QList<ConvolutionKernel> kernels{convolveBaseline};
        if (fastestKernel() != convolveBaseline)
            kernels.append(fastestKernel());
        for (const ConvolutionKernel kernel : kernels) {
            setActiveKernel(kernel);
            QRandomGenerator random(5);
            PatternProduct other; // keeps what it held
            for (int round = 0; round < 1000; ++round) {
                PatternProduct product;
                Pattern expected{1.0};
                if (round % 3 == 0) {
                    const int size = random.bounded(kPatternSize + 1);
                    expected = {};
                    std::generate_n(expected.begin(), size, [&] { return anyDouble(&random); });
                    product.assign(expected.data(), size);
                }
                for (int step = 0; step < 6; ++step) {
                    const int length = step == 0 ? round % (kPatternSize + 1) : random.bounded(9);
                    const Pattern pattern = storedPattern(&random, length);
                    const Taps taps = tapsOf(pattern.data());
                    std::array<Pattern, 4> powers{expected}; // times as many patterns
                    for (std::size_t i = 1; i < powers.size(); ++i)
                        plain::AveragineModel::convolution(
                            pattern.data(), powers[i - 1].data(), powers[i].data());
                    other.assignProduct(&product, taps);
                    QVERIFY(sameBits(other.values(), powers[1].data()));
                    QVERIFY(sameBits(product.values(), powers[0].data()));
                    other.multiply(taps);
                    QVERIFY(sameBits(other.values(), powers[2].data()));
                    const int times = random.bounded(4);
                    product.multiply(taps, times);
                    expected = powers[std::size_t(times)];
                    if (random.bounded(4) == 0) {
                        plain::AveragineModel::normalize(kPatternSize, expected.data());
                        product.normalize();
                    }
                    QVERIFY2(sameBits(product.values(), expected.data()),
                        qPrintable(QString::number(round)));
                    QVERIFY(std::all_of(expected.begin() + product.size(), expected.end(),
                        [](double value) { return value == 0.0; }));
                }
            }
        }
    }

    void powersEqualRepetition()
    {
        for (const auto &[factors, times] :
            {std::pair(QList{1.0 - 5e-4, 5e-4}, 100000), {{1.0 - 4e-4, 2e-4, 2e-4}, 90000},
                {{0.995, 0.005, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}, 180000}, // in parts
                {{1.002, 5e-4}, 100000}, {{1.0 - 5e-5}, 1000000}}) {
            const int tapCount = static_cast<int>(factors.size());
            const Taps taps{factors.constData(), tapCount, true};
            PatternProduct product;
            product.multiplyRepeatedly(taps, times);
            PatternProduct repeated;
            for (int i = 0; i < times; ++i)
                repeated.multiply(taps);
            // All terms are positive, so the error is at most that of all roundings: one for each
            // product and sum of the repetition, and some hundreds for the power. Where bits were
            // lost to denormals on the way, nothing is compared.
            const double tolerance =
                (2.0 * tapCount * times + 1000.0) * std::numeric_limits<double>::epsilon() / 2.0;
            const int size = repeated.size();
            QVERIFY(repeated.values()[size - 1] > 1e-290);
            QVERIFY(times * (tapCount * size + 50.0) > PatternProduct::kExactMultiplyAdds);
            for (int i = 0; i < size; ++i) {
                const double relative = product.values()[i] / repeated.values()[i] - 1.0;
                QVERIFY2(repeated.values()[i] < 1e-290 || std::fabs(relative) <= tolerance,
                    qPrintable(QString::number(relative)));
            }
        }
    }

    void repetitionEndsWhenNothingChanges()
    {
        // a single peak; one that sticks at the smallest denormal; out of the pattern; to infinity;
        // no number; nothing
        for (QList<double> factors : {QList{1.0}, {0.75}, {0.5, 0.3, 0.2}, {1.5, 0.25},
                 {0.5, std::nan(""), 0.1}, QList<double>()}) {
            factors.resize(kPatternSize); // 0.0 ends what counts
            PatternProduct endless;
            endless.multiplyRepeatedly(tapsOf(factors.constData()), kInf);
            PatternProduct repeated;
            for (int i = 0; i < 5000; ++i)
                repeated.multiply(tapsOf(factors.constData()));
            QVERIFY(sameBits(endless.values(), repeated.values()));
        }
    }
};

QTEST_APPLESS_MAIN(TestPatternProduct)
#include "tst_PatternProduct.moc"

#include "algo/detail/IsotopeGrowth.h"

#include "Numbers.h"
#include "PlainDistribution.h"

#include <QRandomGenerator>
#include <QTest>

using namespace vex::detail;

namespace {

int warnings = 0;

void countWarnings(QtMsgType type, const QMessageLogContext &at, const QString &text)
{
    const bool hasPlace =
        qstrcmp(at.file, "src/algo/detail/IsotopeGrowth.cpp") == 0 && at.line > 0 && at.function;
    if (type == QtWarningMsg && text == QLatin1StringView("isoVector is empty") && hasPlace)
        ++warnings;
}

} // namespace

class TestIsotopeGrowth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { setActiveKernel(fastestKernel()); }

    /// Patterns grow, keep their length, shrink and vanish; every kernel, and what no kernel takes.
    void growthEqualsThePlainForm()
    {
        QRandomGenerator random(11);
        const auto shares = [&random](int most) {
            plain::Shares result(std::size_t(random.bounded(most + 1)));
            for (double &share : result)
                share = random.bounded(6) ? std::pow(random.generateDouble(), 3.0) : 0.0;
            return result;
        };
        constexpr double kOdd[] = {-0.25, -0.0, vex::test::kInf, vex::test::kNaN};
        int emptied = 0;
        const QtMessageHandler before = qInstallMessageHandler(countWarnings);
        for (int round = 0; round < 6000; ++round) {
            setActiveKernel(round % 2 ? convolveBaseline : fastestKernel());
            plain::Shares pattern = shares(round % 7 ? 12 : 300);
            plain::Shares abundances = shares(7);
            if (random.bounded(2) && abundances.size() > 1) { // as those of elements are
                const double heavy = std::pow(10.0, -1.0 - 4.0 * random.generateDouble());
                abundances = {1.0 - heavy, heavy};
            }
            if (random.bounded(10) == 0 && !pattern.empty())
                pattern[std::size_t(random.bounded(int(pattern.size())))] = kOdd[random.bounded(4)];
            if (random.bounded(10) == 0 && !abundances.empty())
                abundances.back() = kOdd[random.bounded(4)];
            const int count = random.bounded(200) - 2;
            const double threshold = random.bounded(4) ? std::pow(10.0, -random.bounded(9)) : 0.0;
            plain::Shares expected = pattern;
            warnings = 0;
            const int expectedWarnings =
                plain::convolveRepeatedly(threshold, count, abundances, &expected);
            const bool isDone = convolveRepeatedly(threshold, count, abundances, pattern);
            emptied += expectedWarnings > 0;
            QVERIFY2(std::ranges::equal(pattern, expected, vex::test::sameBits),
                qPrintable(QString::number(round)));
            QCOMPARE(warnings, expectedWarnings);
            const bool isWork = count > 0 && !abundances.empty() && !expected.empty();
            QCOMPARE(isDone, isWork);
        }
        qInstallMessageHandler(before);
        QVERIFY(emptied > 200);
    }
};

QTEST_GUILESS_MAIN(TestIsotopeGrowth)
#include "tst_IsotopeGrowth.moc"

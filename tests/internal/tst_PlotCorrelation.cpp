#include "ErrorTrace.h"
#include "detail/PlotCorrelation.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace vex;

class TestPlotCorrelation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lists()
    {
        using List = QList<double>;
        const std::tuple<List, List, double> table[] = {
            {{1, 2, 3}, {2, 4, 6}, 1.0},
            {{1, 2, 3}, {3, 2, 1}, -1.0},
            {{1, 2, 3}, {5, 5, 5}, 0.0},
            {{}, {}, 0.0},
            {{1e-7, 3e-7}, {0, 1e300}, 0.0}, // flat beside what is large
            {{0x1p600, 0x1p600 + 0x1p560}, {-5e-3, -1e-3}, 1.0}, // nearly flat for its size
            {{-1.5e308, 0, 1.5e308}, {1.5e308, 0, -1.5e308}, -1.0},
        };
        for (const auto &[x, y, expected] : table) {
            QCOMPARE(PlotUtilities::pearsonsCorrelation(x, y).value(), expected);
            QCOMPARE(PlotUtilities::pearsonsCorrelation(y, x).value(), expected);
        }
        const test::ErrorReport differing{InvalidInput,
            u"Cannot calculate correlation of different sized vectors."_s,
            {u"src/PlotUtilities:342"_s}};
        QCOMPARE(test::reportOf(PlotUtilities::pearsonsCorrelation({1, 2}, {1, 2, 3}).error()),
            differing);
    }
};

QTEST_GUILESS_MAIN(TestPlotCorrelation)
#include "tst_PlotCorrelation.moc"

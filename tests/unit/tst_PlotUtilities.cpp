#include "ErrorTrace.h"
#include "Numbers.h"
#include "PlainPlotUtilities.h"

#include <QRandomGenerator>
#include <QTest>

#include <vex/ApexFinder.h>
#include <vex/PlotUtilities.h>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;
using vex::test::kInf;
using vex::test::kNaN;

namespace {

PlotBase plotOf(const QList<QPointF> &points)
{
    PlotBase plot;
    plot.points() = points;
    return plot;
}

/// A signal with samples in random places, some of them shared, repeated, or nearly so.
PlotBase randomPlot(QRandomGenerator *random, bool isOdd)
{
    PlotBase plot;
    const int sizes[] = {4, 40, 40, 40, 700};
    const int size = random->bounded(sizes[random->bounded(random->bounded(20) ? 4 : 5)]);
    double x = random->bounded(5);
    const bool endsAtZero = random->bounded(2);
    for (int i = 0; i < size; ++i) {
        const double steps[] = {0.0, 4e-7, 1e-6, 0.25, 0.25, 0.25, random->generateDouble()};
        x += steps[random->bounded(7)];
        const bool isEnd = i == 0 || i == size - 1;
        const double y = isEnd && endsAtZero ? 0.0 : 10.0 * random->generateDouble() - 3.0;
        plot.points().append({x, random->bounded(9) ? y : 0.0});
    }
    if (isOdd && size > 0) {
        const double odd[] = {kNaN, kInf, -kInf, 1e60, -1.0};
        QPointF &point = plot.points()[random->bounded(size)];
        (random->bounded(2) ? point.rx() : point.ry()) = odd[random->bounded(5)];
        if (size > 1 && random->bounded(3) == 0) // ascending, and with a gap that is no number
            plot.points()[0].rx() = plot.points()[1].rx() = -kInf;
    }
    return plot;
}

/// The same signal in another unit of y.
PlotBase scaled(PlotBase plot, double factor)
{
    for (QPointF &point : plot.points())
        point.ry() *= factor;
    return plot;
}

/// Equal values, and NaN equal to NaN.
bool same(double p, double q)
{
    return p == q || (std::isnan(p) && std::isnan(q));
}

bool same(QPointF p, QPointF q)
{
    return same(p.x(), q.x()) && same(p.y(), q.y());
}

template <typename T>
bool same(const QList<T> &p, const QList<T> &q)
{
    return std::ranges::equal(p, q, [](T a, T b) { return same(a, b); });
}

template <typename T>
bool same(const Result<T> &result, const std::optional<T> &expected)
{
    return result.hasError() ? !expected : expected && same(result.value(), *expected);
}

} // namespace

class TestPlotUtilities : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Also where signals are empty, not ascending, or hold what is no number.
    void answersEqualThePlainForm()
    {
        using namespace PlotUtilities;
        QRandomGenerator random(5);
        for (int round = 0; round < 10000; ++round) {
            const PlotBase a = randomPlot(&random, round % 5 == 0);
            const PlotBase b = random.bounded(9) ? randomPlot(&random, round % 7 == 0) : a;
            const QByteArray shown = QByteArray::number(round);
            const auto domain = mergeDomains(a, b, 5.0); // neither ever fails
            QVERIFY2(same(domain.value(), *plain::mergeDomains(a, b)), shown);
            if (const auto expected = plain::subtract(a, b))
                QVERIFY2(same(subtract(a, b, 5.0).value().points(), expected->points()), shown);
            const auto area = plain::relativeAreaOfError(a, b);
            const auto correlation = plain::pearsonsCorrelation(a, b);
            QVERIFY2(same(relativeAreaOfError(a, b, 5.0), area), shown);
            QVERIFY2(same(pearsonsCorrelation(a, b), correlation), shown);
            if (round % 5 != 0 && round % 7 != 0) { // far beyond where squares have no value
                const PlotBase large = scaled(a, 0x1p1000);
                QVERIFY2(same(relativeAreaOfError(large, scaled(b, 0x1p1000), 5.0), area), shown);
                if (correlation != 0.0) // flat signals cease to be flat
                    QVERIFY2(
                        same(pearsonsCorrelation(large, scaled(b, 0x1p600)), correlation), shown);
            }
            QVERIFY2(same(guessSamplingInterval(a), plain::guessSamplingInterval(a)), shown);
            // limits far away, and just where the measures lie
            for (const auto &[most, least] : {std::pair(0.5, 0.5), std::pair(kInf, -2.0),
                     std::pair(area.value_or(0.0), correlation.value_or(0.0))}) {
                const auto answer = plain::plotSame(a, b, most, least);
                QVERIFY2(same(plotSame(a, b, 5.0, most, least), answer), shown);
                const auto verdict = compareSignals(a, b, most, least);
                QVERIFY2(verdict.hasError() != answer.has_value(), shown);
                if (answer)
                    QVERIFY2(verdict.value().isSame == *answer, shown);
            }
        }
    }

    /// Of so many positions the last values are computed twice.
    void measuresOfLongSignals()
    {
        QRandomGenerator random(3);
        for (const double direction : {1.0, -1.0}) { // of b
            PlotBase a;
            PlotBase b;
            for (int i = 0; i < 140000; ++i) {
                const auto y = [&, i] { return std::sin(1e-4 * i) + random.generateDouble(); };
                a.points().append({i + random.generateDouble(), y()});
                b.points().append({direction * (i + random.generateDouble()), y()});
            }
            const auto verdict = PlotUtilities::compareSignals(a, b, kInf, -2.0).value();
            QCOMPARE(verdict.domainSize, plain::mergeDomains(a, b)->size());
            QVERIFY(verdict.relativeAreaOfError == *plain::relativeAreaOfError(a, b));
            QVERIFY(verdict.correlation == *plain::pearsonsCorrelation(a, b));
            // Beyond where squares have a value; all other values vanish beside the first one.
            a.points().front().setY(0x1p450);
            const auto expected = plain::pearsonsCorrelation(a, b);
            a.points().front().setY(0x1p1000);
            QVERIFY(
                PlotUtilities::compareSignals(a, b, kInf, -2.0).value().correlation == *expected);
        }
    }

    void intervalsOfLongSignals()
    {
        // random gaps; equal ones; long ones where the sample looks; descending; some NaN
        for (int kind = 0; kind < 5; ++kind) {
            QRandomGenerator random(7);
            PlotBase plot;
            double x = 0.0;
            for (int i = 0; i < 50001; ++i) {
                const double gap = kind == 1 ? 0.25 : random.generateDouble();
                x += kind == 2 && i % 48 == 1 ? 1000.0 : kind == 3 ? -gap : gap;
                plot.points().append({kind == 4 && i % 9 == 0 ? kNaN : x, 1.0});
            }
            const auto interval = PlotUtilities::guessSamplingInterval(plot);
            QVERIFY(same(interval, plain::guessSamplingInterval(plot)));
        }
    }

    void thresholds()
    {
        using namespace PlotUtilities;
        const auto equalXAndY = [](double p, double q) {
            return std::pair(centroidedPlotSame(plotOf({{p, 1}}), plotOf({{q, 1}})).value(),
                centroidedPlotSame(plotOf({{1, p}}), plotOf({{1, q}})).value());
        };
        QCOMPARE(equalXAndY(1000.0, 1000.0000000005), std::pair(true, true)); // within 1e-9
        QCOMPARE(equalXAndY(0.5, 0.500000000002), std::pair(false, false)); // beyond 1e-12
        QCOMPARE(equalXAndY(kNaN, kNaN), std::pair(false, false));
        QVERIFY(!centroidedPlotSame(plotOf({{1, 1}}), {}).value());
        QVERIFY(centroidedPlotSame({}, {}).value());
        const PlotBase zero = plotOf({{0, 1e-12}, {1, -1e-12}});
        const PlotBase low = plotOf({{0, 2e-12}, {1, 0}});
        QVERIFY(plotSame(zero, {}, 0.0, -1.0, 2.0).value());
        QVERIFY(!plotSame(low, zero, 0.0, kInf, -2.0).value());
        QVERIFY(plotSame(low, low, 0.0, kNaN, kNaN).value()); // such limits let pass
        QList<double> values{1.0, 1.0000005, 1.0000011, 2.0};
        std::ignore = removeCloseValues(&values, 1e-6);
        QCOMPARE(values, (QList<double>{1.0, 1.0000011, 2.0}));
        QCOMPARE(PlotUtilities::abs(plotOf({{1, -2}})).points(), (QList<QPointF>{{1, 2}}));
        const ErrorReport expected{InvalidInput,
            u"Can't guess sampling interval with less than 2 points"_s,
            {u"src/PlotUtilities:341"_s}};
        QCOMPARE(test::reportOf(guessSamplingInterval(plotOf({{1, 5}})).error()), expected);
    }

    /// Which measure decides is seen in what the program says.
    void verdictsAndFindings()
    {
        using namespace PlotUtilities;
        const PlotBase peak = plotOf({{0, 0}, {1, 4}, {2, 0}});
        const PlotBase late = plotOf({{1, 0}, {2, 4}, {3, 0}});
        const auto verdict = compareSignals(peak, late, 5.0, -1.0).value();
        QCOMPARE(verdict.rule, SignalVerdict::WithinBoth);
        QCOMPARE(verdict.relativeAreaOfError, 2.0); // the difference's samples are 0, 4, 4, 0 high
        QCOMPARE(verdict.domainSize, 4);
        QVERIFY(verdict.overlapStart == 1.0 && verdict.overlapEnd == 2.0);

        const PlotBase odd = plotOf({{1, 1}, {1, kNaN}, {0, 1}, {kInf, 1}, {2, 1}});
        using F = SignalFinding;
        const QList<F> expected{{F::RepeatedPosition, 1}, {F::ValueNotFinite, 1},
            {F::Descending, 2}, {F::PositionNotFinite, 3}, {F::Descending, 4}};
        QCOMPARE(checkSignal(odd), expected);
        QCOMPARE(checkSignal(odd, 2), expected.first(2));
    }

    void apexAndArea()
    {
        const PlotBase plot = plotOf({{1, 9}, {1.5, 7}, {2, kNaN}, {2.5, 7}, {3, 9}});
        QCOMPARE(
            ApexFinder::findApexTime(plot, 1.0, 3.0), 1.5); // not on the edges, first of equals
        QCOMPARE(ApexFinder::findApexTime(plot, QPointF(0.9, 5), QPointF(3.1, 6)), 1.0);
        QCOMPARE(ApexFinder::findApexTime(plot, 1.1, 1.3), 1.2); // nothing there
        QCOMPARE(ApexFinder::findApexTime(plot, 2.0, 1.0), 1.5); // inverted
        QCOMPARE(ApexFinder::findApexTime(plotOf({{2, -3}, {2.5, -2}}), 1.0, 4.0), 2.5);

        const PlotBase line = plotOf({{0, 0}, {2, 4}, {2, 1}, {4, 1}});
        const auto areaOf = [](const PlotBase &signal, double start, double end) {
            return signal.computeAreaNoUnitConversion(start, end, false, PlotBase::Trapezoid);
        };
        // whole; in one line; over the step; behind it; inverted
        for (const auto &[start, end, area] : {std::tuple(-5.0, 9.0, 6.0), {0.5, 1.5, 2.0},
                 {1.0, 3.0, 4.0}, {2.0, 3.0, 1.0}, {3.0, 1.0, 0.0}})
            QCOMPARE(areaOf(line, start, end), area);
        QCOMPARE(line.evaluate(2.0, 1, 0), 4.0); // the first of both
        QCOMPARE(line.evaluate(1.5, 1, 0), 3.0);
        QVERIFY(line.evaluate(-0.1, 1, 0) == 0.0 && line.evaluate(kNaN, 1, 0) == 0.0);
        QCOMPARE(line.getMaxTimeIntensity(5.0, 6.0), QPointF(0.0, 0.0));

        // Finite answers where a sum or a difference on the way is not.
        QCOMPARE(areaOf(plotOf({{0, 1e308}, {0.125, 1e308}}), 0.0, 1.0), 1e308 / 8);
        const PlotBase steep = plotOf({{0, -1e308}, {4, 1e308}});
        QCOMPARE(steep.evaluate(3.0, 1, 0), 5e307);
        QCOMPARE(areaOf(steep, 0.0, 3.0), -7.5e307);
        const PlotBase wide = plotOf({{-0x1p1023, 0}, {0x1p1023, 0x1p-1000}});
        QVERIFY(wide.evaluate(0x1p1022, 1, 0) == 0x1.8p-1001); // exactly
        QCOMPARE(areaOf(wide, -kInf, kInf), 0x1p23);
        const auto difference = PlotUtilities::subtract(steep, plotOf({{0, 0}, {2, 1}, {4, 0}}), 0);
        QCOMPARE(difference.value().evaluate(2.0, 1, 0), -1.0);
        const auto inside = PlotUtilities::subtract(wide, plotOf({{0x1p1022, 0}}), 0);
        QVERIFY(inside.value().evaluate(0x1p1022, 1, 0) == 0x1.8p-1001);
        const PlotBase high = plotOf({{0, 1e308}, {0.125, 1e308}});
        const PlotBase low = plotOf({{0, -0.5e308}, {0.125, -0.5e308}});
        QCOMPARE(PlotUtilities::relativeAreaOfError(high, low, 0.0).value(), 3.0);
    }
};

QTEST_GUILESS_MAIN(TestPlotUtilities)
#include "tst_PlotUtilities.moc"

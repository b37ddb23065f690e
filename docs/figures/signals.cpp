// Numbers behind docs/signals.md: writes signals-samples.csv, signals-positions.csv and
// signals-numbers.csv into the folder that is its one argument. All of it comes out the same in
// every run.

#include <QDir>
#include <QFile>
#include <QList>
#include <QLocale>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <type_traits>
#include <utility>

#include <vex/ApexFinder.h>
#include <vex/Decimal.h>
#include <vex/PlotUtilities.h>
#include <vex/TimeRange.h>

using namespace Qt::StringLiterals;

namespace {

namespace Plots = vex::PlotUtilities;

using Points = QList<QPointF>;
using Signal = vex::PlotBase;
using Verdict = Plots::SignalVerdict;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kMaxArea = 0.05;
constexpr double kMinCorrelation = 0.99;

Signal signalOf(const Points &points)
{
    Signal signal;
    signal.points() = points;
    return signal;
}

/// Height 0, @p height, 0 at 0, 1 and 2: its area is the height.
Signal triangle(double height)
{
    return signalOf({{0, 0}, {1, height}, {2, 0}});
}

Signal reversed(Signal signal)
{
    std::reverse(signal.points().begin(), signal.points().end());
    return signal;
}

QString shown(double value)
{
    return QString::number(value, 'g', 17);
}

QString shown(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

QString shown(const QList<double> &values)
{
    QStringList texts;
    for (const double value : values)
        texts.append(shown(value));
    return texts.isEmpty() ? u"none"_s : texts.join(u' ');
}

QString shown(Plots::SignalFinding::Kind kind)
{
    switch (kind) {
    case Plots::SignalFinding::Descending:
        return u"Descending"_s;
    case Plots::SignalFinding::RepeatedPosition:
        return u"RepeatedPosition"_s;
    case Plots::SignalFinding::PositionNotFinite:
        return u"PositionNotFinite"_s;
    case Plots::SignalFinding::ValueNotFinite:
        return u"ValueNotFinite"_s;
    }
    return {};
}

QString shown(Verdict::Rule rule)
{
    switch (rule) {
    case Verdict::OneWithoutIntensity:
        return u"OneWithoutIntensity"_s;
    case Verdict::BothWithoutIntensity:
        return u"BothWithoutIntensity"_s;
    case Verdict::AreaOfError:
        return u"AreaOfError"_s;
    case Verdict::Correlation:
        return u"Correlation"_s;
    case Verdict::WithinBoth:
        return u"WithinBoth"_s;
    }
    return {};
}

QString shown(const Signal &signal)
{
    QStringList texts;
    for (const QPointF &point : signal.points())
        texts.append(shown(point.x()) + u':' + shown(point.y()));
    return texts.isEmpty() ? u"none"_s : texts.join(u' ');
}

template <typename T>
QString shown(const vex::Result<T> &result)
{
    return result.hasError() ? u"error"_s : shown(result.value());
}

class Rows
{
public:
    explicit Rows(QTextStream *out)
        : m_out(out)
    {
        *m_out << "topic,case,quantity,value\n";
    }

    template <typename T>
    void add(const char *topic, const QString &object, const char *quantity, const T &value)
    {
        *m_out << topic << ',' << object << ',' << quantity << ',';
        if constexpr (std::is_convertible_v<T, QString>)
            *m_out << value;
        else if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>)
            *m_out << value;
        else
            *m_out << shown(value);
        *m_out << '\n';
    }

private:
    QTextStream *m_out;
};

Verdict verdictOf(const Signal &a, const Signal &b, double maxArea = kMaxArea,
    double minCorrelation = kMinCorrelation)
{
    return Plots::compareSignals(a, b, maxArea, minCorrelation).value();
}

void addVerdict(Rows *rows, const char *topic, const QString &object, const Signal &a,
    const Signal &b, double maxArea = kMaxArea, double minCorrelation = kMinCorrelation)
{
    rows->add(topic, object, "plotSame", Plots::plotSame(a, b, 0.0, maxArea, minCorrelation));
    const auto result = Plots::compareSignals(a, b, maxArea, minCorrelation);
    if (result.hasError()) {
        rows->add(topic, object, "compareSignals", u"error"_s);
        return;
    }
    const Verdict &verdict = result.value();
    rows->add(topic, object, "rule", verdict.rule);
    rows->add(topic, object, "relativeAreaOfError", verdict.relativeAreaOfError);
    rows->add(topic, object, "correlation", verdict.correlation);
    rows->add(topic, object, "domainSize", verdict.domainSize);
    rows->add(topic, object, "overlapStart", verdict.overlapStart);
    rows->add(topic, object, "overlapEnd", verdict.overlapEnd);
}

/// The last number inside and the first outside, neighbours among the doubles.
template <typename IsInside>
void addEdge(Rows *rows, const char *topic, const QString &object, double inside, double outside,
    IsInside isInside)
{
    if (!isInside(inside) || isInside(outside)) {
        rows->add(topic, object, "edge", u"none"_s);
        return;
    }
    for (;;) {
        const double middle = inside + (outside - inside) / 2;
        if (middle == inside || middle == outside)
            break;
        (isInside(middle) ? inside : outside) = middle;
    }
    rows->add(topic, object, "inside", inside);
    rows->add(topic, object, "outside", outside);
}

// ---- The picture

Signal pictureA()
{
    return signalOf({{1.0, 2.0}, {1.25, 3.1}, {1.5, 6.4}, {1.75, 9.3}, {2.0, 8.1}, {2.25, 6.2},
        {2.5, 5.0}, {2.75, 4.4}, {3.0, 4.0}});
}

Signal pictureB()
{
    return signalOf(
        {{1.6, 6.0}, {2.0000004, 7.2}, {2.4, 4.4}, {2.75, 3.2}, {3.45, 2.2}, {3.9, 1.5}});
}

bool writePicture(QTextStream *samples, QTextStream *positions, Rows *rows)
{
    const Signal a = pictureA();
    const Signal b = pictureB();
    *samples << "signal,x,y\n";
    struct Position
    {
        double x = 0.0;
        const char *source = nullptr;
        double asked = 0.0; // before it was clamped
    };
    QList<Position> candidates;
    for (const auto &[name, signal] : {std::pair{"a", a}, std::pair{"b", b}}) {
        for (const QPointF &point : signal.points()) {
            *samples << name << ',' << shown(point.x()) << ',' << shown(point.y()) << '\n';
            candidates.append({point.x(), name, point.x()});
        }
    }
    const double step = Plots::guessSamplingInterval(a).value();
    rows->add("picture", u"a"_s, "guessSamplingInterval", step);
    rows->add("picture", u"b"_s, "guessSamplingInterval", Plots::guessSamplingInterval(b));
    const double lowest = std::min(a.points().first().x(), b.points().first().x());
    const double highest = std::max(a.points().last().x(), b.points().last().x());
    for (const double asked : {a.points().first().x() - step, a.points().last().x() + step,
             b.points().first().x() - step, b.points().last().x() + step})
        candidates.append({std::clamp(asked, lowest, highest), "beyond", asked});
    std::stable_sort(candidates.begin(), candidates.end(),
        [](const Position &left, const Position &right) { return left.x < right.x; });

    // What the library kept is a selection of these; whatever it passed over was dropped.
    const QList<double> domain = Plots::mergeDomains(a, b, 0.0).value();
    *positions << "x,source,asked,kept\n";
    qsizetype kept = 0;
    for (const Position &position : candidates) {
        const bool isKept = kept < domain.size() && domain[kept] == position.x;
        kept += isKept ? 1 : 0;
        *positions << shown(position.x) << ',' << position.source << ',' << shown(position.asked)
                   << ',' << (isKept ? 1 : 0) << '\n';
    }
    rows->add("picture", u"both"_s, "candidates", candidates.size());
    rows->add("picture", u"both"_s, "mergeDomains", domain);
    rows->add("picture", u"both"_s, "domainSize", domain.size());
    addVerdict(rows, "picture", u"both"_s, a, b);
    return kept == domain.size();
}

// ---- Thresholds

void writeThresholds(Rows *rows)
{
    const char *topic = "intensity";
    const Signal zero = signalOf({{0, 0}, {1, 0}, {2, 0}});
    const auto isZero = [&](const Signal &signal) {
        return verdictOf(signal, zero).rule == Verdict::BothWithoutIntensity;
    };
    addEdge(rows, topic, u"every y"_s, 0.0, 1.0, [&](double h) {
        return isZero(signalOf({{0, h}, {1, h}, {2, h}}));
    });
    addEdge(
        rows, topic, u"one y of three"_s, 0.0, 1.0, [&](double h) { return isZero(triangle(h)); });
    addEdge(
        rows, topic, u"one negative y"_s, 0.0, -1.0, [&](double h) { return isZero(triangle(h)); });

    topic = "ends";
    const Signal longer = signalOf({{0.5, 0}, {1.7, 0}, {2.9, 1}, {4.1, 1}, {5.3, 1}, {6.5, 0}});
    const auto withEnds = [](double first, double last) {
        return signalOf({{2, first}, {3, 5}, {4, last}});
    };
    const auto sizeOf = [&](const Signal &signal) {
        return Plots::mergeDomains(signal, longer, 0.0).value().size();
    };
    const qsizetype plain = sizeOf(withEnds(0, 0));
    rows->add(topic, u"all 0"_s, "domainSize", plain);
    rows->add(topic, u"all 0"_s, "mergeDomains", Plots::mergeDomains(withEnds(0, 0), longer, 0.0));
    rows->add(topic, u"one 1"_s, "domainSize", sizeOf(withEnds(1, 0)));
    rows->add(topic, u"one 1"_s, "mergeDomains", Plots::mergeDomains(withEnds(1, 0), longer, 0.0));
    addEdge(rows, topic, u"first"_s, 0.0, 1.0,
        [&](double h) { return sizeOf(withEnds(h, 0)) == plain; });
    addEdge(rows, topic, u"last and negative"_s, 0.0, -1.0,
        [&](double h) { return sizeOf(withEnds(0, h)) == plain; });

    topic = "equality";
    const auto isSame = [](const QPointF &a, const QPointF &b) {
        return Plots::centroidedPlotSame(signalOf({a}), signalOf({b})).value();
    };
    for (const double value : {0.0, 0.5, 1.0, 500.0, 1e6}) {
        addEdge(rows, topic, u"y "_s + shown(value), value, value + 1.0, [&](double y) {
            return isSame({1, value}, {1, y});
        });
        addEdge(rows, topic, u"x "_s + shown(value), value, value + 1.0, [&](double x) {
            return isSame({value, 1}, {x, 1});
        });
    }

    topic = "flat";
    addEdge(rows, topic, u"triangle"_s, 0.0, 1.0, [](double h) {
        return Plots::pearsonsCorrelation(triangle(h), triangle(1)).value() == 0.0;
    });
    addEdge(rows, topic, u"second signal"_s, 0.0, 1.0, [](double h) {
        return Plots::pearsonsCorrelation(triangle(1), triangle(h)).value() == 0.0;
    });
    rows->add(
        topic, u"1e-6"_s, "correlation", Plots::pearsonsCorrelation(triangle(1e-6), triangle(1)));
    rows->add(topic, u"1.3e-6"_s, "correlation",
        Plots::pearsonsCorrelation(triangle(1.3e-6), triangle(1)));
    rows->add(topic, u"two alike 5 5 5"_s, "correlation",
        Plots::pearsonsCorrelation(
            signalOf({{0, 5}, {1, 5}, {2, 5}}), signalOf({{0, 5}, {1, 5}, {2, 5}})));
    addVerdict(rows, topic, u"two alike 5 5 5"_s, signalOf({{0, 5}, {1, 5}, {2, 5}}),
        signalOf({{0, 5}, {1, 5}, {2, 5}}));

    topic = "area";
    const auto areaOfError = [](double a, double b) {
        return Plots::relativeAreaOfError(triangle(a), triangle(b), 0.0).value();
    };
    addEdge(
        rows, topic, u"smaller"_s, 0.0, 0.1, [&](double h) { return areaOfError(1.0, h) < 2.0; });
    addEdge(
        rows, topic, u"larger"_s, 0.0, 1.0, [&](double h) { return areaOfError(h, 0.0) == 0.0; });
    for (const auto &[a, b] : {std::pair{1.0, 1e-12}, std::pair{1.0, 1.1e-12}, std::pair{1.0, 0.0},
             std::pair{1e-12, 0.5e-12}, std::pair{1.1e-12, 0.5e-12}, std::pair{2.2e-12, 1.1e-12},
             std::pair{0.0, 0.0}})
        rows->add(
            topic, shown(a) + u" and "_s + shown(b), "relativeAreaOfError", areaOfError(a, b));

    topic = "thinning";
    for (const double place : {0.0, 0.5, 1.0, 2.0, 10.0, 500.0}) {
        const double next = place + 1e-6;
        QList<double> values{place, next};
        const bool failed = Plots::removeCloseValues(&values, 1e-6).hasError();
        rows->add(topic, shown(place) + u" and 1e-6 more"_s, "removeCloseValues",
            failed ? u"error"_s : QString::number(values.size()));
        rows->add(topic, shown(place) + u" and 1e-6 more"_s, "distance", next - place);
        rows->add(topic, shown(place) + u" and 1e-6 more"_s, "domainSize",
            Plots::mergeDomains(
                signalOf({{place, 0}, {place + 1, 0}}), signalOf({{next, 0}, {place + 1, 0}}), 0.0)
                .value()
                .size());
    }
    addEdge(rows, topic, u"from 0"_s, 0.0, 1.0, [](double x) {
        return Plots::mergeDomains(signalOf({{0, 0}, {3, 0}}), signalOf({{x, 0}, {3, 0}}), 0.0)
                   .value()
                   .size()
            == 2;
    });
    for (const QList<double> &values :
        {QList<double>{0, 6e-7, 1.2e-6, 1.8e-6}, {1, kNaN, 1, 1}, {3, 1, 2}, {0, kNaN, 0}}) {
        QList<double> thinned = values;
        const bool failed = Plots::removeCloseValues(&thinned, 1e-6).hasError();
        rows->add(topic, shown(values), "removeCloseValues", failed ? u"error"_s : shown(thinned));
    }
    for (const double tolerance : {0.0, -1.0, 0.5, kNaN}) {
        QList<double> thinned{0, 0, 0.25, 1};
        const bool failed = Plots::removeCloseValues(&thinned, tolerance).hasError();
        rows->add(topic, u"0 0 0.25 1 at "_s + shown(tolerance), "removeCloseValues",
            failed ? u"error"_s : shown(thinned));
    }

    topic = "apex";
    const auto apex = [](double x, double start, double end) {
        return vex::ApexFinder::findApexTime(signalOf({{x, 100}}), start, end);
    };
    for (const auto &[start, end] :
        {std::pair{0.0, 4.0}, std::pair{1.0, 4.0}, std::pair{20.0, 24.0}, std::pair{-0.01, 4.0}}) {
        const auto object = shown(start) + u" to "_s + shown(end);
        addEdge(rows, topic, u"low "_s + object, end - 1, start,
            [&, start = start, end = end](double x) { return apex(x, start, end) == x; });
        addEdge(rows, topic, u"high "_s + object, start + 1, end,
            [&, start = start, end = end](double x) { return apex(x, start, end) == x; });
    }
    rows->add(topic, u"sample at 0 in -0.01 to 4"_s, "findApexTime", apex(0, -0.01, 4));
    rows->add(topic, u"sample at 1 in 1 to 4"_s, "findApexTime", apex(1, 1, 4));
    for (const double width : {0.019, 0.02, 0.021}) {
        const double x = 1.0 + 0.4 * width;
        rows->add(topic, u"width "_s + shown(width), "sample", x);
        rows->add(topic, u"width "_s + shown(width), "findApexTime", apex(x, 1.0, 1.0 + width));
    }
    rows->add(topic, u"sample in the middle of 1 to 1.02"_s, "findApexTime", apex(1.01, 1, 1.02));
    addEdge(rows, topic, u"intensity"_s, 0.0, 1.0, [](double h) {
        return vex::ApexFinder::findApexTime(signalOf({{1, 0}, {1.5, h}, {3, 0}}), 0, 4) == 2.0;
    });
    const auto apexOf = [](const Points &points) {
        return vex::ApexFinder::findApexTime(signalOf(points), 0, 4);
    };
    rows->add(
        topic, u"-5 -3 -4 at 1 1.5 3"_s, "findApexTime", apexOf({{1, -5}, {1.5, -3}, {3, -4}}));
    rows->add(topic, u"-5 0 at 1 1.5"_s, "findApexTime", apexOf({{1, -5}, {1.5, 0}}));
    rows->add(topic, u"NaN 3 at 1 1.5"_s, "findApexTime", apexOf({{1, kNaN}, {1.5, 3}}));
    rows->add(topic, u"NaN alone"_s, "findApexTime", apexOf({{1, kNaN}}));
    rows->add(topic, u"equals at 1 and 3"_s, "findApexTime", apexOf({{1, 7}, {3, 7}}));
    rows->add(topic, u"4 to 0"_s, "findApexTime",
        vex::ApexFinder::findApexTime(signalOf({{1, 7}, {3, 8}}), 4, 0));
    rows->add(topic, u"empty"_s, "findApexTime", apexOf({}));
}

// ---- Few points, NaN, order

void writeFewPoints(Rows *rows)
{
    const char *topic = "interval";
    for (const QList<double> &xs : {QList<double>{}, {3}, {3, 5}, {0, 1, 3}, {0, 1, 3, 7},
             {0, 1, 3, 7, 15}, {15, 7, 3, 1, 0}, {0, 0, 0, 1}}) {
        Signal signal;
        for (const double x : xs)
            signal.points().append({x, 1});
        rows->add(topic, shown(xs), "guessSamplingInterval", Plots::guessSamplingInterval(signal));
    }

    topic = "few";
    const struct
    {
        const char *name;
        Points a;
        Points b;
    } pairs[] = {
        {"empty and empty", {}, {}},
        {"empty and one 5", {}, {{1, 5}}},
        {"empty and one 0", {}, {{1, 0}}},
        {"empty and three", {}, {{0, 0}, {1, 5}, {2, 0}}},
        {"empty and three from right to left", {}, {{2, 0}, {1, 5}, {1, 4}, {0, 0}}},
        {"three and empty", {{0, 0}, {1, 5}, {2, 0}}, {}},
        {"one and the same", {{1, 5}}, {{1, 5}}},
        {"one and a higher one", {{1, 5}}, {{1, 7}}},
        {"one and one elsewhere", {{1, 5}}, {{2, 7}}},
        {"one inside three", {{1, 5}}, {{0, 0}, {1, 5}, {2, 0}}},
        {"one outside three", {{4, 5}}, {{0, 0}, {1, 5}, {2, 0}}},
        {"two and the same", {{0, 3}, {1, 5}}, {{0, 3}, {1, 5}}},
        {"apart", {{0, 0}, {1, 5}, {2, 0}}, {{4, 0}, {5, 5}, {6, 0}}},
    };
    for (const auto &[name, first, second] : pairs) {
        const Signal a = signalOf(first);
        const Signal b = signalOf(second);
        const auto object = QString::fromLatin1(name);
        rows->add(topic, object, "mergeDomains", Plots::mergeDomains(a, b, 0.0));
        rows->add(topic, object, "subtract", Plots::subtract(a, b, 0.0));
        rows->add(topic, object, "relativeAreaOfError", Plots::relativeAreaOfError(a, b, 0.0));
        rows->add(topic, object, "pearsonsCorrelation", Plots::pearsonsCorrelation(a, b));
        rows->add(topic, object, "centroidedPlotSame", Plots::centroidedPlotSame(a, b));
        addVerdict(rows, topic, object, a, b);
    }

    const Signal single = signalOf({{1, 5}});
    const Signal flat = signalOf({{0, 5}, {1, 5}, {2, 5}});
    addVerdict(rows, topic, u"one and the same at correlation 0"_s, single, single, kMaxArea, 0.0);
    addVerdict(rows, topic, u"flat and the same at correlation 0"_s, flat, flat, kMaxArea, 0.0);
    addVerdict(rows, topic, u"three and empty at any limits"_s, triangle(5), Signal(), kInfinity,
        -kInfinity);
    addVerdict(rows, topic, u"empty and zeros at no limits"_s, Signal(), triangle(0), -1.0, 2.0);
    rows->add(topic, u"0 at 1 and 0 at 2"_s, "mergeDomains",
        Plots::mergeDomains(signalOf({{1, 0}}), signalOf({{2, 0}}), 0.0));
    const Signal narrow = signalOf({{4, 1}, {4.5, 1}, {5, 1}});
    const Signal wide = signalOf({{0, 1}, {5, 1}, {10, 1}});
    const Signal wider = signalOf({{0, 1}, {2, 1}, {6, 1}, {10, 1}});
    rows->add(topic, u"gap 0.5 then 5"_s, "mergeDomains", Plots::mergeDomains(narrow, wide, 0.0));
    rows->add(topic, u"gap 5 then 0.5"_s, "mergeDomains", Plots::mergeDomains(wide, narrow, 0.0));
    rows->add(topic, u"gap 4 of four then 0.5 of three"_s, "mergeDomains",
        Plots::mergeDomains(wider, narrow, 0.0));
    rows->add(topic, u"gap 0.5 of three then 4 of four"_s, "mergeDomains",
        Plots::mergeDomains(narrow, wider, 0.0));

    topic = "nan";
    const Signal plain = triangle(5);
    const Signal withNaN = signalOf({{0, 0}, {1, kNaN}, {2, 0}});
    const struct
    {
        const char *name;
        Signal a;
        Signal b;
    } oddPairs[] = {
        {"NaN among y against a signal", withNaN, plain},
        {"NaN among y against zeros", withNaN, triangle(0)},
        {"NaN among y against itself", withNaN, withNaN},
        {"NaN at an end", signalOf({{0, kNaN}, {1, 5}, {2, 0}}), plain},
        {"NaN beside intensity", signalOf({{0, 0}, {1, 5}, {1.5, kNaN}, {2, 0}}), plain},
        {"infinity among y", triangle(kInfinity), plain},
        {"infinity against itself", triangle(kInfinity), triangle(kInfinity)},
        {"1e160 and twice as high", triangle(1e160), triangle(2e160)},
        {"1e308 upside down", triangle(1e308), triangle(-1e308)},
        {"1e308 and half, 20 wide", signalOf({{0, 0}, {10, 1e308}, {20, 0}}),
            signalOf({{0, 0}, {10, 5e307}, {20, 0}})},
        {"NaN among x", signalOf({{0, 0}, {kNaN, 5}, {2, 0}}), plain},
    };
    for (const auto &[name, a, b] : oddPairs) {
        rows->add(topic, QString::fromLatin1(name), "mergeDomains", Plots::mergeDomains(a, b, 0.0));
        rows->add(topic, QString::fromLatin1(name), "centroidedPlotSame",
            Plots::centroidedPlotSame(a, b));
        addVerdict(rows, topic, QString::fromLatin1(name), a, b);
    }
    addVerdict(
        rows, topic, u"limits NaN"_s, triangle(5), signalOf({{0, 5}, {1, 0}, {2, 5}}), kNaN, kNaN);
    rows->add(topic, u"-1 NaN"_s, "abs", Plots::abs(signalOf({{0, -1}, {1, kNaN}})));

    topic = "limits";
    const Signal twice = triangle(2);
    const double area = Plots::relativeAreaOfError(triangle(1), twice, 0.0).value();
    rows->add(topic, u"heights 1 and 2"_s, "relativeAreaOfError", area);
    addVerdict(rows, topic, u"area at its limit"_s, triangle(1), twice, area, 0.99);
    addVerdict(rows, topic, u"area above its limit"_s, triangle(1), twice,
        std::nextafter(area, 0.0), 0.99);
    const double correlation = Plots::pearsonsCorrelation(triangle(1), twice).value();
    addVerdict(rows, topic, u"correlation at its limit"_s, triangle(1), twice, 9.0, correlation);
    addVerdict(rows, topic, u"correlation below its limit"_s, triangle(1), twice, 9.0,
        std::nextafter(correlation, 2.0));

    topic = "order";
    const Signal a = pictureA();
    const Signal b = pictureB();
    const struct
    {
        const char *name;
        Signal a;
        Signal b;
    } orders[] = {
        {"both ascending", a, b},
        {"a descending", reversed(a), b},
        {"b descending", a, reversed(b)},
        {"both descending", reversed(a), reversed(b)},
    };
    for (const auto &[name, first, second] : orders) {
        rows->add(topic, QString::fromLatin1(name), "mergeDomains",
            Plots::mergeDomains(first, second, 0.0));
        addVerdict(rows, topic, QString::fromLatin1(name), first, second);
    }
    rows->add(topic, u"3 1 2 and empty"_s, "mergeDomains",
        Plots::mergeDomains(signalOf({{3, 1}, {1, 1}, {1, 1}, {2, 1}}), Signal(), 0.0));
    for (const double tolerance : {0.0, 1.0, 1e9, kNaN}) {
        rows->add("tolerance", shown(tolerance), "domainSize",
            Plots::mergeDomains(a, b, tolerance).value().size());
        rows->add("tolerance", shown(tolerance), "relativeAreaOfError",
            Plots::relativeAreaOfError(a, b, tolerance));
        rows->add("tolerance", shown(tolerance), "subtract",
            Plots::subtract(a, b, tolerance).value().points().size());
        rows->add("tolerance", shown(tolerance), "plotSame",
            Plots::plotSame(a, b, tolerance, kMaxArea, kMinCorrelation));
    }
    rows->add("swap", u"a then b"_s, "relativeAreaOfError", Plots::relativeAreaOfError(a, b, 0.0));
    rows->add("swap", u"b then a"_s, "relativeAreaOfError", Plots::relativeAreaOfError(b, a, 0.0));
    rows->add("values", u"a at 2 and at 2.0000004"_s, "evaluate",
        QList<double>{a.evaluate(2.0, 1, 0), a.evaluate(2.0000004, 1, 0)});
    const Signal step = signalOf({{0, 1}, {1, 2}, {1, 8}, {2, 8}});
    rows->add("values", u"step at 0.5 1 1.5 2 2.1"_s, "evaluate",
        QList<double>{step.evaluate(0.5, 1, 0), step.evaluate(1, 1, 0), step.evaluate(1.5, 1, 0),
            step.evaluate(2, 1, 0), step.evaluate(2.1, 1, 0)});
}

// ---- The worked example

/// A peak 0.2 minutes wide on a chromatogram.
Signal peak(double apex, double height, double start, double end, double step)
{
    Signal signal;
    const int count = qRound((end - start) / step) + 1;
    for (int i = 0; i < count; ++i) {
        const double x = start + i * step;
        signal.points().append({x, height * std::exp(-0.5 * std::pow((x - apex) / 0.1, 2))});
    }
    return signal;
}

void writeExample(Rows *rows)
{
    const char *topic = "example";
    const Signal a = peak(5.0, 1000, 4.4, 5.6, 0.02);
    rows->add(topic, u"a"_s, "points", a.points().size());
    rows->add(
        topic, u"a"_s, "area", a.computeAreaNoUnitConversion(4.4, 5.6, false, Signal::Trapezoid));
    rows->add(topic, u"a"_s, "findApexTime", vex::ApexFinder::findApexTime(a, 4.4, 5.6));
    const struct
    {
        const char *name;
        Signal b;
    } others[] = {
        {"the same", a},
        {"every 0.03 min", peak(5.0, 1000, 4.4, 5.6, 0.03)},
        {"every 0.1 min", peak(5.0, 1000, 4.4, 5.6, 0.1)},
        {"4 % higher", peak(5.0, 1040, 4.4, 5.6, 0.02)},
        {"6 % higher", peak(5.0, 1060, 4.4, 5.6, 0.02)},
        {"0.005 min later", peak(5.005, 1000, 4.4, 5.6, 0.02)},
        {"0.01 min later", peak(5.01, 1000, 4.4, 5.6, 0.02)},
        {"0.1 min later", peak(5.1, 1000, 4.4, 5.6, 0.02)},
        {"cut at 5 min", peak(5.0, 1000, 4.4, 5.0, 0.02)},
        {"nothing", triangle(0)},
        {"empty", Signal()},
    };
    for (const auto &[name, b] : others) {
        addVerdict(rows, topic, QString::fromLatin1(name), a, b);
        if (!b.points().isEmpty())
            rows->add(topic, QString::fromLatin1(name), "points", b.points().size());
    }
    addVerdict(
        rows, topic, u"0.1 min later and 2 as area"_s, a, peak(5.1, 1000, 4.4, 5.6, 0.02), 2.0);

    topic = "check";
    const Signal odd =
        signalOf({{1, 5}, {2, kNaN}, {2, 6}, {1.5, 7}, {kNaN, 1}, {3, 1}, {kInfinity, 0}, {4, 0}});
    for (const Plots::SignalFinding &finding : Plots::checkSignal(odd))
        rows->add(topic, QString::number(finding.index), "kind", finding.kind);
    rows->add(topic, u"at most 2"_s, "findings", Plots::checkSignal(odd, 2).size());
    rows->add(topic, u"at most 0"_s, "findings", Plots::checkSignal(odd, 0).size());
    rows->add(topic, u"picture"_s, "findings", Plots::checkSignal(pictureA()).size());

    topic = "decimal";
    QLocale::setDefault(QLocale::c());
    for (const auto &text :
        {u"1.50"_s, u"1.50 "_s, u" 1.5"_s, u"1e3"_s, u"1.5e3"_s, u"x.yz"_s, u"12"_s}) {
        const vex::Decimal decimal = vex::Decimal::fromString(text);
        rows->add(topic, u'"' + text + u'"', "value", decimal.value());
        rows->add(topic, u'"' + text + u'"', "sigFig", decimal.sigFig());
        rows->add(topic, u'"' + text + u'"', "toString", u'"' + decimal.toString() + u'"');
    }
    rows->add(
        topic, u"infinity and 5"_s, "equal", vex::Decimal(kInfinity, 2) == vex::Decimal(5, 2));
    rows->add(topic, u"infinity and infinity"_s, "equal",
        vex::Decimal(kInfinity, 2) == vex::Decimal(kInfinity, 2));
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    for (const auto &text : {u"1,50"_s, u"1.50"_s}) {
        const vex::Decimal decimal = vex::Decimal::fromString(text);
        const QString object = u"German "_s + QString(text).replace(u',', u';');
        rows->add(topic, object, "value", decimal.value());
        rows->add(topic, object, "sigFig", decimal.sigFig());
        rows->add(topic, object, "toString", decimal.toString().replace(u',', u';'));
    }
    vex::TimeRange range(5, 2, true);
    rows->add("range", u"constructed 5 2"_s, "start", range.start());
    rows->add("range", u"constructed 5 2"_s, "valid", range.valid());
    range.setTime(5, 2);
    rows->add("range", u"set 5 2"_s, "start", range.start());
    rows->add("range", u"set 5 2"_s, "valid", range.valid());
    range.setTime(2, 2);
    rows->add("range", u"set 2 2"_s, "valid", range.valid());
}

template <typename Write>
bool writeFile(const QString &path, Write write)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        std::fprintf(stderr, "vex_signal_figures: %s: %s\n", qPrintable(path),
            qPrintable(file.errorString()));
        return false;
    }
    QTextStream out(&file);
    write(&out);
    out.flush();
    return out.status() == QTextStream::Ok;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: vex_signal_figures FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    bool isGood = true;
    isGood &= writeFile(folder.filePath(u"signals-numbers.csv"_s), [&](QTextStream *numbers) {
        Rows rows(numbers);
        isGood &= writeFile(folder.filePath(u"signals-samples.csv"_s), [&](QTextStream *samples) {
            isGood &=
                writeFile(folder.filePath(u"signals-positions.csv"_s), [&](QTextStream *positions) {
                    if (!writePicture(samples, positions, &rows)) {
                        std::fprintf(stderr, "vex_signal_figures: the domain holds other places\n");
                        isGood = false;
                    }
                });
        });
        writeThresholds(&rows);
        writeFewPoints(&rows);
        writeExample(&rows);
    });
    return isGood ? 0 : 1;
}

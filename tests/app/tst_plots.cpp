// What stands in a plot: texts as they are, the right ticks, the right shapes. The module is loaded
// as the program does it.
#include "output/Plot.h"

#include <QImage>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>

#if defined(Q_OS_UNIX)
#    include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;
using namespace vexcli;

namespace {

/// An SVG, taken apart.
struct Picture
{
    QString title;
    QStringList texts;
    QList<QPointF> places; // where each text starts
    QMap<QString, int> shapes; // number of "polyline #0072b2", ...
    QMap<QString, QList<QPointF>> points; // by the same names
    QString problem;
};

Picture pictureOf(const vex::Result<QByteArray> &svg)
{
    Picture picture;
    QXmlStreamReader reader(svg.value());
    QXmlStreamAttributes group;
    QPointF origin;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString name = reader.name().toString();
        if (name == "title"_L1) {
            picture.title += reader.readElementText();
        } else if (name == "text"_L1) {
            const QXmlStreamAttributes at = reader.attributes();
            picture.places +=
                origin + QPointF(at.value(u"x"_s).toDouble(), at.value(u"y"_s).toDouble());
            picture.texts += reader.readElementText();
        } else if (name == "g"_L1) {
            group = reader.attributes();
            const QStringList matrix = group.value(u"transform"_s).toString().split(u',');
            origin = {matrix.value(4).toDouble(), matrix.value(5).remove(u')').toDouble()};
        } else if (u"path polyline rect circle"_s.split(u' ').contains(name)) {
            const bool isLine = name == "polyline"_L1;
            const QString shape =
                u"%1 %2"_s.arg(name, group.value(isLine ? u"stroke"_s : u"fill"_s));
            ++picture.shapes[shape];
            static const QRegularExpression pair(u"([0-9.e+-]+),([0-9.e+-]+)"_s);
            const auto pairs = reader.attributes().value(isLine ? u"points"_s : u"d"_s);
            for (const auto &match : pair.globalMatch(pairs.toString()))
                picture.points[shape].append(
                    origin + QPointF(match.captured(1).toDouble(), match.captured(2).toDouble()));
        } else if (!u"svg desc defs"_s.split(u' ').contains(name)) {
            picture.problem += name;
        }
    }
    picture.problem += reader.errorString();
    return picture;
}

/// The places of the horizontal lines of the grid, from the lowest.
QList<double> gridOf(const Picture &picture)
{
    QList<double> lines;
    const QList<QPointF> ends = picture.points.value(u"polyline #e0e0e0"_s);
    for (qsizetype i = 0; i + 1 < ends.size(); i += 2) {
        if (ends[i].y() == ends[i + 1].y())
            lines.append(ends[i].y());
    }
    std::sort(lines.rbegin(), lines.rend());
    return lines;
}

/// Each kind of plot with @p name wherever a name can stand.
vex::Result<QByteArray> draw(const QString &kind, const QString &name, const QString &path)
{
    if (kind == "curves"_L1)
        return drawCurves(path, name, name,
            {{name, {{name, {{0, 0}, {1, 2}}}}, {{name, {{0, 0}, {1, 1}}}, {name, {{1, 1}}}}},
                {u"-"_s, {{name, {{0, 0}, {1, 2}}}}, {}}});
    return drawPatterns(path, name, QList<PlottedPattern>(12, {name, {0.5, 0.25}}),
        kind == "bars"_L1 ? PlotStyle::Bars : PlotStyle::Lines);
}

} // namespace

class tst_plots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesAreShownAsTheyAre()
    {
        const QString blank; // shown as it is
        for (const auto &[name, shown] : {std::pair(u"A&B.csv &lt;"_s, blank),
                 {u"<img src=\"in\">"_s, blank}, {u"<style>@import url(pipe)"_s, blank},
                 {u"]]>"_s, blank}, {u"a  b"_s, blank}, {u"x\U0001f600y"_s, blank},
                 {u"\u0001\u001b"_s, u"<U+0001><U+001B>"_s}, {u"a\u202e"_s, u"a<U+202E>"_s},
                 {u"\ufffe"_s, u"<U+FFFE>"_s}, {u"a"_s + QChar(0xd800), u"a<U+D800>"_s},
                 {u"begin"_s + QString(5000, u'&') + u"end"_s, blank}}) {
            for (const QString &kind : {u"bars"_s, u"lines"_s, u"curves"_s}) {
                const Picture svg = pictureOf(draw(kind, name, u"x.svg"_s));
                QCOMPARE(svg.problem, QString());
                const QString text = shown.isEmpty() ? name : shown;
                QCOMPARE(svg.title, text);
                // title and legend; or title, legend and the titles of three axes
                const qsizetype times = kind == "curves"_L1 ? 7 : 13;
                const QRegularExpression cut(u"^begin&{1,50}…&{1,50}end$"_s);
                QCOMPARE(text.size() > 5000 ? svg.texts.filter(cut).size()
                                            : svg.texts.join(QString()).count(text),
                    times);
                const auto image =
                    QImage::fromData(draw(kind, name, u"x.PNG"_s).valueOr({}), "PNG");
                QCOMPARE(image.size(), QSize(1600, kind == "curves"_L1 ? 1440 : 1000));
                QCOMPARE(image.pixel(0, 0), 0xffffffff);
            }
        }
    }

    void ticksFitTheNumbers()
    {
        for (const auto &[left, width, height, ticks] :
            {std::tuple(0.0, 10.0, 5.0, u"0 1 2 3 4 5 6 7 8 9 10 0 1 2 3 4 5"_s),
                {-50, 50, 0.25,
                    u"-50 -45 -40 -35 -30 -25 -20 -15 -10 -5 0 0.00 0.05 0.10 0.15 0.20 0.25"_s},
                {1, 4, -1, u"1.0 1.5 2.0 2.5 3.0 3.5 4.0 4.5 5.0 -1.0 -0.8 -0.6 -0.4 -0.2 0.0"_s},
                {0, 8e-6, 2e-7,
                    u"0 1e-06 2e-06 3e-06 4e-06 5e-06 6e-06 7e-06 8e-06 0 5.0e-08 1.0e-07 1.5e-07 2.0e-07"_s},
                {5e8, 5e8, 1e300,
                    u"5.0e+08 6.0e+08 7.0e+08 8.0e+08 9.0e+08 1.0e+09 0 2.0e+299 4.0e+299 6.0e+299 8.0e+299 1.0e+300"_s},
                {1e12, 4, 0,
                    u"1000000000000 1000000000001 1000000000002 1000000000003 1000000000004 -0.4 -0.2 0.0 0.2 0.4"_s},
                {1e17, 64, 1,
                    u"9.900e+16 9.950e+16 1.000e+17 1.005e+17 1.010e+17 0.0 0.2 0.4 0.6 0.8 1.0"_s}}) {
            const QList<QPointF> points{{left, 0}, {left + width, height}};
            const auto svg = drawCurves(u"x.svg"_s, {}, {}, {{{}, {{{}, points}}, {}}});
            QCOMPARE(pictureOf(svg).texts.join(u' '), ticks);
        }
    }

    void patternsHaveTheirShapes()
    {
        const QList<PlottedPattern> two{{u"a"_s, {0.5, 0.25, 0.125, 1e-9}}, {u"b"_s, {0.1, 0.01}}};
        const Picture bars = pictureOf(drawPatterns(u"x.svg"_s, u"t"_s, two, PlotStyle::Bars));
        QCOMPARE(bars.texts.join(u'|'),
            u"t|a|b|0|1|2|0|10|20|30|40|50|nominal mass above the monoisotopic peak / Da|"
            "share of the whole signal / %"_s);
        QCOMPARE(bars.shapes.value(u"rect #0072b2"_s), 1); // keys of the legend
        QCOMPARE(bars.shapes.value(u"rect #d55e00"_s), 1);
        const auto outline = bars.points.value(u"path #0072b2"_s);
        QCOMPARE(outline.size(), 13); // four for each bar, then back to the first
        const QList<double> grid = gridOf(bars); // at 0, 10, ... 50 %
        QCOMPARE(grid.size(), 6);
        const double heights[]{outline[0].y() - grid[0], outline[1].y() - grid[5],
            outline[5].y() - (grid[2] + grid[3]) / 2.0, bars.places[6].y() - 5.0 - grid[0],
            bars.places[11].y() - 5.0 - grid[5]};
        for (const double height : heights)
            QVERIFY2(std::fabs(height) < 1.5, qPrintable(QString::number(height)));
        for (const int shift : {0, 1, 2}) { // level, and the right edge stands at its tick
            const QPointF edge = outline[4 * shift + 2];
            QVERIFY(std::fabs(edge.x() - bars.places[3 + shift].x() - 4.0) < 1.5);
            QVERIFY(std::fabs(edge.y() - outline[4 * shift + 1].y()) < 0.01);
        }
        QCOMPARE(bars.points.value(u"path #d55e00"_s).size(), 9);

        const Picture lines = pictureOf(drawPatterns(u"x.svg"_s, u"t"_s, two, PlotStyle::Lines));
        QCOMPARE(lines.texts, bars.texts);
        QCOMPARE(lines.points.value(u"polyline #2d0b59"_s).size(), 2 * 2); // by segments
        QCOMPARE(lines.shapes.value(u"polyline #f9b208"_s), 1);

        const Picture none = pictureOf(drawCurves(u"x.svg"_s, {}, {}, {{{}, {{{}, {}}}, {}}}));
        QCOMPARE(none.texts.first(6).join(u' '), u"0.0 0.1 0.2 0.3 0.4 0.5"_s);
        const Picture one = pictureOf(drawPatterns(u"x.svg"_s, u"t"_s, {two[0]}, PlotStyle::Bars));
        QVERIFY(!one.texts.contains("a"_L1)); // no legend for one
        QSet<QString> colours;
        for (const QString &shape : pictureOf(draw(u"bars"_s, u"n"_s, u"x.svg"_s)).shapes.keys())
            colours += shape.startsWith("path"_L1) ? shape : QString();
        QCOMPARE(colours.size(), 12 + 1);
    }

    void sticksStandAtTheirPlaces()
    {
        const QList<QPointF> peaks{{100.0, 1.0}, {101.0, 4.0}, {103.0, 2.0}};
        const Picture svg = pictureOf(drawCurves(u"x.svg"_s, u"t"_s, u"m/z"_s,
            {{u"y"_s,
                {{u"a"_s, peaks, PlottedCurve::Sticks}, {u"b"_s, peaks, PlottedCurve::Line},
                    {u"c"_s, peaks, PlottedCurve::Sticks}},
                {}}}));
        const QList<double> grid = gridOf(svg); // at 0, 1, ... 4
        QCOMPARE(grid.size(), 5);
        double left = 1e9; // where the horizontal lines begin
        for (const QPointF &end : svg.points.value(u"polyline #e0e0e0"_s))
            left = std::min(left, end.x());
        const QList<QPointF> ends = svg.points.value(u"polyline #0072b2"_s); // by segments
        QList<QPointF> tops;
        for (const QPointF &end : ends) {
            if (end.y() < grid[0] - 1.0 && (tops.isEmpty() || tops.last() != end))
                tops.append(end);
            QVERIFY(end.y() < grid[0] - 1.0 || end.y() > grid[0] + 5.0); // nothing along the axis
        }
        QCOMPARE(tops.size(), 3);
        const double unit = tops[1].x() - tops[0].x();
        QVERIFY(std::fabs(tops[2].x() - tops[1].x() - 2.0 * unit) < 0.1);
        QVERIFY(tops[0].x() - left > 0.05 * unit);
        for (const auto &[top, line] : {std::pair(0, 1), {1, 4}, {2, 2}})
            QVERIFY(std::fabs(tops[top].y() - grid[line]) < 1.0);
        QVERIFY(svg.shapes.contains(u"polyline #009e73"_s)); // no curve has the colour of a dot
        QVERIFY(svg.shapes.contains(u"polyline #cc79a7"_s));
        QVERIFY(!svg.shapes.contains(u"polyline #d55e00"_s));
    }

    void thinnedCurvesKeepTheirExtremes()
    {
        QList<QPointF> points;
        for (int i = 0; i < 100000; ++i)
            points.append({i * 1.0, i % 7 == 6 ? std::nan("") : 1.0 + i % 2});
        points[50001].ry() = 40.0;
        points[50002].ry() = -30.0;
        const Picture svg = pictureOf(drawCurves(u"x.svg"_s, u"t"_s, u"x"_s,
            {{u"y"_s, {{u"c"_s, points}}, {{u"r"_s, points}, {u"m"_s, {points[50001]}}}}}));
        QCOMPARE(svg.texts.join(u'|'),
            u"t|r|c|m|0|10000|20000|30000|40000|50000|60000|70000|80000|90000"
            "|-20|0|20|40|x|y"_s);
        QCOMPARE(svg.shapes.value(u"circle #d55e00"_s), 1);
        QVERIFY(svg.shapes.value(u"polyline #0072b2"_s) <= 6400);
        for (const QString &shape : {u"polyline #0072b2"_s, u"path #c6dff0"_s}) {
            const QList<double> grid = gridOf(svg); // at -20, 0, 20, 40
            QList<double> heights;
            for (const QPointF &point : svg.points.value(shape))
                heights.append(point.y());
            const auto [high, low] = std::minmax_element(heights.begin(), heights.end());
            QVERIFY(grid.size() == 4 && std::fabs(*high - grid[3]) < 1.0);
            QVERIFY(std::fabs(*low - (1.5 * grid[0] - 0.5 * grid[1])) < 1.0);
        }
    }

    void littleMemoryIsAnError()
    {
#if defined(Q_OS_UNIX) && !defined(__SANITIZE_ADDRESS__)
        rlimit before;
        QCOMPARE(getrlimit(RLIMIT_AS, &before), 0);
        const rlimit small{rlim_t{1} << 20, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_AS, &small), 0);
        const auto picture = draw(u"bars"_s, u"n"_s, u"x.png"_s);
        QCOMPARE(setrlimit(RLIMIT_AS, &before), 0);
        if (picture.hasValue())
            QSKIP("limits are not kept here");
        QCOMPARE(picture.error().errorMessages().value(0),
            u"cannot draw x.png: there is not enough memory"_s);
        QVERIFY(draw(u"bars"_s, u"n"_s, u"x.png"_s).hasValue());
#endif
    }
};

int main(int argc, char **argv)
{
    // none of these may reach Qt
    for (const char *name :
        {"QT_QPA_PLATFORM", "QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH", "QT_STYLE_OVERRIDE",
            "QT_QPA_PLATFORMTHEME", "QT_FATAL_WARNINGS", "QT_QPA_GENERIC_PLUGINS"})
        qputenv(name, "nonsense");
    qunsetenv("XDG_RUNTIME_DIR"); // Qt warns of that
    const auto application = makeApplication(true);
    if (application.hasError())
        qFatal("%s", qUtf8Printable(application.error().errorMessages().value(0)));
    tst_plots test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_plots.moc"

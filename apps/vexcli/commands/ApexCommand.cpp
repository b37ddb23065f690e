#include "commands/Command.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Plot.h"
#include "input/Columns.h"
#include "input/SignalFile.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/ApexFinder.h>

#include <QFileInfo>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kInset =
    0.01; // minutes, or m/z or Da, at either end of the range where no apex is looked for
constexpr double kZero = 1e-12; // intensities of at most this magnitude are none

struct Apex
{
    double time = 0.0; // in the unit of the file
    std::optional<double> intensity; // none when the time is just the middle of the range
    QString problem; // why
};

/// The part of a signal that matters between @p range, with x in minutes where it is a time.
vex::PlotBase inMinutes(const vex::PlotBase &signal, SignalRange range, const XUnit &unit)
{
    if (unit.scale() == 1.0)
        return signal;
    vex::PlotBase result;
    for (const QPointF &point : signal.points()) {
        if (point.x() >= range.start && point.x() <= range.end)
            result.points().append({point.x() / unit.scale(), point.y()});
    }
    return result;
}

Apex findApex(const vex::PlotBase &signal, SignalRange range, const XUnit &unit)
{
    const vex::PlotBase minutes = inMinutes(signal, range, unit);
    const double start = range.start / unit.scale();
    const double end = range.end / unit.scale();
    const double time = vex::ApexFinder::findApexTime(minutes, start, end);
    const double highest = minutes.getMaxTimeIntensity(start + kInset, end - kInset).y();
    const double intensity = minutes.getMaxTimeIntensity(time, time).y();
    const auto &points = signal.points();
    if (std::fabs(highest) > kZero && std::fabs(intensity) > kZero) {
        // The sample's own x: a way to minutes and back may change the last digit.
        const auto sample = std::find_if(points.begin(), points.end(), [&](const QPointF &point) {
            return point.x() / unit.scale() == time && point.y() == intensity;
        });
        if (sample != points.end())
            return {sample->x(), intensity, {}};
    }
    const bool isNarrow = !(start + kInset <= end - kInset);
    const bool hasSample = std::any_of(points.begin(), points.end(), [&](const QPointF &point) {
        const double x = point.x() / unit.scale();
        return x > start + kInset && x < end - kInset;
    });
    const auto inset = [&unit](double times) { // minutes also where the unit is seconds
        return QString::number(times * kInset) + u' '
            + (unit.perMinute > 0.0 ? u"min"_s : unit.symbol);
    };
    return {time * unit.scale(), {},
        isNarrow         ? u"the range is narrower than %1"_s.arg(inset(2.0))
            : !hasSample ? u"no sample lies in the range %1 away from its ends"_s.arg(inset(1.0))
                         : u"the greatest intensity in the range is 0"_s};
}

/// As many digits as a plot has room for.
QString shortNumber(double value)
{
    return QString::number(value, 'g', 6);
}

double areaOver(const vex::PlotBase &signal, SignalRange range)
{
    return signal.computeAreaNoUnitConversion(
        range.start, range.end, false, vex::PlotBase::Trapezoid);
}

/// From the first to the last sample in @p range; inverted when there is none.
SignalRange sampledPart(const vex::PlotBase &signal, SignalRange range)
{
    SignalRange part{range.end, range.start};
    for (const QPointF &point : signal.points()) {
        if (point.x() >= range.start && point.x() <= range.end) {
            part.start = std::min(part.start, point.x());
            part.end = std::max(part.end, point.x());
        }
    }
    return part;
}

/// The signal's points between @p range, and its values at the ends of it.
QList<QPointF> edgeOf(const vex::PlotBase &signal, SignalRange range)
{
    const SignalRange whole = rangeOf(signal);
    const double start = std::max(range.start, whole.start);
    const double end = std::min(range.end, whole.end);
    if (!(start < end))
        return {};
    QList<QPointF> edge{{start, signal.evaluate(start, 1, 0)}};
    for (const QPointF &point : signal.points()) {
        if (point.x() > start && point.x() < end)
            edge.append(point);
    }
    edge.append({end, signal.evaluate(end, 1, 0)});
    return edge;
}

/// Units of a signal.
struct Units
{
    XUnit x;
    QString intensity; // empty for a relative one

    bool isCounted() const { return !intensity.isEmpty(); }
    /// @param sign  between the two
    QString area(const QString &sign) const
    {
        return isCounted() ? intensity + u' ' + sign + x.symbol : x.symbol;
    }
};

/// The panel of a plot.
PlottedPanel panelOf(const vex::PlotBase &signal, SignalRange range, const Apex &apex, double area,
    const Units &units)
{
    PlottedPanel panel{units.isCounted() ? u"intensity / counts"_s : u"relative intensity"_s,
        {{u"signal"_s, signal.points()}}, {}};
    if (const QList<QPointF> edge = edgeOf(signal, range); !edge.isEmpty())
        panel.marks.append(
            {"area "_L1 + withUnit(shortNumber(area), units.area(u"\u00d7 "_s)), edge});
    if (apex.intensity)
        panel.marks.append(
            {u"apex %1 at %2"_s.arg(withUnit(shortNumber(*apex.intensity), units.intensity),
                 units.x.with(shortNumber(apex.time))),
                {{apex.time, *apex.intensity}}});
    return panel;
}

vex::Result<SignalRange> rangeFrom(
    const CommandLine &commandLine, SignalRange whole, const XUnit &unit)
{
    SignalRange range = whole;
    for (const auto &[option, bound] :
        {std::pair(u"start"_s, &range.start), {u"end"_s, &range.end}}) {
        if (!commandLine.isSet(option))
            continue;
        auto number = finiteNumber(commandLine.value(option), option);
        if (number.hasError())
            return passedOn(std::move(number).error());
        *bound = number.value();
    }
    const bool isGiven = commandLine.isSet(u"start"_s) || commandLine.isSet(u"end"_s);
    if (isGiven && !(range.start < range.end))
        return usageFailure(u"the range ends, at %1 %3, no later than it starts, at %2 %3"_s.arg(
            exactNumber(range.end), exactNumber(range.start), unit.symbol));
    if (range.end < whole.start || range.start > whole.end)
        warn(u"the range lies outside the signal, which is from %1 to %2 %3"_s.arg(
            exactNumber(whole.start), exactNumber(whole.end), unit.symbol));
    return range;
}

/// The unit of x of @p file: minutes where nothing tells.
vex::Result<XUnit> unitOf(const CommandLine &commandLine, const SignalFile &file)
{
    auto unit = xUnitOf(commandLine, {file});
    if (unit.hasError())
        return passedOn(std::move(unit).error());
    if (unit.value().symbol.isEmpty())
        return XUnit{u"min"_s, 1.0};
    if (unit.value().symbol == "ms"_L1 || unit.value().symbol == "h"_L1)
        return failure(
            u"x of %1 is in %2, and an apex is looked for in min, s, m/z or Da "
            "(--x-unit tells when the title is wrong)"_s.arg(file.name, unit.value().symbol));
    return unit;
}

/// What was found, for tables and JSON.
struct Report
{
    QString name;
    Units units;
    SignalRange range;
    bool isWhole = false; // the range is that of the signal
    qsizetype pointCount = 0;
    Apex apex;
    double area = 0.0;
    double sampledArea = 0.0;

    QString asText() const
    {
        const auto areaText = [this](double value) {
            return withUnit(QString::number(value, 'g', 10), units.area(u"x "_s));
        };
        return headLine(name)
            + reportLine(u"range"_s,
                u"%1 to %2 %3%4"_s.arg(exactNumber(range.start), exactNumber(range.end),
                    units.x.symbol, isWhole ? u", the whole signal"_s : QString()))
            + reportLine(u"apex"_s,
                units.x.with(exactNumber(apex.time))
                    + (apex.intensity ? QString() : u", just the middle: "_s + apex.problem))
            + reportLine(u"intensity there"_s,
                apex.intensity ? withUnit(exactNumber(*apex.intensity), units.intensity) : u"-"_s)
            + reportLine(u"area over the range"_s, areaText(area))
            + reportLine(u"between samples only"_s, areaText(sampledArea));
    }

    QJsonObject asJson() const
    {
        return {{u"file"_s, name}, {u"pointCount"_s, pointCount}, {u"xUnit"_s, units.x.symbol},
            {u"intensityUnit"_s, units.isCounted() ? QJsonValue(units.intensity) : QJsonValue()},
            {u"areaUnit"_s, units.area({})}, {u"start"_s, range.start}, {u"end"_s, range.end},
            {u"apexTime"_s, apex.time}, {u"isMiddleOfRange"_s, !apex.intensity},
            {u"apexIntensity"_s, apex.intensity ? QJsonValue(*apex.intensity) : QJsonValue()},
            {u"area"_s, area}, {u"areaBetweenSamples"_s, sampledArea}};
    }
};

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Finds where a chromatogram or a spectrum is highest within a range, and the area under it."_s,
        {u"vex apex run1.csv"_s, u"vex apex run1.csv --start 2.4 --end 3.1 --plot apex.svg"_s,
            u"vex apex run2.txt --column RT,TIC --x-unit s"_s},
        u"The file has two columns, time or m/z and intensity in counts, separated by commas, "
        u"semicolons "
        u"or "
        "tabs. Lines that begin with # and titles are passed over.\n"
        "The apex is a sample at least 0.01 min, m/z or Da away from the ends of the range. Where "
        "no such "
        "sample has an intensity, the middle of the range is given, and said to be just that.\n"
        "The area is that under the straight lines between the samples, down to 0, over the whole "
        "range. The area between the first and the last sample in the range stands beside it, for "
        "other programs give that one."_s);
    commandLine->addInputPositional(u"FILE"_s, u"The chromatogram or spectrum (CSV)."_s, u"FILE"_s);
    commandLine->addOption({u"start"_s},
        u"Where the range starts, in the unit of the file (default: with the signal)."_s, u"X"_s);
    commandLine->addOption({u"end"_s},
        u"Where the range ends, in the unit of the file (default: with the signal)."_s, u"X"_s);
    addXUnitOption(commandLine, u"min|s|m/z|Da"_s, u"where it does not, x is in min"_s);
    addColumnsOptions(commandLine, u"x,y"_s);
    commandLine->addPlotOption(
        u"Draws the signal, its apex and the area into FILE (.svg or .png)."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    if (commandLine.positional().size() != 1)
        return usageFailure(commandLine.withHint(u"give exactly one file"_s));
    const auto file = readSignal(commandLine, commandLine.positional().constFirst());
    if (file.hasError())
        return passedOn(file.error());
    const vex::PlotBase &signal = file.value().signal;
    Report report;
    report.name = file.value().name;
    report.pointCount = signal.points().size();
    auto unit = unitOf(commandLine, file.value());
    if (unit.hasError())
        return passedOn(std::move(unit).error());
    report.units = {unit.value(), intensityUnitOf({file.value()})};
    auto range = rangeFrom(commandLine, rangeOf(signal), report.units.x);
    if (range.hasError())
        return passedOn(std::move(range).error());
    report.range = range.value();
    report.isWhole = !commandLine.isSet(u"start"_s) && !commandLine.isSet(u"end"_s);
    report.apex = findApex(signal, report.range, report.units.x);
    report.area = areaOver(signal, report.range);
    report.sampledArea = areaOver(signal, sampledPart(signal, report.range));
    if (!report.apex.intensity)
        warn(u"there is no apex, the middle of the range is given: "_s + report.apex.problem);
    if (const QString path = commandLine.plotFile(); !path.isEmpty()) {
        const QString title = u"Apex and area of %1, %2 to %3 %4"_s.arg(
            QFileInfo(report.name).fileName(), shortNumber(report.range.start),
            shortNumber(report.range.end), report.units.x.symbol);
        results->addPlot(path,
            [title, axis = report.units.x.axisTitle(),
                panel = panelOf(signal, report.range, report.apex, report.area, report.units)](
                const QString &plot) { return drawCurves(plot, title, axis, {panel}); });
    }
    results->print(commandLine.isJson() ? jsonText(report.asJson()) : report.asText().toUtf8());
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kApexCommand{"apex"_L1,
    "where a chromatogram or a spectrum is highest, and the area under it"_L1, declare, run, false};

} // namespace vexcli

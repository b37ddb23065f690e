#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "input/SignalFile.h"
#include "output/Table.h"

#include <vex/ApexFinder.h>

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kInset = 0.01; // minutes at either end of the range where no apex is looked for
constexpr double kZero = 1e-12; // intensities of at most this magnitude are none

struct Apex
{
    double time = 0.0; // in the unit of the file
    std::optional<double> intensity; // none when the time is just the middle of the range
    QString problem; // why
};

/// The part of a signal that matters between @p range, with x in minutes.
vex::PlotBase inMinutes(const vex::PlotBase &signal, SignalRange range, const TimeUnit &unit)
{
    if (unit.perMinute == 1.0)
        return signal;
    vex::PlotBase result;
    for (const QPointF &point : signal.points()) {
        if (point.x() >= range.start && point.x() <= range.end)
            result.points().append({point.x() / unit.perMinute, point.y()});
    }
    return result;
}

Apex findApex(const vex::PlotBase &signal, SignalRange range, const TimeUnit &unit)
{
    const vex::PlotBase minutes = inMinutes(signal, range, unit);
    const double start = range.start / unit.perMinute;
    const double end = range.end / unit.perMinute;
    const double time = vex::ApexFinder::findApexTime(minutes, start, end);
    const double highest = minutes.getMaxTimeIntensity(start + kInset, end - kInset).y();
    const double intensity = minutes.getMaxTimeIntensity(time, time).y();
    const auto &points = signal.points();
    if (std::fabs(highest) > kZero && std::fabs(intensity) > kZero) {
        // The sample's own x: a way to minutes and back may change the last digit.
        const auto sample = std::find_if(points.begin(), points.end(), [&](const QPointF &point) {
            return point.x() / unit.perMinute == time && point.y() == intensity;
        });
        if (sample != points.end())
            return {sample->x(), intensity, {}};
    }
    const bool isNarrow = !(start + kInset <= end - kInset);
    const bool hasSample = std::any_of(points.begin(), points.end(), [&](const QPointF &point) {
        const double x = point.x() / unit.perMinute;
        return x > start + kInset && x < end - kInset;
    });
    return {time * unit.perMinute, {},
        isNarrow         ? u"the range is narrower than %1 min"_s.arg(2.0 * kInset)
            : !hasSample ? u"no sample lies in the range %1 min away from its ends"_s.arg(kInset)
                         : u"the greatest intensity in the range is 0"_s};
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

vex::Result<QByteArray> draw(const QString &path, const QString &file, const vex::PlotBase &signal,
    SignalRange range, const Apex &apex, double area, const TimeUnit &unit)
{
    PlottedPanel panel{u"intensity / counts"_s, {{u"signal"_s, signal.points()}}, {}};
    const auto shortNumber = [](double value) { return QString::number(value, 'g', 6); };
    if (const QList<QPointF> edge = edgeOf(signal, range); !edge.isEmpty())
        panel.marks.append(
            {u"area %1 counts \u00d7 %2"_s.arg(shortNumber(area), unit.symbol), edge});
    if (apex.intensity)
        panel.marks.append({u"apex %1 counts at %2 %3"_s.arg(
                                shortNumber(*apex.intensity), shortNumber(apex.time), unit.symbol),
            {{apex.time, *apex.intensity}}});
    return passedOn(drawCurves(path,
        u"Apex and area of %1, %2 to %3 %4"_s.arg(QFileInfo(file).fileName(),
            shortNumber(range.start), shortNumber(range.end), unit.symbol),
        u"time / %1"_s.arg(unit.symbol), {panel}));
}

vex::Result<SignalRange> rangeFrom(
    const CommandLine &commandLine, SignalRange whole, const TimeUnit &unit)
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
        qWarning("the range lies outside the signal, which is from %s to %s %s",
            qUtf8Printable(exactNumber(whole.start)), qUtf8Printable(exactNumber(whole.end)),
            qUtf8Printable(unit.symbol));
    return range;
}

} // namespace

vex::Error runApex(const QStringList &arguments)
{
    CommandLine commandLine(u"apex"_s,
        u"Finds where a chromatogram is highest within a range of time, and the area under it over "
        "that range. The file has two columns, time and intensity in counts, separated by commas, "
        "semicolons or tabs, with decimal points; lines that begin with # and one line of titles "
        "are passed over. The apex is a sample at least 0.01 min away from the ends of the range; "
        "where none has an intensity, the middle of the range is given and said to be just that. "
        "The area is that under the straight lines between the samples, down to 0, in counts times "
        "the unit of time. It takes in the whole range; the area between the first and the last "
        "sample in the range, which other programs give, stands beside it."_s);
    commandLine.addPositional(u"FILE"_s, u"The chromatogram (CSV)."_s, u"FILE"_s);
    commandLine.addOption({u"start"_s},
        u"Where the range starts, in the unit of the file (default: with the signal)."_s,
        u"TIME"_s);
    commandLine.addOption({u"end"_s},
        u"Where the range ends, in the unit of the file (default: with the signal)."_s, u"TIME"_s);
    addTimeUnitOption(&commandLine);
    commandLine.addOption({u"plot"_s},
        u"Draws the signal, its apex and the area into FILE (.svg or .png)."_s, u"FILE"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    if (commandLine.positional().size() != 1)
        return usageFailure(u"give exactly one file (see vex apex --help)"_s);
    const QString file = commandLine.positional().constFirst();
    const QString plotFile = commandLine.value(u"plot"_s);
    auto chosenUnit = timeUnitFrom(commandLine);
    if (chosenUnit.hasError())
        return passedOn(std::move(chosenUnit).error());
    const TimeUnit unit = chosenUnit.value();
    if (commandLine.isSet(u"plot"_s)) {
        if (auto error = checkPlotPath(plotFile); error.hasError())
            return passedOn(std::move(error));
    }
    if (auto error = requireOtherFiles({file}, {plotFile}); error.hasError())
        return passedOn(std::move(error));

    QList<std::shared_ptr<Output>> outputs; // opened before the work; standard output is the last
    for (const QString &path :
        plotFile.isEmpty() ? QStringList{QString()} : QStringList{plotFile, QString()}) {
        auto output = Output::open(path);
        if (output.hasError())
            return passedOn(std::move(output).error());
        outputs.append(output.value());
    }
    auto read = readSignal(file);
    if (read.hasError())
        return passedOn(std::move(read).error());
    const vex::PlotBase signal = std::move(read).value();
    auto chosenRange = rangeFrom(commandLine, rangeOf(signal), unit);
    if (chosenRange.hasError())
        return passedOn(std::move(chosenRange).error());
    const SignalRange range = chosenRange.value();

    const Apex apex = findApex(signal, range, unit);
    const double area = areaOver(signal, range);
    const double sampledArea = areaOver(signal, sampledPart(signal, range));
    if (!apex.intensity)
        qWarning(
            "there is no apex, the middle of the range is given: %s", qUtf8Printable(apex.problem));
    if (!plotFile.isEmpty()) {
        auto picture = draw(plotFile, file, signal, range, apex, area, unit);
        if (picture.hasError())
            return passedOn(std::move(picture).error());
        outputs.constFirst()->write(picture.value());
    }
    if (commandLine.isSet(u"json"_s)) {
        outputs.constLast()->write(QJsonDocument(
            QJsonObject{{u"file"_s, file}, {u"pointCount"_s, signal.points().size()},
                {u"xUnit"_s, unit.symbol}, {u"start"_s, range.start}, {u"end"_s, range.end},
                {u"apexTime"_s, apex.time}, {u"isMiddleOfRange"_s, !apex.intensity},
                {u"apexIntensity"_s, apex.intensity ? QJsonValue(*apex.intensity) : QJsonValue()},
                {u"area"_s, area},
                {u"areaBetweenSamples"_s,
                    sampledArea}}).toJson());
    } else {
        const bool isWhole = !commandLine.isSet(u"start"_s) && !commandLine.isSet(u"end"_s);
        outputs.constLast()->write((file + u'\n'
            + reportLine(u"range"_s,
                u"%1 to %2 %3%4"_s.arg(exactNumber(range.start), exactNumber(range.end),
                    unit.symbol, isWhole ? u", the whole signal"_s : QString()))
            + reportLine(u"apex"_s,
                exactNumber(apex.time) + u' ' + unit.symbol
                    + (apex.intensity ? QString() : u", just the middle: "_s + apex.problem))
            + reportLine(u"intensity there"_s,
                apex.intensity ? exactNumber(*apex.intensity) + " counts"_L1 : u"-"_s)
            + reportLine(u"area over the range"_s,
                u"%1 counts x %2"_s.arg(QString::number(area, 'g', 10), unit.symbol))
            + reportLine(u"between samples only"_s,
                u"%1 counts x %2"_s.arg(QString::number(sampledArea, 'g', 10), unit.symbol)))
                                       .toUtf8());
    }
    for (const auto &output : std::as_const(outputs)) {
        if (auto error = output->commit(); error.hasError())
            return passedOn(std::move(error));
    }
    return vex::ErrorCode::NoError;
}

} // namespace vexcli

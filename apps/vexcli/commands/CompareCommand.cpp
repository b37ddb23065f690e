#include "commands/Command.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "input/Columns.h"
#include "input/SignalFile.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/PlotUtilities.h>

#include <QFileInfo>
#include <QJsonObject>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using vex::PlotUtilities::SignalVerdict;

/// What is asked for and what is known of both signals.
struct Comparison
{
    double maxArea = 0.1;
    double minCorrelation = 0.9;
    XUnit unit;
    QList<SignalFile> files; // two
    SignalVerdict verdict;

    /// The error for an answer that the library does not give.
    vex::Error problem(const vex::Error &reason) const
    {
        return failure(u"%1 and %2 cannot be compared: %3"_s.arg(
            files[0].name, files[1].name, reason.message()));
    }
};

vex::Error readLimits(const CommandLine &commandLine, Comparison *comparison)
{
    if (commandLine.isSet(u"max-area"_s)) {
        auto number = nonNegativeNumber(commandLine.value(u"max-area"_s), u"--max-area"_s);
        if (number.hasError())
            return passedOn(std::move(number).error());
        comparison->maxArea = number.value();
    }
    if (commandLine.isSet(u"min-correlation"_s)) {
        const QString text = commandLine.value(u"min-correlation"_s);
        auto number = finiteNumber(text, u"--min-correlation"_s);
        if (number.hasError())
            return passedOn(std::move(number).error());
        if (number.value() < -1.0 || number.value() > 1.0)
            return usageFailure(u"--min-correlation '%1' is not between -1 and 1"_s.arg(text));
        comparison->minCorrelation = number.value();
    }
    return vex::ErrorCode::NoError;
}

vex::Error compare(Comparison *comparison)
{
    auto verdict = vex::PlotUtilities::compareSignals(comparison->files[0].signal,
        comparison->files[1].signal, comparison->maxArea, comparison->minCorrelation);
    if (verdict.hasError())
        return comparison->problem(verdict.error());
    comparison->verdict = verdict.value();
    if (std::isnan(comparison->verdict.relativeAreaOfError)
        || std::isnan(comparison->verdict.correlation))
        warn(
            u"the intensities are too large: a measure without a value counts as within its limit"_s);
    return vex::ErrorCode::NoError;
}

/// Name for machines and reason in words of what decided.
std::pair<QString, QString> wordsFor(SignalVerdict::Rule rule)
{
    switch (rule) {
    case SignalVerdict::OneWithoutIntensity:
        return {u"one without intensity"_s, u"only one of them carries intensity"_s};
    case SignalVerdict::BothWithoutIntensity:
        return {u"both without intensity"_s, u"neither carries intensity"_s};
    case SignalVerdict::AreaOfError:
        return {u"area of error"_s, u"the relative area of error is too large"_s};
    case SignalVerdict::Correlation:
        return {u"correlation"_s, u"the correlation is too small"_s};
    case SignalVerdict::WithinBoth:
        break;
    }
    return {u"within both"_s, u"area of error and correlation are within their limits"_s};
}

/// How a comparison is shown.
class Report
{
public:
    explicit Report(std::shared_ptr<const Comparison> comparison)
        : m_comparison(std::move(comparison))
    {
    }

    QByteArray asText() const
    {
        const SignalVerdict &verdict = m_comparison->verdict;
        const XUnit &unit = m_comparison->unit;
        QString text;
        for (qsizetype i = 0; i < m_comparison->files.size(); ++i) {
            const auto &[signal, name, title, yTitle] = m_comparison->files[i];
            const auto interval = vex::PlotUtilities::guessSamplingInterval(signal);
            text += headLine("%1: %2"_L1.arg(QChar(i == 0 ? u'A' : u'B'), name))
                + reportLine(u"points"_s, QString::number(signal.points().size()))
                + reportLine(u"range"_s, rangeText(rangeOf(signal)))
                + reportLine(u"sampling interval"_s,
                    interval.hasError() ? "- ("_L1 + interval.error().message() + u')'
                                        : unit.with(measure(interval.value())));
        }
        text += headLine(u"A against B"_s)
            + reportLine(u"merged domain"_s, u"%1 positions"_s.arg(verdict.domainSize))
            + reportLine(u"overlap"_s,
                hasOverlap() ? rangeText({verdict.overlapStart, verdict.overlapEnd}) : u"none"_s)
            + reportLine(u"area of error"_s,
                u"%1, relative (%2 at most)"_s.arg(
                    measure(verdict.relativeAreaOfError), exactNumber(m_comparison->maxArea)))
            + reportLine(u"correlation"_s,
                u"%1 (%2 at least)"_s.arg(
                    measure(verdict.correlation), exactNumber(m_comparison->minCorrelation)))
            + reportLine(u"verdict"_s,
                (verdict.isSame ? u"same: "_s : u"not the same: "_s)
                    + wordsFor(verdict.rule).second);
        return text.toUtf8();
    }

    QByteArray asJson() const
    {
        const SignalVerdict &verdict = m_comparison->verdict;
        const QString &unit = m_comparison->unit.symbol;
        QJsonObject object{{u"xUnit"_s, unit.isEmpty() ? QJsonValue() : QJsonValue(unit)},
            {u"intensityUnit"_s, isCounted() ? QJsonValue(u"counts"_s) : QJsonValue()},
            {u"mergedDomain"_s, verdict.domainSize},
            {u"overlap"_s,
                hasOverlap() ? QJsonValue(
                    QJsonObject{{u"start"_s, verdict.overlapStart}, {u"end"_s, verdict.overlapEnd}})
                             : QJsonValue()},
            {u"relativeAreaOfError"_s, verdict.relativeAreaOfError},
            {u"correlation"_s, verdict.correlation}, {u"maxArea"_s, m_comparison->maxArea},
            {u"minCorrelation"_s, m_comparison->minCorrelation}, {u"isSame"_s, verdict.isSame},
            {u"rule"_s, wordsFor(verdict.rule).first}};
        for (qsizetype i = 0; i < m_comparison->files.size(); ++i) {
            const auto &[signal, name, title, yTitle] = m_comparison->files[i];
            const SignalRange range = rangeOf(signal);
            const auto interval = vex::PlotUtilities::guessSamplingInterval(signal);
            object.insert(i == 0 ? u"a"_s : u"b"_s,
                QJsonObject{{u"file"_s, name}, {u"pointCount"_s, signal.points().size()},
                    {u"start"_s, range.start}, {u"end"_s, range.end},
                    {u"samplingInterval"_s,
                        interval.hasError() ? QJsonValue() : QJsonValue(interval.value())}});
        }
        return jsonText(object);
    }

    /// Needs the positions at once, 8 bytes each, and nothing else.
    vex::Error writeCsv(Output *output) const
    {
        const auto domain = vex::PlotUtilities::mergeDomains(signal(0), signal(1), 0.0);
        if (domain.hasError())
            return m_comparison->problem(domain.error());
        output->write("x,a,b,difference\n");
        const QList<double> &positions = domain.value();
        Progress progress(u"writing"_s, positions.size());
        for (qsizetype i = 0; i < positions.size() && !isInterrupted(); ++i) {
            const double x = positions[i];
            const double a = signal(0).evaluate(x, 1, 0);
            const double b = signal(1).evaluate(x, 1, 0);
            output->write((exactNumber(x) + u',' + exactNumber(a) + u',' + exactNumber(b) + u','
                + exactNumber(a - b) + u'\n')
                              .toLatin1());
            progress.update(i);
        }
        return vex::ErrorCode::NoError;
    }

    vex::Result<QByteArray> plot(const QString &path) const
    {
        const auto difference = vex::PlotUtilities::subtract(signal(0), signal(1), 0.0);
        if (difference.hasError())
            return m_comparison->problem(difference.error());
        const auto curve = [this](QChar letter, qsizetype i) {
            const SignalFile &file = m_comparison->files[i];
            return PlottedCurve{
                u"%1: %2"_s.arg(letter, QFileInfo(file.name).fileName()), file.signal.points()};
        };
        const auto &verdict = m_comparison->verdict;
        return passedOn(drawCurves(path,
            u"%1: area of error %2, correlation %3"_s.arg(
                verdict.isSame ? u"The same"_s : u"Not the same"_s,
                QString::number(verdict.relativeAreaOfError, 'g', 3),
                QString::number(verdict.correlation, 'g', 3)),
            m_comparison->unit.axisTitle(),
            {{isCounted() ? u"intensity / counts"_s : u"relative intensity"_s,
                 {curve(u'A', 0), curve(u'B', 1)}, {}},
                {isCounted() ? u"A \u2212 B / counts"_s : u"A \u2212 B"_s,
                    {{QString(), difference.value().points()}}, {}}}));
    }

private:
    bool isCounted() const { return !intensityUnitOf(m_comparison->files).isEmpty(); }

    /// As many digits as a reader can use.
    static QString measure(double value) { return QString::number(value, 'g', 6); }

    QString rangeText(SignalRange range) const
    {
        return m_comparison->unit.with(
            exactNumber(range.start) + " to "_L1 + exactNumber(range.end));
    }

    const vex::PlotBase &signal(qsizetype i) const { return m_comparison->files[i].signal; }

    bool hasOverlap() const
    {
        return m_comparison->verdict.overlapStart <= m_comparison->verdict.overlapEnd;
    }

    std::shared_ptr<const Comparison> m_comparison;
};

void declare(CommandLine *commandLine)
{
    const Comparison usual;
    commandLine->describe(u"Tells whether two signals are alike, and which measure decided."_s,
        {u"vex compare a.csv b.csv"_s, u"vex compare a.csv b.csv --plot both.svg -o both.csv"_s},
        u"A file has two columns, x and intensity in counts, separated by commas, semicolons or "
        "tabs. Lines that begin with # and titles are passed over. Both files have x in the same "
        "unit, ascending. Between samples a signal is the straight line, outside them it is 0.\n"
        "The area of error is the area under the magnitude of the difference. The relative one is "
        "divided by the smaller of the areas of both signals, or by the larger one when the other "
        "is 0. Signals are the same when both measures are within their limits, or when neither "
        "carries intensity. The exit code is 0 either way."_s);
    commandLine->addInputPositional(u"A"_s, u"The first signal (CSV)."_s, u"A"_s);
    commandLine->addInputPositional(u"B"_s, u"The second signal (CSV)."_s, u"B"_s);
    commandLine->addOption({u"max-area"_s},
        u"Largest relative area of error that counts as the same, 0 or more (default %1)."_s.arg(
            usual.maxArea),
        u"R"_s);
    commandLine->addOption({u"min-correlation"_s},
        u"Smallest correlation that counts as the same, -1 to 1 (default %1)."_s.arg(
            usual.minCorrelation),
        u"C"_s);
    addXUnitOption(commandLine, u"min|s|m/z|Da"_s, u"where it does not, x has no unit"_s);
    addColumnsOptions(commandLine, u"x,y, in both files"_s);
    commandLine->addOutputOption(
        u"Writes both signals and their difference at every x of both to FILE as CSV: x, a, b, "
        "difference. --json does not change it."_s);
    commandLine->addPlotOption(
        u"Draws both signals, and below them their difference, into FILE (.svg or .png)."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    const QStringList files = commandLine.positional();
    if (files.size() != 2)
        return usageFailure(commandLine.withHint(u"give exactly two files"_s));
    const auto comparison = std::make_shared<Comparison>();
    if (auto error = readLimits(commandLine, comparison.get()); error.hasError())
        return passedOn(std::move(error));
    for (const QString &path : files) {
        auto file = readSignal(commandLine, path);
        if (file.hasError())
            return passedOn(std::move(file).error());
        comparison->files.append(std::move(file).value());
    }
    auto unit = xUnitOf(commandLine, comparison->files);
    if (unit.hasError())
        return passedOn(std::move(unit).error());
    comparison->unit = unit.value();
    const QString plotFile = commandLine.plotFile();
    if (auto error = compare(comparison.get()); error.hasError())
        return passedOn(std::move(error));
    const Report report(comparison);
    if (results->file()) {
        if (auto error = report.writeCsv(results->file()); error.hasError())
            return passedOn(std::move(error));
    }
    if (!plotFile.isEmpty())
        results->addPlot(plotFile, [report](const QString &path) { return report.plot(path); });
    results->print(commandLine.isJson() ? report.asJson() : report.asText());
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kCompareCommand{
    "compare"_L1, "whether two signals are alike, and by which measure"_L1, declare, run, false};

} // namespace vexcli

#include "commands/Commands.h"

#include "Background.h"
#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "input/SignalFile.h"
#include "output/Table.h"

#include <vex/PlotUtilities.h>

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <memory>
#include <new>
#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using vex::PlotUtilities::SignalVerdict;

struct Request
{
    QStringList files; // two
    double maxArea = 0.1;
    double minCorrelation = 0.9;
    TimeUnit unit;
    QString csvFile;
    QString plotFile;
    bool isJson = false;
};

/// What is known of both signals.
struct Comparison
{
    QList<vex::PlotBase> pair; // the signals of both files
    SignalVerdict verdict;
    vex::PlotBase difference; // only where it is asked for
    QString problem; // why there is no comparison
};

vex::Result<Request> requestFrom(const CommandLine &commandLine)
{
    Request request;
    request.files = commandLine.positional();
    if (request.files.size() != 2)
        return usageFailure(u"give exactly two files (see vex compare --help)"_s);
    if (commandLine.isSet(u"max-area"_s)) {
        auto number = nonNegativeNumber(commandLine.value(u"max-area"_s), u"max-area"_s);
        if (number.hasError())
            return passedOn(std::move(number).error());
        request.maxArea = number.value();
    }
    if (commandLine.isSet(u"min-correlation"_s)) {
        const QString text = commandLine.value(u"min-correlation"_s);
        auto number = finiteNumber(text, u"min-correlation"_s);
        if (number.hasError())
            return passedOn(std::move(number).error());
        if (number.value() < -1.0 || number.value() > 1.0)
            return usageFailure(u"min-correlation '%1' is not between -1 and 1"_s.arg(text));
        request.minCorrelation = number.value();
    }
    auto unit = timeUnitFrom(commandLine);
    if (unit.hasError())
        return passedOn(std::move(unit).error());
    request.unit = unit.value();
    request.csvFile = commandLine.value(u"output"_s);
    request.plotFile = commandLine.value(u"plot"_s);
    request.isJson = commandLine.isSet(u"json"_s);
    if (commandLine.isSet(u"output"_s) && request.csvFile.isEmpty())
        return usageFailure(u"--output needs the name of a file"_s);
    if (commandLine.isSet(u"plot"_s)) {
        if (auto error = checkPlotPath(request.plotFile); error.hasError())
            return passedOn(std::move(error));
    }
    if (auto error = requireOtherFiles(request.files, {request.csvFile, request.plotFile});
        error.hasError())
        return passedOn(std::move(error));
    return request;
}

vex::Error interrupted()
{
    return failure(u"interrupted, no file was written"_s);
}

/// Compares in a thread so that Ctrl-C is answered meanwhile.
vex::Result<std::shared_ptr<const Comparison>> compare(
    const Request &request, const QList<vex::PlotBase> &pair)
{
    const auto work = std::make_shared<Comparison>();
    work->pair = pair;
    const bool needsDifference = !request.csvFile.isEmpty() || !request.plotFile.isEmpty();
    const bool isDone = runInBackground([work, request, needsDifference] {
        try {
            const vex::PlotBase &a = work->pair[0];
            const vex::PlotBase &b = work->pair[1];
            auto verdict =
                vex::PlotUtilities::compareSignals(a, b, request.maxArea, request.minCorrelation);
            if (verdict.hasError()) {
                work->problem = verdict.error().message();
                return;
            }
            work->verdict = verdict.value();
            if (!needsDifference)
                return;
            auto difference = vex::PlotUtilities::subtract(a, b, 0.0);
            if (difference.hasError())
                work->problem = difference.error().message();
            else
                work->difference = difference.value();
        } catch (const std::bad_alloc &) {
            work->problem = u"there is not enough memory"_s;
        }
    });
    if (!isDone)
        return interrupted();
    if (!work->problem.isEmpty())
        return failure(u"%1 and %2 cannot be compared: %3"_s.arg(
            request.files[0], request.files[1], work->problem));
    return std::shared_ptr<const Comparison>(work);
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
    Report(const Request &request, const Comparison &comparison)
        : m_request(request)
        , m_comparison(comparison)
    {
    }

    QByteArray asText() const
    {
        const SignalVerdict &verdict = m_comparison.verdict;
        const QString unit = ' '_L1 + m_request.unit.symbol;
        QString text;
        for (qsizetype i = 0; i < m_comparison.pair.size(); ++i) {
            const vex::PlotBase &signal = m_comparison.pair[i];
            const SignalRange range = rangeOf(signal);
            const auto interval = vex::PlotUtilities::guessSamplingInterval(signal);
            text += "%1: %2\n"_L1.arg(QChar(i == 0 ? u'A' : u'B'), m_request.files[i])
                + reportLine(u"points"_s, QString::number(signal.points().size()))
                + reportLine(u"range"_s,
                    exactNumber(range.start) + " to "_L1 + exactNumber(range.end) + unit)
                + reportLine(u"sampling interval"_s,
                    interval.hasError() ? "- ("_L1 + interval.error().message() + u')'
                                        : measure(interval.value()) + unit);
        }
        text += u"A against B\n"_s
            + reportLine(u"merged domain"_s, u"%1 positions"_s.arg(verdict.domainSize))
            + reportLine(u"overlap"_s,
                hasOverlap() ? exactNumber(verdict.overlapStart) + " to "_L1
                        + exactNumber(verdict.overlapEnd) + unit
                             : u"none"_s)
            + reportLine(u"area of error"_s,
                u"%1, relative (%2 at most)"_s.arg(
                    measure(verdict.relativeAreaOfError), exactNumber(m_request.maxArea)))
            + reportLine(u"correlation"_s,
                u"%1 (%2 at least)"_s.arg(
                    measure(verdict.correlation), exactNumber(m_request.minCorrelation)))
            + reportLine(u"verdict"_s,
                (verdict.isSame ? u"same: "_s : u"not the same: "_s)
                    + wordsFor(verdict.rule).second);
        return text.toUtf8();
    }

    QByteArray asJson() const
    {
        const SignalVerdict &verdict = m_comparison.verdict;
        QJsonObject object{{u"xUnit"_s, m_request.unit.symbol},
            {u"mergedDomain"_s, verdict.domainSize},
            {u"overlap"_s,
                hasOverlap() ? QJsonValue(
                    QJsonObject{{u"start"_s, verdict.overlapStart}, {u"end"_s, verdict.overlapEnd}})
                             : QJsonValue()},
            {u"relativeAreaOfError"_s, verdict.relativeAreaOfError},
            {u"correlation"_s, verdict.correlation}, {u"maxArea"_s, m_request.maxArea},
            {u"minCorrelation"_s, m_request.minCorrelation}, {u"isSame"_s, verdict.isSame},
            {u"rule"_s, wordsFor(verdict.rule).first}};
        for (qsizetype i = 0; i < m_comparison.pair.size(); ++i) {
            const vex::PlotBase &signal = m_comparison.pair[i];
            const SignalRange range = rangeOf(signal);
            const auto interval = vex::PlotUtilities::guessSamplingInterval(signal);
            object.insert(i == 0 ? u"a"_s : u"b"_s,
                QJsonObject{{u"file"_s, m_request.files[i]},
                    {u"pointCount"_s, signal.points().size()}, {u"start"_s, range.start},
                    {u"end"_s, range.end},
                    {u"samplingInterval"_s,
                        interval.hasError() ? QJsonValue() : QJsonValue(interval.value())}});
        }
        return QJsonDocument(object).toJson();
    }

    vex::Error writeCsv(Output *output) const
    {
        output->write("x,a,b,difference\n");
        const QList<QPointF> &points = m_comparison.difference.points();
        Progress progress(u"writing"_s, points.size());
        for (qsizetype i = 0; i < points.size(); ++i) {
            const double x = points[i].x();
            output->write((exactNumber(x) + u',' + exactNumber(valueAt(0, x)) + u','
                + exactNumber(valueAt(1, x)) + u',' + exactNumber(points[i].y()) + u'\n')
                              .toLatin1());
            if (isInterrupted())
                return interrupted();
            progress.update(i);
        }
        return vex::ErrorCode::NoError;
    }

    vex::Result<QByteArray> plot() const
    {
        const auto curve = [this](QChar letter, qsizetype i) {
            return PlottedCurve{u"%1: %2"_s.arg(letter, QFileInfo(m_request.files[i]).fileName()),
                m_comparison.pair[i].points()};
        };
        const auto &verdict = m_comparison.verdict;
        return passedOn(drawCurves(m_request.plotFile,
            u"%1: area of error %2, correlation %3"_s.arg(
                verdict.isSame ? u"The same"_s : u"Not the same"_s,
                QString::number(verdict.relativeAreaOfError, 'g', 3),
                QString::number(verdict.correlation, 'g', 3)),
            u"time / %1"_s.arg(m_request.unit.symbol),
            {{u"intensity / counts"_s, {curve(u'A', 0), curve(u'B', 1)}, {}},
                {u"A \u2212 B / counts"_s, {{QString(), m_comparison.difference.points()}}, {}}}));
    }

private:
    /// As many digits as a reader can use.
    static QString measure(double value) { return QString::number(value, 'g', 6); }

    double valueAt(qsizetype i, double x) const { return m_comparison.pair[i].evaluate(x, 1, 0); }

    bool hasOverlap() const
    {
        return m_comparison.verdict.overlapStart <= m_comparison.verdict.overlapEnd;
    }

    const Request &m_request;
    const Comparison &m_comparison;
};

vex::Error runRequest(const Request &request)
{
    QList<std::shared_ptr<Output>> outputs; // opened before the work; standard output is the last
    for (const QString &path : {request.csvFile, request.plotFile, QString()}) {
        if (path.isEmpty() && outputs.size() < 2) {
            outputs.append(nullptr);
            continue;
        }
        auto output = Output::open(path);
        if (output.hasError())
            return passedOn(std::move(output).error());
        outputs.append(output.value());
    }
    QList<vex::PlotBase> pair;
    for (const QString &file : request.files) {
        auto read = readSignal(file);
        if (read.hasError())
            return passedOn(std::move(read).error());
        pair.append(std::move(read).value());
    }
    auto compared = compare(request, pair);
    if (compared.hasError())
        return passedOn(std::move(compared).error());
    const SignalVerdict &verdict = compared.value()->verdict;
    if (std::isnan(verdict.relativeAreaOfError) || std::isnan(verdict.correlation))
        qWarning(
            "the intensities are too large: a measure without a value counts as within its limit");
    const Report report(request, *compared.value());
    if (outputs[0]) {
        if (auto error = report.writeCsv(outputs[0].get()); error.hasError())
            return passedOn(std::move(error));
    }
    if (outputs[1]) {
        auto picture = report.plot();
        if (picture.hasError())
            return passedOn(std::move(picture).error());
        outputs[1]->write(picture.value());
    }
    outputs[2]->write(request.isJson ? report.asJson() : report.asText());
    if (isInterrupted())
        return interrupted();
    for (const auto &output : std::as_const(outputs)) {
        if (!output)
            continue;
        if (auto error = output->commit(); error.hasError())
            return passedOn(std::move(error));
    }
    return vex::ErrorCode::NoError;
}

} // namespace

vex::Error runCompare(const QStringList &arguments)
{
    CommandLine commandLine(u"compare"_s,
        u"Tells whether two signals are alike, and which measure decided. A file has two columns, "
        u"x "
        "and intensity in counts, separated by commas, semicolons or tabs, with decimal points; "
        "lines that begin with # and one line of titles are passed over. Both have their x in the "
        "same unit, ascending; between samples a signal is the straight line, outside them 0. The "
        "relative area of error is the area under the magnitude of the difference, divided by the "
        "smaller of the areas of both, or by the larger one when the other is 0. Signals are the "
        "same when neither carries intensity, or both do and both measures are within their limits. The exit code is 0 either way."_s);
    commandLine.addPositional(u"A"_s, u"The first signal (CSV)."_s, u"A"_s);
    commandLine.addPositional(u"B"_s, u"The second signal (CSV)."_s, u"B"_s);
    const Request usual;
    commandLine.addOption({u"max-area"_s},
        u"Largest relative area of error that counts as the same, 0 or more (default %1)."_s.arg(
            usual.maxArea),
        u"R"_s);
    commandLine.addOption({u"min-correlation"_s},
        u"Smallest correlation that counts as the same, -1 to 1 (default %1)."_s.arg(
            usual.minCorrelation),
        u"C"_s);
    addTimeUnitOption(&commandLine);
    commandLine.addOption({u"o"_s, u"output"_s},
        u"Writes both signals on their merged x to FILE as CSV, and their difference: x, a, b, "
        "difference. --json does not change it."_s,
        u"FILE"_s);
    commandLine.addOption({u"plot"_s},
        u"Draws both signals, and below them their difference, into FILE (.svg or .png)."_s,
        u"FILE"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    auto request = requestFrom(commandLine);
    if (request.hasError())
        return passedOn(std::move(request).error());
    return passedOn(runRequest(request.value()));
}

} // namespace vexcli

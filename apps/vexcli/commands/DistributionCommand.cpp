#include "commands/Commands.h"

#include "Background.h"
#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Output.h"
#include "commands/PatternModel.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "output/Table.h"

#include <vex/AveragineIsotopeDistribution.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QScopeGuard>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Distribution = vex::AveragineIsotopeDistribution;
using Parameters = Distribution::Parameters;

constexpr qsizetype kMostPlotted = 16; // lines in one plot that a reader can still tell apart
constexpr double kLowestShown = 5e-6; // share; lower ones would read 0.000 % in a table
constexpr auto kStandardOutput = "-"_L1;

/// A parameter of the table and the option that sets it.
struct Setting
{
    QLatin1StringView option;
    QLatin1StringView valueName;
    QLatin1StringView jsonKey;
    double Parameters::*member;
    const char *meaning;
};

constexpr Setting kSettings[] = {
    {"count"_L1, "N"_L1, "count"_L1, &Parameters::avgDistCount,
        "Number of patterns, the first is at 0 Da"},
    {"spacing"_L1, "D"_L1, "massSpacing"_L1, &Parameters::massSpacing, "Da between two patterns"},
    {"inter-trim"_L1, "T"_L1, "interTrim"_L1, &Parameters::interTrim,
        "Share of the signal, 0 to below 1; a growing pattern loses the peaks at its end that are "
        "lower, after every atom"},
    {"final-trim"_L1, "T"_L1, "finalTrim"_L1, &Parameters::finalTrim,
        "Share of the signal, 0 to below 1; a stored pattern lacks the peaks at its end that are "
        "lower"},
};

struct Request
{
    Parameters parameters;
    QList<double> masses; // daltons
    std::optional<int> peak;
    QString csvFile; // empty for none, kStandardOutput for standard output
    QString plotFile;
    bool isJson = false;
};

vex::Result<Parameters> parametersFrom(const CommandLine &commandLine)
{
    Parameters parameters =
        commandLine.isSet(u"accurate"_s) ? Parameters::makeDefaultForAccurate() : Parameters();
    for (const Setting &setting : kSettings) {
        if (!commandLine.isSet(setting.option))
            continue;
        const QString text = commandLine.value(setting.option);
        const bool isCount = setting.member == &Parameters::avgDistCount;
        auto number = isCount ? wholeNumber(text, setting.option, 1.0)
                              : nonNegativeNumber(text, setting.option);
        if (number.hasError())
            return passedOn(std::move(number).error());
        if (setting.member == &Parameters::massSpacing && !(number.value() > 0.0))
            return usageFailure(u"%1 '%2' is not above 0"_s.arg(setting.option, text));
        const bool isTrim = !isCount && setting.member != &Parameters::massSpacing;
        if (isTrim && number.value() >= 1.0)
            return usageFailure(
                u"%1 '%2' cuts every pattern away: it must be below 1"_s.arg(setting.option, text));
        parameters.*setting.member = number.value();
    }
    return parameters;
}

vex::Result<Request> requestFrom(const CommandLine &commandLine)
{
    Request request;
    auto parameters = parametersFrom(commandLine);
    if (parameters.hasError())
        return passedOn(std::move(parameters).error());
    request.parameters = parameters.value();
    const QStringList masses = commandLine.values(u"mass"_s);
    if (masses.isEmpty() && !commandLine.positional().isEmpty())
        return usageFailure(
            u"unexpected argument '%1'"_s.arg(commandLine.positional().constFirst()));
    for (const QString &text : masses + commandLine.positional()) {
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return passedOn(std::move(mass).error());
        request.masses.append(mass.value());
    }
    if (commandLine.isSet(u"peak"_s)) {
        if (masses.isEmpty())
            return usageFailure(u"--peak goes with --mass"_s);
        auto peak = wholeNumber(
            commandLine.value(u"peak"_s), u"peak"_s, 0.0, std::numeric_limits<int>::max());
        if (peak.hasError())
            return passedOn(std::move(peak).error());
        request.peak = static_cast<int>(peak.value());
    }
    request.csvFile = commandLine.value(u"output"_s);
    request.plotFile = commandLine.value(u"plot"_s);
    request.isJson = commandLine.isSet(u"json"_s);
    if (commandLine.isSet(u"output"_s) && request.csvFile.isEmpty())
        return usageFailure(u"--output needs the name of a file"_s);
    if (request.csvFile == kStandardOutput && (request.isJson || !masses.isEmpty()))
        return usageFailure(
            u"standard output cannot hold both: give -o a file, or leave --mass and --json out"_s);
    if (commandLine.isSet(u"plot"_s)) {
        if (auto error = checkPlotPath(request.plotFile); error.hasError())
            return passedOn(std::move(error));
        if (request.masses.size() > kMostPlotted)
            return usageFailure(u"%1 patterns are too many for one plot, %2 are the most"_s.arg(
                QString::number(request.masses.size()), QString::number(kMostPlotted)));
    }
    if (auto error = requireOtherFiles({}, {request.csvFile, request.plotFile}); error.hasError())
        return passedOn(std::move(error));
    return request;
}

vex::Error interrupted()
{
    return failure(u"interrupted, no file was written"_s);
}

/// The table for @p parameters, computed in a thread so that Ctrl-C is answered meanwhile.
vex::Result<std::shared_ptr<const Distribution>> compute(const Parameters &parameters)
{
    struct Work
    {
        std::shared_ptr<const Distribution> table;
        QString problem;
    };
    // The library warns of patterns without a peak, up to once an atom; warnOfEmptyPatterns() says
    // it once.
    QLoggingCategory *const category = QLoggingCategory::defaultCategory();
    category->setEnabled(QtWarningMsg, false);
    const auto loud = qScopeGuard([category] { category->setEnabled(QtWarningMsg, true); });
    const auto work = std::make_shared<Work>();
    const bool isDone = runInBackground([work, parameters] {
        try {
            work->table = std::make_shared<const Distribution>(parameters);
        } catch (const std::length_error &error) {
            work->problem = QString::fromUtf8(error.what());
        } catch (const std::bad_alloc &) {
            work->problem = u"there is not enough memory"_s;
        }
    });
    if (!isDone)
        return interrupted();
    if (!work->table)
        return failure(u"the table cannot be computed: %1"_s.arg(work->problem));
    return work->table;
}

/// Says when trimming left nothing of some patterns.
void warnOfEmptyPatterns(const Distribution &table)
{
    const Grid grid(table);
    int empty = 0;
    double first = 0.0;
    for (int point = 0; point <= grid.lastPoint(); ++point) {
        if (!table.isotopeIntensityFractions(grid.massOf(point)).empty())
            continue;
        if (empty == 0)
            first = grid.massOf(point);
        ++empty;
    }
    if (empty > 0)
        qWarning("%d of %d patterns are cut to nothing, the first at %s Da: choose a lower "
                 "--inter-trim or --final-trim",
            empty, table.patternCount(), qUtf8Printable(massNumber(first)));
}

/// How a table and what is looked up in it are shown.
class Report
{
public:
    explicit Report(const Distribution &table)
        : m_table(table)
        , m_grid(table)
    {
    }

    QByteArray summary(bool isJson) const
    {
        const Parameters &parameters = m_table.parameters();
        QJsonArray json;
        Table covers({u"mass/Da"_s, u"peaks"_s, u"highest peak/Da"_s, u"signal/%"_s});
        int previous = -1;
        for (const double position : {0.01, 0.1, 0.25, 0.5, 0.75, 1.0}) {
            const int point = qRound(position * m_grid.lastPoint());
            if (point == std::exchange(previous, point))
                continue;
            const Prediction pattern = nearestPattern(m_table, m_grid.massOf(point));
            covers.addRow({massNumber(*pattern.gridMass), QString::number(pattern.shares.size()),
                pattern.best < 0 ? u"none"_s : QString::number(pattern.best),
                fixedNumber(100.0 * pattern.coverage, 2)});
            json.append(QJsonObject{{u"gridMass"_s, *pattern.gridMass},
                {u"peakCount"_s, pattern.shares.size()}, {u"bestIndex"_s, pattern.best},
                {u"coverage"_s, pattern.coverage}});
        }
        int longest = 0; // point of the longest pattern, the first of equals
        const auto peaksOf = [this](int point) {
            return qsizetype(m_table.isotopeIntensityFractions(m_grid.massOf(point)).size());
        };
        for (int point = 1; point <= m_grid.lastPoint(); ++point)
            longest = peaksOf(point) > peaksOf(longest) ? point : longest;
        if (isJson) {
            QJsonObject object{{u"patternCount"_s, m_table.patternCount()},
                {u"largestMass"_s, m_grid.lastMass()}, {u"longestPattern"_s, peaksOf(longest)},
                {u"patterns"_s, json}};
            for (const Setting &setting : kSettings)
                object.insert(setting.jsonKey, parameters.*setting.member);
            return QJsonDocument(object).toJson();
        }
        const QString text = u"precomputed isotope patterns of averagine\n"_s
            + reportLine(u"patterns"_s,
                u"%1, every %2 Da from 0 to %3 Da"_s.arg(QString::number(m_table.patternCount()),
                    massNumber(parameters.massSpacing), massNumber(m_grid.lastMass())))
            + reportLine(u"growing patterns"_s, trimText(parameters.interTrim))
            + reportLine(u"stored patterns"_s, trimText(parameters.finalTrim))
            + reportLine(u"longest pattern"_s,
                u"%1, at %2 Da"_s.arg(
                    peakCount(peaksOf(longest)), massNumber(m_grid.massOf(longest))));
        return text.toUtf8() + covers.toText(2);
    }

    QByteArray nearest(const QList<double> &masses, bool isJson) const
    {
        QJsonArray json;
        QByteArray text;
        for (const double mass : masses) {
            if (m_grid.isBeyond(mass))
                qWarning("%s Da is beyond the last grid point, %s Da, whose pattern is given",
                    qUtf8Printable(massNumber(mass)),
                    qUtf8Printable(massNumber(m_grid.lastMass())));
            const Prediction pattern = nearestPattern(m_table, mass);
            text +=
                (massNumber(mass) + " Da\n"_L1
                    + reportLine(u"nearest grid point"_s, massNumber(*pattern.gridMass) + " Da"_L1)
                    + signalLines(pattern))
                    .toUtf8()
                + peakTable(pattern.shares, pattern.best, kLowestShown) + '\n';
            QJsonArray shares;
            for (const double share : pattern.shares)
                shares.append(share);
            json.append(QJsonObject{{u"averageMass"_s, mass}, {u"gridMass"_s, *pattern.gridMass},
                {u"peakCount"_s, pattern.shares.size()}, {u"bestIndex"_s, pattern.best},
                {u"coverage"_s, pattern.coverage}, {u"intensities"_s, shares}});
        }
        return isJson ? QJsonDocument(json).toJson() : text;
    }

    QByteArray interpolated(const QList<double> &masses, int peak, bool isJson) const
    {
        QJsonArray json;
        Table shares({u"mass/Da"_s, u"shift/Da"_s, u"share/%, interpolated"_s});
        for (const double mass : masses) {
            if (mass >= m_grid.lastMass())
                qWarning("%s Da: shares are interpolated from 0 to below %s Da only, 0 is given",
                    qUtf8Printable(massNumber(mass)),
                    qUtf8Printable(massNumber(m_grid.lastMass())));
            const double share = m_table.isotopeFractionInterpolated(mass, peak);
            shares.addRow({massNumber(mass), QString::number(peak), fixedNumber(100.0 * share, 6)});
            json.append(QJsonObject{{u"averageMass"_s, mass}, {u"peak"_s, peak},
                {u"share"_s, share}, {u"interpolated"_s, true}});
        }
        return isJson ? QJsonDocument(json).toJson() : shares.toText();
    }

    /// The patterns at @p masses, or at some over the whole grid.
    vex::Result<QByteArray> plot(const QString &path, QList<double> masses) const
    {
        if (masses.isEmpty()) {
            constexpr int kSteps = 10;
            for (int step = 1; step <= kSteps; ++step)
                masses.append(rounded(m_grid.lastMass() * step / kSteps));
        }
        QList<PlottedPattern> patterns;
        for (const double mass : std::as_const(masses)) {
            const Prediction pattern = nearestPattern(m_table, mass);
            const QString label = massNumber(*pattern.gridMass)
                + (pattern.shares.isEmpty() ? " Da, nothing left"_L1 : " Da"_L1);
            if (patterns.isEmpty() || patterns.constLast().label != label)
                patterns.append({label, pattern.shares});
        }
        return passedOn(drawPatterns(path,
            u"Precomputed isotope patterns, averagine, every %1 Da"_s.arg(
                massNumber(m_table.parameters().massSpacing)),
            patterns, PlotStyle::Lines));
    }

private:
    static QString trimText(double trim)
    {
        return u"end with the last share of at least %1 % of the signal"_s.arg(
            QString::number(100.0 * trim, 'g', 6));
    }

    /// Two digits, which make good steps.
    static double rounded(double mass) { return QString::number(mass, 'g', 2).toDouble(); }

    const Distribution &m_table;
    Grid m_grid;
};

/// Writes the bytes that saveToFile() writes.
vex::Error writeCsv(const Distribution &table, Output *output)
{
    const auto writeRow = [output](const QList<QString> &fields) {
        output->write(fields.join(u',').toUtf8() + "\r\n");
    };
    writeRow(table.csvHeader());
    Progress progress(u"writing"_s, table.patternCount());
    for (int pattern = 0; pattern < table.patternCount(); ++pattern) {
        writeRow(table.csvRow(pattern));
        if (isInterrupted())
            return interrupted();
        progress.update(pattern);
    }
    return vex::ErrorCode::NoError;
}

vex::Error runRequest(const Request &request)
{
    QList<std::shared_ptr<Output>> outputs;
    const auto open = [&outputs](const QString &path) -> vex::Error {
        auto output = Output::open(path);
        if (output.hasError())
            return passedOn(std::move(output).error());
        outputs.append(output.value());
        return vex::ErrorCode::NoError;
    };
    // All of them before the work begins; standard output is committed last.
    std::shared_ptr<Output> csv;
    std::shared_ptr<Output> picture;
    if (!request.csvFile.isEmpty()) {
        if (auto error = open(request.csvFile == kStandardOutput ? QString() : request.csvFile);
            error.hasError())
            return passedOn(std::move(error));
        csv = outputs.constLast();
    }
    if (!request.plotFile.isEmpty()) {
        if (auto error = open(request.plotFile); error.hasError())
            return passedOn(std::move(error));
        picture = outputs.constLast();
    }
    auto computed = compute(request.parameters);
    if (computed.hasError())
        return passedOn(std::move(computed).error());
    const Distribution &table = *computed.value();
    warnOfEmptyPatterns(table);
    const Report report(table);
    if (csv) {
        if (auto error = writeCsv(table, csv.get()); error.hasError())
            return passedOn(std::move(error));
    }
    if (picture) {
        auto drawn = report.plot(request.plotFile, request.masses);
        if (drawn.hasError())
            return passedOn(std::move(drawn).error());
        picture->write(drawn.value());
    }
    const bool isSummary = request.masses.isEmpty();
    if (!isSummary || request.isJson || outputs.isEmpty()) {
        if (auto error = open({}); error.hasError())
            return passedOn(std::move(error));
        outputs.constLast()->write(isSummary ? report.summary(request.isJson)
                : request.peak ? report.interpolated(request.masses, *request.peak, request.isJson)
                               : report.nearest(request.masses, request.isJson));
    }
    if (isInterrupted())
        return interrupted();
    for (const auto &output : std::as_const(outputs)) {
        if (auto error = output->commit(); error.hasError())
            return passedOn(std::move(error));
    }
    return vex::ErrorCode::NoError;
}

} // namespace

vex::Error runDistribution(const QStringList &arguments)
{
    CommandLine commandLine(u"distribution"_s,
        u"The precomputed table of isotope patterns of averagine on an even grid of masses. It has "
        "a composition of its own. A share is a part of the whole signal; patterns end where "
        "their peaks become too low, and what is cut is not made up for. Without --mass, -o and "
        "--plot: a summary of the table."_s);
    const Parameters usual;
    const Parameters accurate = Parameters::makeDefaultForAccurate();
    for (const Setting &setting : kSettings)
        commandLine.addOption({setting.option},
            u"%1 (default %2, with --accurate %3)."_s.arg(QString::fromUtf8(setting.meaning),
                exactNumber(usual.*setting.member), exactNumber(accurate.*setting.member)),
            setting.valueName);
    commandLine.addFlag(u"accurate"_s,
        u"Takes the accurate parameters, a finer grid with hardly anything cut, unless others are "
        "given."_s);
    commandLine.addOption({u"mass"_s},
        u"Looks up the pattern of the grid point nearest to M Da; more may follow. Beyond the grid "
        "that is the last one."_s,
        u"M"_s);
    commandLine.addPositional(u"M"_s, u"More masses."_s, u"[M...]"_s);
    commandLine.addOption({u"peak"_s},
        u"With --mass: only the share of the peak K Da above the monoisotopic one, interpolated "
        "between the grid points; 0 from the last grid point on."_s,
        u"K"_s);
    commandLine.addOption({u"o"_s, u"output"_s},
        u"Writes the whole table to FILE as CSV with CRLF line ends, a row for each mass: mass in "
        "Da, then the shares; - is standard output. --json does not change it."_s,
        u"FILE"_s);
    commandLine.addOption({u"plot"_s},
        u"Draws the patterns of the masses, or of ten over the grid, into FILE (.svg or .png)."_s,
        u"FILE"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    auto request = requestFrom(commandLine);
    if (request.hasError())
        return passedOn(std::move(request).error());
    return passedOn(runRequest(request.value()));
}

} // namespace vexcli

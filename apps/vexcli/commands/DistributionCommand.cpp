#include "commands/Command.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "commands/PatternModel.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/AveragineIsotopeDistribution.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QScopeGuard>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
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
    {"spacing"_L1, "D"_L1, "massSpacingDa"_L1, &Parameters::massSpacing, "Da between two patterns"},
    {"inter-trim"_L1, "PERCENT"_L1, "interTrim"_L1, &Parameters::interTrim,
        "Percent of the signal, 0 to below 100; a growing pattern loses the peaks at its end that "
        "are lower, after every atom"},
    {"final-trim"_L1, "PERCENT"_L1, "finalTrim"_L1, &Parameters::finalTrim,
        "Percent of the signal, 0 to below 100; a stored pattern lacks the peaks at its end that "
        "are lower"},
};

struct Request
{
    Parameters parameters;
    QList<double> masses; // daltons
    std::optional<int> peak;
};

bool isTrim(const Setting &setting)
{
    return setting.member == &Parameters::interTrim || setting.member == &Parameters::finalTrim;
}

vex::Result<Parameters> parametersFrom(const CommandLine &commandLine)
{
    Parameters parameters =
        commandLine.isSet(u"accurate"_s) ? Parameters::makeDefaultForAccurate() : Parameters();
    for (const Setting &setting : kSettings) {
        if (!commandLine.isSet(setting.option))
            continue;
        const QString text = commandLine.value(setting.option);
        const QString name = "--"_L1 + setting.option;
        auto number = isTrim(setting)                     ? shareFromPercent(text, name)
            : setting.member == &Parameters::avgDistCount ? wholeNumber(text, name, 1.0)
                                                          : nonNegativeNumber(text, name);
        if (number.hasError())
            return passedOn(std::move(number).error());
        if (setting.member == &Parameters::massSpacing && !(number.value() > 0.0))
            return usageFailure(u"%1 '%2' is not above 0"_s.arg(name, text));
        if (isTrim(setting) && number.value() >= 1.0)
            return usageFailure(
                u"%1 '%2' cuts every pattern away: it must be below 100 %"_s.arg(name, text));
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
    for (const QString &text : commandLine.values(u"mass"_s) + commandLine.positional()) {
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return passedOn(std::move(mass).error());
        request.masses.append(mass.value());
    }
    if (commandLine.isSet(u"peak"_s)) {
        if (request.masses.isEmpty())
            return usageFailure(u"--peak goes with masses"_s);
        auto peak = wholeNumber(
            commandLine.value(u"peak"_s), u"--peak"_s, 0.0, std::numeric_limits<int>::max());
        if (peak.hasError())
            return passedOn(std::move(peak).error());
        request.peak = static_cast<int>(peak.value());
    }
    if (commandLine.outputFile() == "-"_L1 && !request.masses.isEmpty())
        return usageFailure(
            u"standard output cannot hold both: give -o a file, or leave the masses out"_s);
    if (!commandLine.plotFile().isEmpty() && request.masses.size() > kMostPlotted)
        return usageFailure(u"%1 patterns are too many for one plot, %2 are the most"_s.arg(
            QString::number(request.masses.size()), QString::number(kMostPlotted)));
    return request;
}

vex::Result<std::shared_ptr<const Distribution>> compute(const Parameters &parameters)
{
    // The library warns of patterns without a peak, up to once an atom; warnOfEmptyPatterns() says
    // it once.
    QLoggingCategory *const category = QLoggingCategory::defaultCategory();
    category->setEnabled(QtWarningMsg, false);
    const auto loud = qScopeGuard([category] { category->setEnabled(QtWarningMsg, true); });
    try {
        return std::make_shared<const Distribution>(parameters);
    } catch (const std::length_error &error) {
        return failure(u"the table cannot be computed: %1"_s.arg(QString::fromUtf8(error.what())));
    }
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
        warn(u"%1 of %2 patterns are cut to nothing, the first at %3 Da: choose a lower "
             "--inter-trim or --final-trim"_s.arg(
                 QString::number(empty), QString::number(table.patternCount()), massNumber(first)));
}

/// How a table and what is looked up in it are shown.
class Report
{
public:
    explicit Report(std::shared_ptr<const Distribution> table)
        : m_table(std::move(table))
        , m_grid(*m_table)
    {
    }

    QByteArray summary(bool isJson) const
    {
        const Parameters &parameters = m_table->parameters();
        QJsonArray json;
        Table covers({u"mass/Da"_s, u"peaks"_s, u"highest peak/Da"_s, u"signal/%"_s});
        int previous = -1;
        for (const double position : {0.01, 0.1, 0.25, 0.5, 0.75, 1.0}) {
            const int point = qRound(position * m_grid.lastPoint());
            if (point == std::exchange(previous, point))
                continue;
            const Prediction pattern = nearestPattern(*m_table, m_grid.massOf(point));
            covers.addRow({massNumber(*pattern.gridMass), QString::number(pattern.shares.size()),
                pattern.best < 0 ? u"none"_s : QString::number(pattern.best),
                fixedNumber(100.0 * pattern.coverage, 2)});
            QJsonObject object = pattern.json();
            object.remove(u"shares"_s);
            json.append(object);
        }
        int longest = 0; // point of the longest pattern, the first of equals
        const auto peaksOf = [this](int point) {
            return qsizetype(m_table->isotopeIntensityFractions(m_grid.massOf(point)).size());
        };
        for (int point = 1; point <= m_grid.lastPoint(); ++point)
            longest = peaksOf(point) > peaksOf(longest) ? point : longest;
        if (isJson) {
            QJsonObject object{{u"patternCount"_s, m_table->patternCount()},
                {u"largestMassDa"_s, m_grid.lastMass()}, {u"longestPeakCount"_s, peaksOf(longest)},
                {u"patterns"_s, json}};
            for (const Setting &setting : kSettings)
                object.insert(setting.jsonKey, parameters.*setting.member);
            return jsonText(object);
        }
        const QString text = headLine(u"precomputed isotope patterns of averagine"_s)
            + reportLine(u"patterns"_s,
                u"%1, every %2 Da from 0 to %3 Da"_s.arg(QString::number(m_table->patternCount()),
                    massNumber(parameters.massSpacing), massNumber(m_grid.lastMass())))
            + reportLine(u"growing patterns"_s, trimText(parameters.interTrim))
            + reportLine(u"stored patterns"_s, trimText(parameters.finalTrim))
            + reportLine(u"longest pattern"_s,
                u"%1, at %2 Da"_s.arg(
                    counted(peaksOf(longest), u"peak"_s), massNumber(m_grid.massOf(longest))));
        return text.toUtf8() + covers.toText(2);
    }

    void showNearest(const QList<double> &masses, bool isJson, const Results &results) const
    {
        JsonArrayWriter json(isJson ? results.standard() : nullptr);
        for (const double mass : masses) {
            if (m_grid.isBeyond(mass))
                warn(u"%1 Da is beyond the last grid point, %2 Da, whose pattern is given"_s.arg(
                    massNumber(mass), massNumber(m_grid.lastMass())));
            const Prediction pattern = nearestPattern(*m_table, mass);
            QJsonObject object = pattern.json();
            object.insert(u"averageMassDa"_s, mass);
            json.add(object);
            if (!isJson)
                results.print((headLine(massNumber(mass) + " Da"_L1)
                                  + reportLine(u"nearest grid point"_s,
                                      massNumber(*pattern.gridMass) + " Da"_L1)
                                  + pattern.lines())
                                  .toUtf8()
                    + pattern.table(kLowestShown) + '\n');
        }
        json.end();
    }

    void showInterpolated(
        const QList<double> &masses, int peak, bool isJson, const Results &results) const
    {
        JsonArrayWriter json(isJson ? results.standard() : nullptr);
        Table shares({u"mass/Da"_s, u"shift/Da"_s, u"share/%, interpolated"_s});
        for (const double mass : masses) {
            if (mass >= m_grid.lastMass())
                warn(u"%1 Da: shares are interpolated from 0 to below %2 Da only, 0 is given"_s.arg(
                    massNumber(mass), massNumber(m_grid.lastMass())));
            const double share = m_table->isotopeFractionInterpolated(mass, peak);
            shares.addRow({massNumber(mass), QString::number(peak), fixedNumber(100.0 * share, 6)});
            json.add({{u"averageMassDa"_s, mass}, {u"shiftDa"_s, peak}, {u"share"_s, share},
                {u"isInterpolated"_s, true}});
        }
        json.end();
        if (!isJson)
            results.print(shares.toText());
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
            const Prediction pattern = nearestPattern(*m_table, mass);
            const QString label = massNumber(*pattern.gridMass)
                + (pattern.shares.isEmpty() ? " Da, nothing left"_L1 : " Da"_L1);
            if (patterns.isEmpty() || patterns.constLast().label != label)
                patterns.append({label, pattern.shares});
        }
        return passedOn(drawPatterns(path,
            u"Precomputed isotope patterns, averagine, every %1 Da"_s.arg(
                massNumber(m_table->parameters().massSpacing)),
            patterns, PlotStyle::Lines));
    }

private:
    static QString trimText(double trim)
    {
        return u"end with the last share of at least %1 % of the signal"_s.arg(percentNumber(trim));
    }

    /// Two digits, which make good steps.
    static double rounded(double mass) { return QString::number(mass, 'g', 2).toDouble(); }

    std::shared_ptr<const Distribution> m_table;
    Grid m_grid;
};

/// Writes the bytes that saveToFile() writes.
void writeCsv(const Distribution &table, Output *output)
{
    const auto writeRow = [output](const QList<QString> &fields) {
        output->write(fields.join(u',').toUtf8() + "\r\n");
    };
    writeRow(table.csvHeader());
    Progress progress(u"writing"_s, table.patternCount());
    for (int pattern = 0; pattern < table.patternCount() && !isInterrupted(); ++pattern) {
        writeRow(table.csvRow(pattern));
        progress.update(pattern);
    }
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"The precomputed table of isotope patterns of averagine on an even grid of masses."_s,
        {u"vex distribution"_s, u"vex distribution 1000 5000 --plot patterns.svg"_s,
            u"vex distribution --accurate 1234 --peak 2"_s, u"vex distribution -o table.csv"_s},
        u"The table has an average composition of its own. A share is a part of the whole signal. "
        "Patterns end where their peaks become too low; the other peaks are not scaled up for what "
        "is cut. Without masses, -o and --plot a summary of the table is printed."_s);
    commandLine->addPositional(u"M"_s,
        u"Looks up the pattern of the grid point nearest to M Da; beyond the grid that is the last "
        "one."_s,
        u"[M...]"_s);
    commandLine->addRepeatableOption({u"mass"_s}, u"As M."_s, u"M"_s);
    commandLine->addOption({u"peak"_s},
        u"With masses: only the share of the peak K Da above the monoisotopic one, interpolated "
        "between the grid points; 0 from the last grid point on."_s,
        u"K"_s);
    const Parameters usual;
    const Parameters accurate = Parameters::makeDefaultForAccurate();
    for (const Setting &setting : kSettings) {
        const auto text = [&setting](const Parameters &parameters) {
            const double value = parameters.*setting.member;
            return isTrim(setting) ? percentNumber(value) : exactNumber(value);
        };
        commandLine->addOption({setting.option},
            u"%1 (default %2, with --accurate %3)."_s.arg(
                QString::fromUtf8(setting.meaning), text(usual), text(accurate)),
            setting.valueName);
    }
    commandLine->addFlag(u"accurate"_s,
        u"Takes the accurate parameters, a finer grid with hardly anything cut, unless others are "
        "given."_s);
    commandLine->addOutputOption(
        u"Writes the whole table to FILE as CSV with CRLF line ends, a row for each mass: mass in "
        "Da, then the shares. --json does not change it."_s);
    commandLine->addPlotOption(
        u"Draws the patterns of the masses, or of ten over the grid, into FILE (.svg or .png)."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    auto request = requestFrom(commandLine);
    if (request.hasError())
        return passedOn(std::move(request).error());
    const auto &[parameters, masses, peak] = std::as_const(request).value();
    auto computed = compute(parameters);
    if (computed.hasError())
        return passedOn(std::move(computed).error());
    const std::shared_ptr<const Distribution> table = computed.value();
    warnOfEmptyPatterns(*table);
    const Report report(table);
    if (results->file())
        writeCsv(*table, results->file());
    if (const QString plotFile = commandLine.plotFile(); !plotFile.isEmpty())
        results->addPlot(plotFile,
            [report, masses = masses](const QString &path) { return report.plot(path, masses); });
    const bool isJson = commandLine.isJson();
    if (!masses.isEmpty() && peak)
        report.showInterpolated(masses, *peak, isJson, *results);
    else if (!masses.isEmpty())
        report.showNearest(masses, isJson, *results);
    else if (isJson || (!results->file() && commandLine.plotFile().isEmpty()))
        results->print(report.summary(isJson));
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kDistributionCommand{"distribution"_L1,
    "the precomputed table of isotope patterns over mass"_L1, declare, run, false};

} // namespace vexcli

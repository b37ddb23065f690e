#include "commands/AveragePatterns.h"

#include "Failure.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/PatternModel.h"
#include "input/Columns.h"
#include "input/Fasta.h"
#include "input/MassFile.h"
#include "input/Molecules.h"
#include "input/PublishedTable.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "output/PlotFiles.h"
#include "output/Progress.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/MolecularMass.h>

#include <QJsonObject>

#include <memory>
#include <optional>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qsizetype kMostWarnings = 20; // about patterns that are not whole
constexpr qsizetype kMostPlotted = 12; // patterns in one plot that a reader can still tell apart

/// What to predict a pattern for.
struct Target
{
    QString name;
    double mass = 0.0; // average, daltons
    std::optional<Protein> protein;

    /// Name and mass.
    QString label() const
    {
        return protein ? u"%1, %2 Da"_s.arg(name, fixedNumber(mass, 1)) : name;
    }
};

/// A pattern and what it is of.
struct Pattern : Prediction
{
    const Target *target = nullptr;
    QString composition;
    bool isOwn = false; // that of the sequence
};

Target targetOf(double mass)
{
    return {massNumber(mass) + " Da"_L1, mass, std::nullopt};
}

vex::Result<QList<Target>> targetsOfSequences(const CommandLine &commandLine, BadRecords *bad)
{
    auto proteins = readProteins(commandLine, bad);
    if (proteins.hasError())
        return passedOn(std::move(proteins).error());
    QList<Target> targets;
    OddResidueWarnings warnings;
    for (const Protein &protein : std::as_const(proteins).value()) {
        targets.append({protein.name, vex::MolecularMass::average(formulaOf(protein)), protein});
        warnings.add(protein.name, oddResiduesOf(protein, false));
    }
    warnings.finish("B, U, X or Z"_L1);
    return targets;
}

vex::Result<QList<Target>> targetsFrom(const CommandLine &commandLine, BadRecords *bad)
{
    if (commandLine.isSet(u"fasta"_s))
        return passedOn(targetsOfSequences(commandLine, bad));
    QList<Target> targets;
    if (commandLine.isSet(u"masses"_s)) {
        auto masses = readMasses(commandLine, bad);
        if (masses.hasError())
            return passedOn(std::move(masses).error());
        for (const double mass : std::as_const(masses).value())
            targets.append(targetOf(mass));
        return targets;
    }
    for (const QString &text : commandLine.values(u"mass"_s) + commandLine.positional()) {
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return passedOn(std::move(mass).error());
        targets.append({u"%1 Da"_s.arg(text), mass.value(), std::nullopt});
    }
    return targets;
}

/// How the patterns of one run are shown.
class Report
{
public:
    Report(const PatternModel &model, double minimalShare, const PublishedTable &published)
        : m_model(model)
        , m_minimalShare(minimalShare)
        , m_published(published)
    {
    }

    QByteArray asTable(const Pattern &pattern) const
    {
        const Target &target = *pattern.target;
        QString text = headLine(target.name);
        if (target.protein) {
            text += reportLine(u"sequence"_s,
                        u"%1, %2"_s.arg(counted(target.protein->length, u"residue"_s),
                            formulaText(*target.protein)))
                + reportLine(u"average mass"_s, m_published.averageText(target.name, target.mass))
                + reportLine(u"monoisotopic mass"_s,
                    m_published.monoisotopicText(target.name, monoisotopicMass(target)));
        }
        text += reportLine(u"pattern of"_s,
            pattern.isOwn        ? u"the sequence's own composition"_s
                : target.protein ? pattern.composition + ", not the sequence's own"_L1
                                 : pattern.composition);
        if (pattern.gridMass)
            text += reportLine(u"nearest grid point"_s, massNumber(*pattern.gridMass) + " Da"_L1);
        return (text + pattern.lines()).toUtf8() + pattern.table(m_minimalShare) + '\n';
    }

    QJsonObject asJson(const Pattern &pattern) const
    {
        const Target &target = *pattern.target;
        QJsonObject object = pattern.json();
        object.insert(u"name"_s, target.name);
        object.insert(u"averageMassDa"_s, target.mass);
        object.insert(u"model"_s, m_model.name());
        object.insert(u"composition"_s, pattern.composition);
        if (!target.protein)
            return object;
        object.insert(u"isOwnComposition"_s, pattern.isOwn);
        object.insert(u"residueCount"_s, target.protein->length);
        object.insert(u"formula"_s, formulaText(*target.protein));
        object.insert(u"monoisotopicMassDa"_s, monoisotopicMass(target));
        object.insert(u"oddResidues"_s, jsonOf(oddResiduesOf(*target.protein, false)));
        return object;
    }

    static QByteArray csvTitle() { return "name,composition,average_mass_Da,shift_Da,share\n"; }

    static QByteArray asCsv(const Pattern &pattern)
    {
        const QByteArray start = (csvField(pattern.target->name) + u','
            + csvField(pattern.composition) + u',' + exactNumber(pattern.target->mass) + u',')
                                     .toUtf8();
        QByteArray text;
        for (int i = 0; i < pattern.shares.size(); ++i)
            text += start + QByteArray::number(i) + ',' + exactBytes(pattern.shares[i]) + '\n';
        return text;
    }

private:
    static double monoisotopicMass(const Target &target)
    {
        return vex::MolecularMass::monoisotopic(formulaOf(*target.protein));
    }

    const PatternModel &m_model;
    double m_minimalShare;
    const PublishedTable &m_published;
};

/// The plots of one run: one for all patterns, or one each.
class Plots
{
public:
    explicit Plots(const QStringList &files)
    {
        for (const QString &file : files)
            m_plots.append({file, {}, {}});
    }

    void add(const Pattern &pattern, qsizetype index)
    {
        if (m_plots.isEmpty())
            return;
        Plot &plot = m_plots[m_plots.size() > 1 ? index : 0];
        plot.patterns.append({pattern.target->label(), pattern.shares});
        const QString composition = !pattern.isOwn ? pattern.composition
            : plot.patterns.size() > 1             ? u"each of its own composition"_s
                                                   : u"own composition"_s;
        plot.compositions.removeOne(u"own composition"_s);
        if (!plot.compositions.contains(composition))
            plot.compositions.append(composition);
    }

    void handOut(Results *results)
    {
        for (const Plot &plot : std::as_const(m_plots)) {
            const QString title = (plot.patterns.size() > 1 ? u"Isotope patterns"_s
                                                            : u"Isotope pattern of %1"_s.arg(
                                                                plot.patterns.constFirst().label))
                + ", "_L1 + plot.compositions.join(", "_L1);
            results->addPlot(plot.path, [plot, title](const QString &path) {
                return drawPatterns(path, title, plot.patterns, PlotStyle::Bars);
            });
        }
    }

private:
    struct Plot
    {
        QString path;
        QList<PlottedPattern> patterns;
        QStringList compositions; // each once
    };

    QList<Plot> m_plots;
};

/// Predicts and writes one pattern after the other.
class Run
{
public:
    Run(const CommandLine &commandLine, PatternModel *model, const Report &report, Plots *plots,
        Results *results)
        : m_model(*model)
        , m_report(report)
        , m_plots(*plots)
        , m_results(*results)
        , m_isCompositionGiven(isCompositionGiven(commandLine))
    {
        Output *const file = results->file();
        if (commandLine.isJson())
            m_json.emplace(file ? file : results->standard(), commandLine.jsonLayout());
        else if (file && !commandLine.isSet(u"no-header"_s))
            file->write(Report::csvTitle());
    }

    vex::Error add(const Target &target)
    {
        Pattern pattern;
        pattern.target = &target;
        pattern.isOwn = target.protein && m_model.hasComposition() && !m_isCompositionGiven;
        if (pattern.isOwn) {
            if (auto error = m_model.setComposition(
                    {formulaText(*target.protein), formulaOf(*target.protein)});
                error.hasError())
                return passedOn(std::move(error));
        }
        pattern.composition = m_model.composition();
        if (auto error = m_model.predict(target.mass, &pattern); error.hasError())
            return passedOn(std::move(error));
        warnOf(pattern);
        m_plots.add(pattern, m_count++);
        if (m_json) {
            m_json->add(m_report.asJson(pattern));
        } else {
            if (m_results.standard())
                m_results.print(m_report.asTable(pattern));
            if (m_results.file())
                m_results.file()->write(Report::asCsv(pattern));
        }
        return isInterrupted() ? interrupted() : vex::Error(vex::ErrorCode::NoError);
    }

    /// Hands out what is known so far.
    void flush()
    {
        for (Output *output : {m_results.standard(), m_results.file()}) {
            if (output)
                std::ignore = output->check(); // the end of the run tells
        }
    }

    void end()
    {
        if (m_json)
            m_json->end();
        if (m_warningCount > kMostWarnings)
            warn(u"%1 with such a warning"_s.arg(
                counted(m_warningCount - kMostWarnings, u"more pattern"_s)));
        m_plots.handOut(&m_results);
    }

private:
    void warnOf(const Pattern &pattern)
    {
        const double mass = pattern.target->mass;
        if (m_model.isDoubtful(mass, pattern) && ++m_warningCount <= kMostWarnings)
            warn(pattern.target->label() + ": "_L1 + m_model.warningFor(mass, pattern));
    }

    PatternModel &m_model;
    const Report &m_report;
    Plots &m_plots;
    Results &m_results;
    bool m_isCompositionGiven;
    std::optional<JsonArrayWriter> m_json;
    qsizetype m_count = 0;
    qsizetype m_warningCount = 0;
};

} // namespace

vex::Error predictAveragePatterns(
    const CommandLine &commandLine, double minimalShare, Results *results)
{
    auto model = PatternModel::fromOptions(commandLine);
    if (model.hasError())
        return passedOn(std::move(model).error());
    BadRecords bad(commandLine.isSet(u"keep-going"_s));
    // Masses without a plot are told as they come: there may be more of them than memory holds.
    const bool isStream = commandLine.isSet(u"masses"_s) && commandLine.plotFile().isEmpty();
    const vex::Result<QList<Target>> targets =
        isStream ? QList<Target>() : targetsFrom(commandLine, &bad);
    if (targets.hasError())
        return passedOn(targets.error());
    const auto published = PublishedTable::fromOptions(commandLine);
    if (published.hasError())
        return passedOn(published.error());
    QStringList names;
    for (const Target &target : targets.value())
        names.append(target.name);
    if (!commandLine.isSet(u"only"_s))
        published.value().warnOfOthers(names);
    const auto files = plotFilesFor(commandLine, names, kMostPlotted);
    if (files.hasError())
        return passedOn(files.error());

    Plots plots(files.value());
    const Report report(*model.value(), minimalShare, published.value());
    Run run(commandLine, model.value().get(), report, &plots, results);
    if (isStream) {
        model.value()->expectMany();
        if (auto error = forEachMass(
                commandLine, &bad, [&run](double mass) { return run.add(targetOf(mass)); },
                [&run] { run.flush(); });
            error.hasError())
            return passedOn(std::move(error));
    }
    Progress progress(u"predicting"_s, targets.value().size());
    for (qsizetype i = 0; i < targets.value().size(); ++i) {
        if (auto error = run.add(targets.value()[i]); error.hasError())
            return passedOn(std::move(error));
        progress.update(i);
    }
    run.end();
    results->setVerdict(bad.verdict());
    return vex::ErrorCode::NoError;
}

} // namespace vexcli

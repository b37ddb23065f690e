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

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

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
        auto masses = readMasses(commandLine, commandLine.value(u"masses"_s), bad);
        if (masses.hasError())
            return passedOn(std::move(masses).error());
        for (const double mass : std::as_const(masses).value())
            targets.append({massNumber(mass) + " Da"_L1, mass, std::nullopt});
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
            text += start + QByteArray::number(i) + ',' + exactNumber(pattern.shares[i]).toUtf8()
                + '\n';
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

} // namespace

vex::Error predictAveragePatterns(
    const CommandLine &commandLine, double minimalShare, Results *results)
{
    auto chosen = PatternModel::fromOptions(commandLine);
    if (chosen.hasError())
        return passedOn(std::move(chosen).error());
    PatternModel &model = *chosen.value();
    BadRecords bad(commandLine.isSet(u"keep-going"_s));
    const auto targets = targetsFrom(commandLine, &bad);
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

    const Report report(model, minimalShare, published.value());
    Output *const file = results->file();
    const bool isJson = commandLine.isJson();
    std::optional<JsonArrayWriter> json;
    if (isJson)
        json.emplace(file ? file : results->standard());
    else if (file)
        file->write(Report::csvTitle());
    Progress progress(u"predicting"_s, targets.value().size());
    for (qsizetype i = 0; i < targets.value().size(); ++i) {
        Pattern pattern;
        pattern.target = &targets.value()[i];
        const std::optional<Protein> &protein = pattern.target->protein;
        pattern.isOwn = protein && model.hasComposition() && !isCompositionGiven(commandLine);
        if (pattern.isOwn) {
            if (auto error = model.setComposition({formulaText(*protein), formulaOf(*protein)});
                error.hasError())
                return passedOn(std::move(error));
        }
        pattern.composition = model.composition();
        if (auto error = model.predict(pattern.target->mass, &pattern); error.hasError())
            return passedOn(std::move(error));
        if (const QString warning = model.warningFor(pattern.target->mass, pattern);
            !warning.isEmpty())
            warn(pattern.target->label() + ": "_L1 + warning);
        plots.add(pattern, i);
        if (json) {
            json->add(report.asJson(pattern));
        } else {
            results->print(report.asTable(pattern));
            if (file)
                file->write(Report::asCsv(pattern));
        }
        if (isInterrupted())
            return interrupted();
        progress.update(i);
    }
    if (json)
        json->end();
    plots.handOut(results);
    results->setVerdict(bad.verdict());
    return vex::ErrorCode::NoError;
}

} // namespace vexcli

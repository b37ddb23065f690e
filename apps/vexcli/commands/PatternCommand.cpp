#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "commands/PatternModel.h"
#include "input/Columns.h"
#include "input/Fasta.h"
#include "input/MassFile.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/CommandLineKeys.h>
#include <vex/FileUtilsGeneric.h>
#include <vex/MolecularMass.h>

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qsizetype kMostPlotted = 12; // patterns in one plot that a reader can still tell apart
constexpr qsizetype kMostWarnings = 20; // about sequences with odd residues
constexpr double kUsualShare = 0.001; // lowest in a table

/// What to predict a pattern for.
struct Molecule
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
    const Molecule *molecule = nullptr;
    QString composition;
    bool isOwn = false; // that of the sequence
};

vex::Result<QList<Molecule>> moleculesOfSequences(const QString &path, BadRecords *bad)
{
    auto proteins = readFasta(path, bad);
    if (proteins.hasError())
        return passedOn(std::move(proteins).error());
    QList<Molecule> molecules;
    qsizetype oddCount = 0;
    for (const Protein &protein : std::as_const(proteins).value()) {
        molecules.append({protein.name, vex::MolecularMass::average(formulaOf(protein)), protein});
        if (protein.odd.isEmpty() || ++oddCount > kMostWarnings)
            continue;
        for (const OddResidue &residue : oddResiduesOf(protein))
            warn(u"%1: %2 at %3: %4"_s.arg(protein.name, QLatin1StringView(&residue.code, 1),
                counted(residue.count, u"place"_s), residue.text));
    }
    if (oddCount > kMostWarnings)
        warn(u"%1 with B, U, X or Z; --json tells of each"_s.arg(
            counted(oddCount - kMostWarnings, u"more sequence"_s)));
    return molecules;
}

vex::Result<QList<Molecule>> moleculesFrom(const CommandLine &commandLine, BadRecords *bad)
{
    if (commandLine.isSet(u"fasta"_s))
        return passedOn(moleculesOfSequences(commandLine.value(u"fasta"_s), bad));
    QList<Molecule> molecules;
    if (commandLine.isSet(u"masses"_s)) {
        auto masses = readMasses(commandLine, commandLine.value(u"masses"_s), bad);
        if (masses.hasError())
            return passedOn(std::move(masses).error());
        for (const double mass : std::as_const(masses).value())
            molecules.append({massNumber(mass) + " Da"_L1, mass, std::nullopt});
        return molecules;
    }
    for (const QString &text : commandLine.values(u"mass"_s) + commandLine.positional()) {
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return passedOn(std::move(mass).error());
        molecules.append({u"%1 Da"_s.arg(text), mass.value(), std::nullopt});
    }
    return molecules;
}

/// @p mass, and how far it is from what was published, if anything.
QString massText(double mass, std::optional<double> published)
{
    QString text = fixedNumber(mass, 4) + " Da"_L1;
    if (!published)
        return text;
    const QString ppm = QString::asprintf("%+.2f", (mass - *published) / *published * 1e6);
    return text
        + u"  (published %1, %2 ppm)"_s.arg(
            fixedNumber(*published, 4), ppm == "-0.00"_L1 ? u"+0.00"_s : ppm);
}

/// How the patterns of one run are shown.
class Report
{
public:
    Report(const PatternModel &model, double minimalShare,
        const QHash<QString, PublishedMasses> &published)
        : m_model(model)
        , m_minimalShare(minimalShare)
        , m_published(published)
    {
    }

    QByteArray asTable(const Pattern &pattern) const
    {
        const Molecule &molecule = *pattern.molecule;
        QString text = headLine(molecule.name);
        if (molecule.protein) {
            const auto published = m_published.constFind(molecule.name);
            const bool isKnown = published != m_published.constEnd();
            using Mass = std::optional<double>;
            text += reportLine(u"sequence"_s,
                        u"%1, %2"_s.arg(counted(molecule.protein->length, u"residue"_s),
                            formulaText(*molecule.protein)))
                + reportLine(u"average mass"_s,
                    massText(molecule.mass, isKnown ? Mass(published->average) : Mass()))
                + reportLine(u"monoisotopic mass"_s,
                    massText(monoisotopicMass(molecule),
                        isKnown ? Mass(published->monoisotopic) : Mass()));
        }
        text += reportLine(u"pattern of"_s,
            pattern.isOwn          ? u"the sequence's own composition"_s
                : molecule.protein ? pattern.composition + ", not the sequence's own"_L1
                                   : pattern.composition);
        if (pattern.gridMass)
            text += reportLine(u"nearest grid point"_s, massNumber(*pattern.gridMass) + " Da"_L1);
        return (text + pattern.lines()).toUtf8() + pattern.table(m_minimalShare) + '\n';
    }

    QJsonObject asJson(const Pattern &pattern) const
    {
        const Molecule &molecule = *pattern.molecule;
        QJsonObject object = pattern.json();
        object.insert(u"name"_s, molecule.name);
        object.insert(u"averageMassDa"_s, molecule.mass);
        object.insert(u"model"_s, m_model.name());
        object.insert(u"composition"_s, pattern.composition);
        if (!molecule.protein)
            return object;
        object.insert(u"isOwnComposition"_s, pattern.isOwn);
        object.insert(u"residueCount"_s, molecule.protein->length);
        object.insert(u"formula"_s, formulaText(*molecule.protein));
        object.insert(u"monoisotopicMassDa"_s, monoisotopicMass(molecule));
        QJsonArray odd;
        for (const OddResidue &residue : oddResiduesOf(*molecule.protein)) {
            const auto number = [](std::optional<double> mass) {
                return mass ? QJsonValue(*mass) : QJsonValue();
            };
            odd.append(QJsonObject{{u"residue"_s, QString(QLatin1Char(residue.code))},
                {u"count"_s, residue.count}, {u"note"_s, residue.text},
                {u"missingAverageMassDa"_s, number(residue.missingAverageMass)},
                {u"missingMonoisotopicMassDa"_s, number(residue.missingMonoisotopicMass)}});
        }
        object.insert(u"oddResidues"_s, odd);
        return object;
    }

    static QByteArray csvTitle() { return "name,composition,average_mass_Da,shift_Da,share\n"; }

    static QByteArray asCsv(const Pattern &pattern)
    {
        const QByteArray start = (csvField(pattern.molecule->name) + u','
            + csvField(pattern.composition) + u',' + exactNumber(pattern.molecule->mass) + u',')
                                     .toUtf8();
        QByteArray text;
        for (int i = 0; i < pattern.shares.size(); ++i)
            text += start + QByteArray::number(i) + ',' + exactNumber(pattern.shares[i]).toUtf8()
                + '\n';
        return text;
    }

private:
    static double monoisotopicMass(const Molecule &molecule)
    {
        return vex::MolecularMass::monoisotopic(formulaOf(*molecule.protein));
    }

    const PatternModel &m_model;
    double m_minimalShare;
    const QHash<QString, PublishedMasses> &m_published;
};

/// The plots of one run: one for all patterns, or one each where the path holds {name}.
class Plots
{
public:
    /// @param taken  files that are read or written besides
    vex::Error plan(const QString &path, const QList<Molecule> &molecules, const QStringList &taken)
    {
        if (path.isEmpty())
            return vex::ErrorCode::NoError;
        m_isOneEach = path.contains(kNamePlaceholder);
        if (!m_isOneEach && molecules.size() > kMostPlotted)
            return usageFailure(
                u"%1 patterns are too many for one plot: write {name} into the file name for one each"_s
                    .arg(molecules.size()));
        if (!m_isOneEach) {
            m_plots.append({path, {}, {}});
            return vex::ErrorCode::NoError;
        }
        QSet<QString> files;
        for (const Molecule &molecule : molecules) {
            QString filled = path;
            filled.replace(kNamePlaceholder, fileNameFor(molecule.name));
            const QString file = vex::FileUtilsGeneric::identity(filled);
            if (files.contains(file))
                return failure(u"two patterns would be drawn into %1"_s.arg(filled));
            files.insert(file);
            if (auto error = requireOtherFiles(taken, {filled}); error.hasError())
                return passedOn(std::move(error));
            if (auto error = requireWritable(filled); error.hasError())
                return passedOn(std::move(error));
            if (isInterrupted())
                return interrupted();
            m_plots.append({filled, {}, {}});
        }
        return vex::ErrorCode::NoError;
    }

    void add(const Pattern &pattern, qsizetype index)
    {
        if (m_plots.isEmpty())
            return;
        Plot &plot = m_plots[m_isOneEach ? index : 0];
        plot.patterns.append({pattern.molecule->label(), pattern.shares});
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

    /// @p name as the name of a file in the folder that the path names, and in no other.
    static QString fileNameFor(const QString &name)
    {
        QString result = name;
        for (QChar &character : result) {
            if (!character.isLetterOrNumber() && !u"-._"_s.contains(character))
                character = u'_';
        }
        const bool isDots = result.count(u'.') == result.size();
        return isDots ? QString(std::max<qsizetype>(1, result.size()), u'_') : result;
    }

    bool m_isOneEach = false;
    QList<Plot> m_plots;
};

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Predicts isotope patterns from average masses, or from protein sequences."_s,
        {u"vex pattern 1000"_s, u"vex pattern --fasta proteins.fasta --plot '{name}.svg'"_s,
            u"vex pattern --masses list.csv --column mass -o peaks.csv"_s},
        u"A sequence's pattern is that of its own composition, which is summed from its residues; "
        "with --averagine or --formula it is that of an average composition. The pattern of a mass "
        "alone is that of modern averagine, or of the composition given. Residues are capitals; a "
        "few small letters among capitals are refused, since they mark a modification.\n"
        "A share is a part of the whole signal. The first peak is the monoisotopic one. The "
        "classic model holds 100 peaks, which is all of the signal up to about 100 kDa. Its peaks "
        "of a "
        "protein are right to 3 % of the highest one, those of --model list to 1 %."_s);
    commandLine->addPositional(u"M"_s, u"Average masses in Da."_s, u"[M...]"_s);
    commandLine->addRepeatableOption({u"mass"_s}, u"Average mass in Da, as M."_s, u"M"_s);
    commandLine->addInputOption(u"masses"_s, u"Average masses in Da, one in a line."_s);
    commandLine->addInputOption(u"fasta"_s, u"Protein sequences."_s);
    commandLine->addInputOption(u"published"_s,
        u"Compares the masses of the sequences with those of a CSV file: name, average, "
        "monoisotopic."_s);
    addColumnsOptions(commandLine, u"that with the masses"_s);
    commandLine->addFlag(
        u"keep-going"_s, u"Leaves bad records out and reports each; the exit code is 1 then."_s);
    addModelOptions(commandLine);
    commandLine->addOption({u"min-share"_s},
        u"Lowest share of a peak in the table, in percent (default %1)."_s.arg(
            percentNumber(kUsualShare)),
        u"PERCENT"_s);
    commandLine->addOutputOption(
        u"Writes all peaks of each pattern to FILE as CSV, besides the table; with --json the JSON "
        "goes to FILE, and nothing is printed."_s);
    commandLine->addPlotOption(
        u"Draws the patterns into FILE (.svg or .png); with {name} in it, one file for each."_s);
}

vex::Error checkOptions(const CommandLine &commandLine)
{
    const int sources = (commandLine.isSet(u"fasta"_s) ? 1 : 0)
        + (commandLine.isSet(u"masses"_s) ? 1 : 0)
        + (commandLine.isSet(u"mass"_s) || !commandLine.positional().isEmpty() ? 1 : 0);
    if (sources != 1)
        return usageFailure(
            commandLine.withHint(u"give masses, or --masses FILE, or --fasta FILE"_s));
    if (commandLine.isSet(u"published"_s) && !commandLine.isSet(u"fasta"_s))
        return usageFailure(u"--published goes with --fasta"_s);
    for (const QString &option : {u"column"_s, u"decimal"_s}) {
        if (commandLine.isSet(option) && !commandLine.isSet(u"masses"_s))
            return usageFailure(u"--%1 goes with --masses"_s.arg(option));
    }
    return vex::ErrorCode::NoError;
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    if (auto error = checkOptions(commandLine); error.hasError())
        return passedOn(std::move(error));
    vex::Result<double> minimalShare = kUsualShare;
    if (commandLine.isSet(u"min-share"_s))
        minimalShare = shareFromPercent(commandLine.value(u"min-share"_s), u"--min-share"_s);
    if (minimalShare.hasError())
        return passedOn(std::move(minimalShare).error());
    auto chosen = PatternModel::fromOptions(commandLine);
    if (chosen.hasError())
        return passedOn(std::move(chosen).error());
    PatternModel &model = *chosen.value();
    BadRecords bad(commandLine.isSet(u"keep-going"_s));
    const auto molecules = moleculesFrom(commandLine, &bad);
    if (molecules.hasError())
        return passedOn(molecules.error());
    QHash<QString, PublishedMasses> published;
    if (commandLine.isSet(u"published"_s)) {
        auto masses = readPublishedMasses(commandLine.value(u"published"_s));
        if (masses.hasError())
            return passedOn(std::move(masses).error());
        published = std::move(masses).value();
    }
    QSet<QString> unknown(published.keyBegin(), published.keyEnd());
    for (const Molecule &molecule : molecules.value())
        unknown.remove(molecule.name);
    for (const QString &name : std::as_const(unknown))
        warn(u"published masses of %1: no such sequence"_s.arg(name));
    Plots plots;
    const QStringList taken = commandLine.inputFiles()
        + QStringList{commandLine.outputFile(), commandLine.value(vex::klog)};
    if (auto error = plots.plan(commandLine.plotFile(), molecules.value(), taken); error.hasError())
        return passedOn(std::move(error));

    const Report report(model, minimalShare.value(), published);
    Output *const file = results->file();
    const bool isJson = commandLine.isJson();
    std::optional<JsonArrayWriter> json;
    if (isJson)
        json.emplace(file ? file : results->standard());
    else if (file)
        file->write(Report::csvTitle());
    Progress progress(u"predicting"_s, molecules.value().size());
    for (qsizetype i = 0; i < molecules.value().size(); ++i) {
        Pattern pattern;
        pattern.molecule = &molecules.value()[i];
        const std::optional<Protein> &protein = pattern.molecule->protein;
        pattern.isOwn = protein && model.hasComposition() && !isCompositionGiven(commandLine);
        if (pattern.isOwn) {
            if (auto error = model.setComposition({formulaText(*protein), formulaOf(*protein)});
                error.hasError())
                return passedOn(std::move(error));
        }
        pattern.composition = model.composition();
        if (auto error = model.predict(pattern.molecule->mass, &pattern); error.hasError())
            return passedOn(std::move(error));
        if (const QString warning = model.warningFor(pattern.molecule->mass, pattern);
            !warning.isEmpty())
            warn(pattern.molecule->label() + ": "_L1 + warning);
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

} // namespace

const Command kPatternCommand{
    "pattern"_L1, "isotope patterns from masses or protein sequences"_L1, declare, run, false};

} // namespace vexcli

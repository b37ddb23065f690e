#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "input/Fasta.h"
#include "input/NumberFile.h"
#include "output/Output.h"
#include "commands/PatternModel.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "output/Table.h"

#include <vex/FileUtilsGeneric.h>
#include <vex/MolecularMass.h>

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr auto kNamePlaceholder = "{name}"_L1;
constexpr qsizetype kMostPlotted = 12; // patterns in one plot that a reader can still tell apart

/// What to predict a pattern for.
struct Molecule
{
    QString name;
    double mass = 0.0; // average, daltons
    std::optional<Protein> protein;
};

struct Pattern : Prediction
{
    const Molecule *molecule = nullptr;
};

vex::Result<QList<Molecule>> moleculesFrom(const CommandLine &commandLine)
{
    QList<Molecule> molecules;
    if (commandLine.isSet(u"fasta"_s)) {
        if (!commandLine.positional().isEmpty())
            return usageFailure(
                u"unexpected argument '%1'"_s.arg(commandLine.positional().constFirst()));
        auto proteins = readFasta(commandLine.value(u"fasta"_s));
        if (proteins.hasError())
            return passedOn(std::move(proteins).error());
        for (const QString &warning : proteins.warnings())
            qWarning("%s", qUtf8Printable(warning));
        for (const Protein &protein : proteins.value())
            molecules.append(
                {protein.name, vex::MolecularMass::average(formulaOf(protein)), protein});
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

/// Name and mass.
QString labelOf(const Molecule &molecule)
{
    if (!molecule.protein)
        return molecule.name;
    return u"%1, %2 Da"_s.arg(molecule.name, fixedNumber(molecule.mass, 1));
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
    Report(std::shared_ptr<PatternModel> model, double minimalShare,
        QHash<QString, PublishedMasses> published)
        : m_model(std::move(model))
        , m_minimalShare(minimalShare)
        , m_published(std::move(published))
    {
    }

    QByteArray asTable(const Pattern &pattern) const
    {
        const Molecule &molecule = *pattern.molecule;
        QString text = molecule.name + u'\n';
        if (molecule.protein) {
            const auto formula = formulaOf(*molecule.protein);
            const double mono = vex::MolecularMass::monoisotopic(formula);
            const auto published = m_published.constFind(molecule.name);
            const bool isKnown = published != m_published.constEnd();
            text += reportLine(u"sequence"_s,
                u"%1 residues, %2"_s.arg(
                    QString::number(molecule.protein->length), formulaText(*molecule.protein)));
            text += reportLine(u"average mass"_s,
                massText(molecule.mass, isKnown ? published->average : std::optional<double>()));
            text += reportLine(u"monoisotopic mass"_s,
                massText(mono, isKnown ? published->monoisotopic : std::optional<double>()));
        }
        if (pattern.gridMass)
            text += reportLine(u"nearest grid point"_s, massNumber(*pattern.gridMass) + " Da"_L1);
        text += signalLines(pattern);
        return text.toUtf8() + peakTable(pattern.shares, pattern.best, m_minimalShare) + '\n';
    }

    QJsonObject asJson(const Pattern &pattern) const
    {
        const Molecule &molecule = *pattern.molecule;
        QJsonArray shares;
        for (const double share : pattern.shares)
            shares.append(share);
        QJsonObject object{{u"name"_s, molecule.name}, {u"averageMass"_s, molecule.mass},
            {u"bestIndex"_s, pattern.best}, {u"coverage"_s, pattern.coverage},
            {u"intensities"_s, shares}, {u"model"_s, m_model->name()}};
        if (pattern.gridMass)
            object.insert(u"gridMass"_s, *pattern.gridMass);
        if (m_model->name() == "list"_L1)
            object.insert(u"capacity"_s, shares.size());
        if (molecule.protein) {
            object.insert(u"residues"_s, molecule.protein->length);
            object.insert(u"formula"_s, formulaText(*molecule.protein));
            object.insert(u"monoisotopicMass"_s,
                vex::MolecularMass::monoisotopic(formulaOf(*molecule.protein)));
        }
        return object;
    }

    static QByteArray csvTitle() { return "name,average_mass_Da,shift_Da,share\n"; }

    static QByteArray asCsv(const Pattern &pattern)
    {
        const QByteArray start = csvField(pattern.molecule->name).toUtf8() + ','
            + exactNumber(pattern.molecule->mass).toUtf8() + ',';
        QByteArray text;
        for (int i = 0; i < pattern.shares.size(); ++i)
            text += start + QByteArray::number(i) + ',' + exactNumber(pattern.shares[i]).toUtf8()
                + '\n';
        return text;
    }

private:
    std::shared_ptr<PatternModel> m_model;
    double m_minimalShare;
    QHash<QString, PublishedMasses> m_published;
};

/// The plots of one run, opened before the work begins and drawn behind it.
class Plots
{
public:
    /// @param path  one file for all patterns, or one each where it holds {name}
    vex::Error open(const QString &path, const QList<Molecule> &molecules)
    {
        if (path.isEmpty())
            return vex::ErrorCode::NoError;
        if (auto error = checkPlotPath(path); error.hasError())
            return passedOn(std::move(error));
        m_isOneEach = path.contains(kNamePlaceholder);
        if (!m_isOneEach && molecules.size() > kMostPlotted)
            return usageFailure(
                u"%1 patterns are too many for one plot: write {name} into the file name for one each"_s
                    .arg(molecules.size()));
        QSet<QString> files;
        for (qsizetype i = 0; i < (m_isOneEach ? molecules.size() : 1); ++i) {
            QString filled = path;
            if (m_isOneEach)
                filled.replace(kNamePlaceholder, fileNameFor(molecules[i].name));
            const QString file = vex::FileUtilsGeneric::identity(filled);
            if (files.contains(file))
                return failure(u"two patterns would be drawn into %1"_s.arg(filled));
            files.insert(file);
            auto output = Output::open(filled);
            if (output.hasError())
                return passedOn(std::move(output).error());
            m_plots.append({filled, output.value(), {}});
        }
        return vex::ErrorCode::NoError;
    }

    void add(const Pattern &pattern, qsizetype index)
    {
        if (m_plots.isEmpty())
            return;
        m_plots[m_isOneEach ? index : 0].patterns.append(
            {labelOf(*pattern.molecule), pattern.shares});
    }

    vex::Error draw(const QString &composition)
    {
        for (Plot &plot : m_plots) {
            const PlottedPattern &first = plot.patterns.constFirst();
            const QString title = plot.patterns.size() > 1
                ? u"Isotope patterns, %1"_s.arg(composition)
                : u"Isotope pattern of %1, %2"_s.arg(first.label, composition);
            auto picture = drawPatterns(plot.path, title, plot.patterns, PlotStyle::Bars);
            if (picture.hasError())
                return passedOn(std::move(picture).error());
            plot.output->write(picture.value());
        }
        return vex::ErrorCode::NoError;
    }

    vex::Error commit()
    {
        for (Plot &plot : m_plots) {
            if (auto error = plot.output->commit(); error.hasError())
                return passedOn(std::move(error));
        }
        return vex::ErrorCode::NoError;
    }

private:
    struct Plot
    {
        QString path;
        std::shared_ptr<Output> output;
        QList<PlottedPattern> patterns;
    };

    static QString fileNameFor(const QString &name)
    {
        QString result = name;
        for (QChar &character : result) {
            if (!character.isLetterOrNumber() && !u"-._"_s.contains(character))
                character = u'_';
        }
        return result;
    }

    bool m_isOneEach = false;
    QList<Plot> m_plots;
};

} // namespace

vex::Error runPattern(const QStringList &arguments)
{
    CommandLine commandLine(u"pattern"_s,
        u"Predicts isotope patterns from average masses, or from the protein sequences of a FASTA "
        "file, whose residues are summed by the library's table. A share is a part of the whole "
        "signal. The 100 peaks of the classic model end to hold it all above about 100 kDa; the "
        "list "
        "model takes as many as it is told to."_s);
    addModelOptions(&commandLine);
    commandLine.addOption({u"mass"_s}, u"Average mass in Da; more may follow."_s, u"M"_s);
    commandLine.addPositional(u"M"_s, u"More masses."_s, u"[M...]"_s);
    commandLine.addOption({u"fasta"_s}, u"Protein sequences."_s, u"FILE"_s);
    commandLine.addOption({u"published"_s},
        u"Compares the masses of the sequences with those of a CSV file: name, average, "
        "monoisotopic."_s,
        u"FILE"_s);
    commandLine.addOption({u"min-share"_s},
        u"Lowest share of a peak in the table, 0 to 1 (default 0.001)."_s, u"SHARE"_s);
    commandLine.addOption({u"o"_s, u"output"_s},
        u"Writes all peaks of each pattern to FILE as CSV, besides the table; with --json, the "
        "JSON goes there instead of to standard output."_s,
        u"FILE"_s);
    commandLine.addOption({u"plot"_s},
        u"Draws the patterns into FILE (.svg or .png); with {name} in it, one file for each."_s,
        u"FILE"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    if (auto error = commandLine.requireOneOf({u"mass"_s, u"fasta"_s}); error.hasError())
        return error;
    if (commandLine.isSet(u"published"_s) && !commandLine.isSet(u"fasta"_s))
        return usageFailure(u"--published goes with --fasta"_s);
    auto minimalShare = nonNegativeNumber(
        commandLine.isSet(u"min-share"_s) ? commandLine.value(u"min-share"_s) : u"0.001"_s,
        u"share"_s);
    if (minimalShare.hasError())
        return passedOn(std::move(minimalShare).error());
    if (minimalShare.value() > 1.0)
        return usageFailure(u"share '%1' is above 1"_s.arg(commandLine.value(u"min-share"_s)));

    auto chosen = PatternModel::fromOptions(commandLine);
    if (chosen.hasError())
        return passedOn(std::move(chosen).error());
    const std::shared_ptr<PatternModel> model = chosen.value();
    auto molecules = moleculesFrom(commandLine);
    if (molecules.hasError())
        return passedOn(std::move(molecules).error());
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
        qWarning("published masses of %s: no such sequence", qUtf8Printable(name));

    if (auto error =
            requireOtherFiles({commandLine.value(u"fasta"_s), commandLine.value(u"published"_s),
                                  commandLine.value(u"averagine"_s)},
                {commandLine.value(u"output"_s), commandLine.value(u"plot"_s)});
        error.hasError())
        return passedOn(std::move(error));
    auto shown = Output::open({});
    if (shown.hasError())
        return passedOn(std::move(shown).error());
    std::shared_ptr<Output> file;
    if (commandLine.isSet(u"output"_s)) {
        auto opened = Output::open(commandLine.value(u"output"_s));
        if (opened.hasError())
            return passedOn(std::move(opened).error());
        file = opened.value();
    }
    Plots plots;
    if (auto error = plots.open(commandLine.value(u"plot"_s), molecules.value()); error.hasError())
        return passedOn(std::move(error));

    const Report report(model, minimalShare.value(), published);
    const bool isJson = commandLine.isSet(u"json"_s);
    Output &main = *shown.value();
    QJsonArray json;
    if (file && !isJson)
        file->write(Report::csvTitle());
    Progress progress(u"predicting"_s, molecules.value().size());
    for (qsizetype i = 0; i < molecules.value().size(); ++i) {
        Pattern pattern;
        pattern.molecule = &molecules.value()[i];
        if (auto error = model->predict(pattern.molecule->mass, &pattern); error.hasError())
            return passedOn(std::move(error));
        if (const QString warning = model->warningFor(pattern.molecule->mass, pattern);
            !warning.isEmpty())
            qWarning("%s: %s", qUtf8Printable(labelOf(*pattern.molecule)), qUtf8Printable(warning));
        plots.add(pattern, i);
        if (isJson)
            json.append(report.asJson(pattern));
        else
            main.write(report.asTable(pattern));
        if (file && !isJson)
            file->write(Report::asCsv(pattern));
        if (isInterrupted())
            return failure(u"interrupted, no file was written"_s);
        progress.update(i);
    }
    if (auto error = plots.draw(model->composition()); error.hasError())
        return passedOn(std::move(error));
    if (isJson)
        (file ? *file : main).write(QJsonDocument(json).toJson());
    if (file) {
        if (auto error = file->commit(); error.hasError())
            return passedOn(std::move(error));
    }
    if (auto error = plots.commit(); error.hasError())
        return passedOn(std::move(error));
    return passedOn(main.commit());
}

} // namespace vexcli

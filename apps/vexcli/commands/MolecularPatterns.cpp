#include "commands/MolecularPatterns.h"

#include "Failure.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "input/Charges.h"
#include "input/Composition.h"
#include "input/Input.h"
#include "input/Molecules.h"
#include "input/PublishedTable.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "output/PlotFiles.h"
#include "output/Profile.h"
#include "output/Progress.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/MolecularPattern.h>

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qsizetype kMostPlotted = 12; // molecules in one plot that a reader can still tell apart
constexpr double kUsualCoverage = 0.9999;
constexpr double kMostPeaks = 1e6;
constexpr double kHeaviestAveragine = 1e7; // daltons; more would take seconds
constexpr double kLeastResolution = 10.0;
constexpr double kLargestResolution = 1e8;
// Daltons between the 13C and the 15N peak of one nominal mass: what parts first in most molecules.
constexpr double kFineSpacing = 0.0063;

/// What the options ask for.
struct Request
{
    double minimalShare = 0.0; // of a peak in a table
    double coverage = kUsualCoverage;
    qsizetype peakCount = 0; // in place of the coverage where it is not 0
    double resolution = 0.0; // of the profile; 0 for none
    bool hasAveragine = false;
};

/// The pattern of one ion.
struct IonPattern
{
    Ion ion;
    double part = 1.0; // of the mixture
    bool isMixture = false;
    qint64 firstShift = 0; // of the first peak, above the monoisotopic one
    QList<vex::MolecularPattern::Peak> peaks;
    qsizetype best = 0; // index of the highest peak
    double coverage = 0.0; // sum of the shares
    QList<double> averagine; // shares of averagine beside the peaks; empty when not asked for

    const Molecule &molecule() const { return *ion.molecule; }
    double position(qsizetype index) const { return ion.position(peaks[index].massDa); }
    QString title() const
    {
        return ion.label.isEmpty() ? molecule().name : molecule().name + ", "_L1 + ion.label;
    }
};

/// "the monoisotopic one", "7 Da above the monoisotopic one"
QString shiftText(qint64 shift)
{
    return shift == 0 ? u"the monoisotopic one"_s
                      : u"%1 Da %2 the monoisotopic one"_s.arg(
                          QString::number(qAbs(shift)), shift > 0 ? u"above"_s : u"below"_s);
}

/// Positions have equally many digits, whatever they are.
QString positionText(double position)
{
    return fixedNumber(position, 5);
}

vex::Result<Request> requestFrom(const CommandLine &commandLine, double minimalShare)
{
    Request request;
    request.minimalShare = minimalShare;
    request.hasAveragine = commandLine.isSet(u"with-averagine"_s);
    if (commandLine.isSet(u"coverage"_s) && commandLine.isSet(u"peaks"_s))
        return usageFailure(u"--coverage and --peaks exclude each other"_s);
    if (commandLine.isSet(u"coverage"_s)) {
        auto coverage = shareFromPercent(commandLine.value(u"coverage"_s), u"--coverage"_s);
        if (coverage.hasError())
            return passedOn(std::move(coverage).error());
        if (coverage.value() == 0.0)
            return usageFailure(u"--coverage 0 asks for nothing"_s);
        request.coverage = coverage.value();
    }
    if (commandLine.isSet(u"peaks"_s)) {
        auto count = wholeNumber(commandLine.value(u"peaks"_s), u"--peaks"_s, 1, kMostPeaks);
        if (count.hasError())
            return passedOn(std::move(count).error());
        request.peakCount = static_cast<qsizetype>(count.value());
    }
    if (!commandLine.isSet(u"resolution"_s))
        return request;
    auto resolution = finiteNumber(commandLine.value(u"resolution"_s), u"--resolution"_s);
    if (resolution.hasError())
        return passedOn(std::move(resolution).error());
    request.resolution = resolution.value();
    if (!(request.resolution >= kLeastResolution && request.resolution <= kLargestResolution))
        return usageFailure(
            u"--resolution %1 is not from %2 to %3"_s.arg(commandLine.value(u"resolution"_s),
                massNumber(kLeastResolution), massNumber(kLargestResolution)));
    if (commandLine.isJson())
        return usageFailure(u"--resolution and --json exclude each other: a profile is CSV"_s);
    if (commandLine.outputFile().isEmpty() && commandLine.plotFile().isEmpty())
        return usageFailure(
            u"--resolution needs a place for the profile: -o FILE, -o - or --plot FILE"_s);
    return request;
}

/// The pattern of averagine that is laid over those of molecules.
class Averagine
{
public:
    /// Room for the patterns of all @p molecules.
    vex::Error init(const QList<Molecule> &molecules)
    {
        double heaviest = 0.0; // daltons
        for (const Molecule &molecule : molecules) {
            heaviest = std::max(heaviest, molecule.averageMass());
            if (heaviest > kHeaviestAveragine)
                return failure(u"--with-averagine: %1 is heavier than %2 MDa"_s.arg(
                    molecule.name, massNumber(kHeaviestAveragine / 1e6)));
        }
        // The mean is 0.64 Da above the first peak for each kilodalton, and 10 standard deviations
        // of 0.8 Da times the root of that lie above it.
        const double peaks = 50.0 + 0.7 * heaviest / 1000.0 + 10.0 * std::sqrt(heaviest / 1000.0);
        m_model = std::make_unique<vex::AveragineIsotopeModelRefactored>(static_cast<int>(peaks));
        return passedOn(m_model->init(modernAveragine().formula));
    }

    /// The shares of @p mass daltons beside peaks of which the first is at @p firstShift.
    vex::Result<QList<double>> sharesFor(double mass, qint64 firstShift, qsizetype count)
    {
        QList<double> all;
        auto best = m_model->peakIntensityRatiosFromMass(mass, &all);
        if (best.hasError())
            return passedOn(std::move(best).error());
        QList<double> shares;
        for (qint64 shift = firstShift; shift < firstShift + count; ++shift)
            shares.append(shift >= 0 && shift < all.size() ? all[shift] : 0.0);
        return shares;
    }

private:
    std::unique_ptr<vex::AveragineIsotopeModelRefactored> m_model;
};

vex::Result<IonPattern> patternOf(const Ion &ion, const Request &request)
{
    auto pattern = request.peakCount > 0
        ? vex::MolecularPattern::ofLength(ion.formula, request.peakCount)
        : vex::MolecularPattern::holding(ion.formula, request.coverage);
    if (pattern.hasError())
        return passedOn(failure(ion.molecule->name + ": "_L1 + pattern.error().message()));
    IonPattern result;
    result.ion = ion;
    result.peaks = pattern.value().peaks();
    result.firstShift = pattern.value().firstMassNumber() - ion.formula.nominalMass();
    for (qsizetype i = 0; i < result.peaks.size(); ++i) {
        result.coverage += result.peaks[i].share;
        if (result.peaks[i].share > result.peaks[result.best].share)
            result.best = i;
    }
    return result;
}

/// How the patterns of one run are shown.
class Report
{
public:
    Report(const Request &request, const PublishedTable &published)
        : m_request(request)
        , m_published(published)
    {
    }

    QByteArray asTable(const IonPattern &pattern) const
    {
        const Molecule &molecule = pattern.molecule();
        const QString formula = molecule.formula.hillText();
        QString text = headLine(pattern.title());
        text += molecule.residueCount > 0 ? reportLine(u"sequence"_s,
                    u"%1, %2"_s.arg(counted(molecule.residueCount, u"residue"_s), formula))
                                          : reportLine(u"formula"_s, formula);
        if (molecule.hasMassShift)
            text += reportLine(u"known by mass alone"_s,
                u"%1 Da; they move the peaks, their isotopes are not known"_s.arg(
                    QString::asprintf("%+.4f", molecule.massShift)));
        text += reportLine(u"average mass"_s,
                    m_published.averageText(molecule.name, molecule.averageMass()))
            + reportLine(u"monoisotopic mass"_s,
                m_published.monoisotopicText(molecule.name, molecule.monoisotopicMass()));
        if (pattern.ion.adductCount > 0)
            text += reportLine(u"ion"_s, pattern.ion.formula.hillText());
        if (pattern.isMixture)
            text += reportLine(
                u"part of the mixture"_s, u"%1 %"_s.arg(fixedNumber(100.0 * pattern.part, 2)));
        const qsizetype best = pattern.best;
        const QString position = pattern.ion.charge() == 0
            ? positionText(pattern.position(best)) + " Da"_L1
            : "m/z "_L1 + positionText(pattern.position(best));
        text += reportLine(u"most intense peak"_s,
            u"%1, %2, %3 % of the signal"_s.arg(position, shiftText(pattern.firstShift + best),
                fixedNumber(100.0 * pattern.peaks[best].share, 2)));
        const QString peaks = counted(pattern.peaks.size(), u"peak"_s);
        text += reportLine(peaks + (pattern.peaks.size() == 1 ? " holds"_L1 : " hold"_L1),
            u"%1 % of the signal"_s.arg(fixedNumber(100.0 * pattern.coverage, 3)));
        return text.toUtf8() + peakTableOf(pattern) + '\n';
    }

    QJsonObject asJson(const IonPattern &pattern) const
    {
        const Molecule &molecule = pattern.molecule();
        const bool isIon = pattern.ion.charge() != 0;
        QJsonArray peaks;
        for (qsizetype i = 0; i < pattern.peaks.size(); ++i) {
            QJsonObject peak{{u"shiftDa"_s, pattern.firstShift + i},
                {isIon ? u"mz"_s : u"massDa"_s, pattern.position(i)},
                {u"share"_s, pattern.peaks[i].share}};
            if (!pattern.averagine.isEmpty())
                peak.insert(u"averagineShare"_s, pattern.averagine[i]);
            peaks.append(peak);
        }
        QJsonObject object{{u"name"_s, molecule.name}, {u"model"_s, u"exact"_s},
            {u"formula"_s, molecule.formula.hillText()},
            {u"averageMassDa"_s, molecule.averageMass()},
            {u"monoisotopicMassDa"_s, molecule.monoisotopicMass()},
            {u"massShiftDa"_s,
                molecule.hasMassShift ? QJsonValue(molecule.massShift) : QJsonValue()},
            {u"charge"_s, pattern.ion.charge()},
            {u"ion"_s, isIon ? QJsonValue(pattern.ion.label) : QJsonValue()},
            {u"ionFormula"_s, pattern.ion.formula.hillText()}, {u"weight"_s, molecule.weight},
            {u"coverage"_s, pattern.coverage}, {u"peakCount"_s, pattern.peaks.size()},
            {u"bestIndex"_s, pattern.best}, {u"peaks"_s, peaks}};
        if (molecule.residueCount > 0) {
            object.insert(u"residueCount"_s, molecule.residueCount);
            object.insert(u"oddResidues"_s, jsonOf(molecule.odd));
        }
        return object;
    }

    QByteArray csvTitle() const
    {
        return m_request.hasAveragine
            ? "name,formula,charge,ion,shift_Da,mass_Da,mz,share,weight,averagine_share\n"
            : "name,formula,charge,ion,shift_Da,mass_Da,mz,share,weight\n";
    }

    static QByteArray asCsv(const IonPattern &pattern)
    {
        const Molecule &molecule = pattern.molecule();
        const bool isIon = pattern.ion.charge() != 0;
        const QString start = csvField(molecule.name) + u',' + csvField(molecule.formula.hillText())
            + u',' + QString::number(pattern.ion.charge()) + u',' + pattern.ion.label + u',';
        QString text;
        for (qsizetype i = 0; i < pattern.peaks.size(); ++i) {
            const QString position = exactNumber(pattern.position(i));
            text += start + QString::number(pattern.firstShift + i)
                + (isIon ? ",,"_L1 + position : u',' + position + u',') + u','
                + exactNumber(pattern.peaks[i].share) + u',' + exactNumber(molecule.weight)
                + (pattern.averagine.isEmpty() ? QString()
                                               : u',' + exactNumber(pattern.averagine[i]))
                + u'\n';
        }
        return text.toUtf8();
    }

private:
    QByteArray peakTableOf(const IonPattern &pattern) const
    {
        QStringList titles{u"shift/Da"_s, pattern.ion.charge() == 0 ? u"mass/Da"_s : u"m/z"_s,
            u"share/%"_s, u"of highest/%"_s};
        if (m_request.hasAveragine)
            titles.append(u"averagine/%"_s);
        Table table(titles + QStringList(QString()));
        for (qsizetype i = 0; i < pattern.peaks.size(); ++i) {
            const double share = pattern.peaks[i].share;
            if (share < m_request.minimalShare)
                continue;
            const double relative = share / pattern.peaks[pattern.best].share;
            QStringList row{QString::number(pattern.firstShift + i),
                positionText(pattern.position(i)), fixedNumber(100.0 * share, 3),
                fixedNumber(100.0 * relative, 1)};
            if (m_request.hasAveragine)
                row.append(fixedNumber(100.0 * pattern.averagine[i], 3));
            table.addRow(row + QStringList(bar(relative)));
        }
        return table.isEmpty() ? QByteArray() : table.toText(2);
    }

    const Request &m_request;
    const PublishedTable &m_published;
};

/// What is drawn and what becomes a profile: the peaks of all ions, as parts of the mixture.
class Spectrum
{
public:
    explicit Spectrum(double resolution)
        : m_resolution(resolution)
    {
    }

    void add(const IonPattern &pattern)
    {
        if (m_curves.isEmpty() || m_curves.last().name != pattern.molecule().name)
            m_curves.append({pattern.molecule().name, {}, {}});
        Curve &curve = m_curves.last();
        m_isMixture = pattern.isMixture;
        m_xTitle = pattern.ion.positionTitle();
        m_title = pattern.title();
        ++m_ionCount;
        if (!pattern.averagine.isEmpty()) // the line falls to 0 between two ions
            curve.averagine.append({2.0 * pattern.position(0) - positionBehind(pattern, 0), 0.0});
        for (qsizetype i = 0; i < pattern.peaks.size(); ++i) {
            const double position = pattern.position(i);
            curve.peaks.append({position, pattern.part * pattern.peaks[i].share});
            if (!pattern.averagine.isEmpty())
                curve.averagine.append({position, 100.0 * pattern.part * pattern.averagine[i]});
        }
        if (!pattern.averagine.isEmpty()) {
            const qsizetype last = pattern.peaks.size() - 1;
            curve.averagine.append({positionBehind(pattern, last), 0.0});
        }
        const double height = pattern.part * pattern.peaks[pattern.best].share;
        if (height > m_highest.y())
            m_highest = {pattern.position(pattern.best), height};
    }

    /// The sum of all peaks at the resolution.
    QList<QPointF> profile() const
    {
        QList<QPointF> peaks;
        for (const Curve &curve : m_curves)
            peaks += curve.peaks;
        return profileOf(std::move(peaks), m_resolution);
    }

    bool isEmpty() const { return m_curves.isEmpty(); }
    QString xTitle() const { return m_xTitle; }

    QString title() const
    {
        const QString what = m_isMixture ? u"Isotope pattern of the mixture"_s
            : m_curves.size() > 1        ? u"Isotope patterns"_s
            : m_ionCount > 1             ? "Isotope patterns of "_L1 + m_curves.first().name
                                         : "Isotope pattern of "_L1 + m_title;
        return m_resolution > 0.0
            ? u"%1 at a resolution of %2"_s.arg(what, massNumber(m_resolution))
            : what;
    }

    PlottedPanel panel() const
    {
        PlottedPanel panel;
        panel.yTitle = m_isMixture ? u"part of the mixture's signal / %"_s
            : m_resolution > 0.0   ? u"height / % of an ion's whole signal"_s
            : m_ionCount > 1       ? u"share of each ion's signal / %"_s
                                   : u"share of the whole signal / %"_s;
        if (m_resolution > 0.0)
            panel.curves.append({u"profile"_s, inPercent(profile()), PlottedCurve::Line});
        for (const Curve &curve : m_curves) {
            if (m_resolution == 0.0)
                panel.curves.append({curve.name, inPercent(curve.peaks), PlottedCurve::Sticks});
        }
        for (const Curve &curve : m_curves) {
            if (!curve.averagine.isEmpty())
                panel.curves.append({m_curves.size() > 1 ? "averagine as heavy as "_L1 + curve.name
                                                         : u"averagine of the same mass"_s,
                    curve.averagine, PlottedCurve::Line});
        }
        const QPointF highest = m_resolution > 0.0 ? highestOf(panel.curves.first().points)
                                                   : QPointF(m_highest.x(), 100.0 * m_highest.y());
        if (m_ionCount == m_curves.size()) // between charge states it would tell nothing
            panel.marks.append({u"highest, %1 %2"_s.arg(m_xTitle == "m/z"_L1 ? u"m/z"_s : u"mass"_s,
                                    positionText(highest.x())),
                {highest}});
        return panel;
    }

private:
    /// The peaks of one molecule, in all its ions.
    struct Curve
    {
        QString name;
        QList<QPointF> peaks;
        QList<QPointF> averagine; // in percent
    };

    static QList<QPointF> inPercent(QList<QPointF> points)
    {
        for (QPointF &point : points)
            point.ry() *= 100.0;
        return points;
    }

    static QPointF highestOf(const QList<QPointF> &points)
    {
        return *std::max_element(points.begin(), points.end(),
            [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); });
    }

    /// Where the peak behind @p index is, or would be.
    static double positionBehind(const IonPattern &pattern, qsizetype index)
    {
        return pattern.position(index) + 1.0 / std::max(1, std::abs(pattern.ion.charge()));
    }

    double m_resolution;
    QList<Curve> m_curves;
    QString m_xTitle;
    QString m_title; // of the last ion
    qsizetype m_ionCount = 0;
    bool m_isMixture = false;
    QPointF m_highest; // share
};

QByteArray profileTitleOf(const QString &xTitle)
{
    return xTitle == "m/z"_L1 ? "m/z,relative intensity\n" : "mass (Da),relative intensity\n";
}

/// A profile as CSV. Rounded to what an instrument could tell; so it is the same everywhere.
QByteArray csvOf(const QList<QPointF> &profile, const QByteArray &title)
{
    QByteArray text = title;
    for (const QPointF &point : profile)
        text += QByteArray::number(point.x(), 'f', 7) + ',' + QByteArray::number(point.y(), 'g', 9)
            + '\n';
    return text;
}

/// All ions, and whether they can share an axis.
vex::Result<QList<Ion>> ionsOf(
    const QList<Molecule> &molecules, const Charges &charges, bool isOneAxis)
{
    QList<Ion> ions;
    for (const Molecule &molecule : molecules) {
        for (qsizetype i = 0; i < charges.count(); ++i) {
            auto ion = charges.ionOf(molecule, i);
            if (ion.hasError())
                return passedOn(std::move(ion).error());
            ions.append(std::move(ion).value());
            const Ion &first = ions.first();
            if (isOneAxis && (ions.last().charge() == 0) != (first.charge() == 0))
                return usageFailure(
                    u"%1 has a charge and %2 has none: a mass and an m/z share no axis"_s.arg(
                        first.charge() == 0 ? molecule.name : first.molecule->name,
                        first.charge() == 0 ? first.molecule->name : molecule.name));
        }
    }
    return ions;
}

/// Warns where the isotopes of one nominal mass would part.
void warnOfFineStructure(const IonPattern &pattern, double resolution)
{
    if (resolution > 0.0 && pattern.molecule().formula.atoms().size() > 1
        && pattern.molecule().averageMass() / resolution < kFineSpacing)
        warn(u"%1: at a resolution of %2 an instrument begins to part the isotopes of one nominal "
             "mass; the profile keeps them as one peak"_s.arg(
                 pattern.title(), massNumber(resolution)));
}

} // namespace

void addMolecularPatternOptions(CommandLine *commandLine)
{
    addMoleculeOptions(commandLine);
    PublishedTable::addOption(commandLine);
    Charges::addOptions(commandLine);
    commandLine->addOption({u"coverage"_s},
        u"How much of the signal the peaks of a molecule hold, in percent (default %1)."_s.arg(
            percentNumber(kUsualCoverage)),
        u"PERCENT"_s);
    commandLine->addOption(
        {u"peaks"_s}, u"How many peaks of a molecule are shown, in place of --coverage."_s, u"N"_s);
    commandLine->addOption({u"resolution"_s},
        u"Makes -o and --plot a profile: Gaussian peaks, each as wide at half its height as its "
        "m/z divided by N."_s,
        u"N"_s);
    commandLine->addFlag(u"with-averagine"_s,
        u"Shows averagine of the same average mass beside each molecule, peak by peak, and as a "
        u"line "
        "in the plot."_s);
}

QStringList molecularPatternOptions()
{
    return moleculeOptions()
        + QStringList{u"charge"_s, u"adduct"_s, u"coverage"_s, u"peaks"_s, u"resolution"_s,
            u"with-averagine"_s};
}

vex::Error predictMolecularPatterns(
    const CommandLine &commandLine, double minimalShare, Results *results)
{
    const auto request = requestFrom(commandLine, minimalShare);
    if (request.hasError())
        return passedOn(request.error());
    const auto charges = Charges::fromOptions(commandLine);
    if (charges.hasError())
        return passedOn(charges.error());
    BadRecords bad(commandLine.isSet(u"keep-going"_s));
    const auto molecules = readMolecules(commandLine, &bad);
    if (molecules.hasError())
        return passedOn(molecules.error());
    const auto published = PublishedTable::fromOptions(commandLine);
    if (published.hasError())
        return passedOn(published.error());
    QStringList names;
    double weights = 0.0;
    bool isMixture = false;
    for (const Molecule &molecule : molecules.value()) {
        names.append(molecule.name);
        weights += molecule.weight;
        isMixture = isMixture || molecule.isWeighted;
    }
    if (!commandLine.isSet(u"only"_s))
        published.value().warnOfOthers(names);
    const auto files = plotFilesFor(commandLine, names, kMostPlotted);
    if (files.hasError())
        return passedOn(files.error());
    const bool isProfile = request.value().resolution > 0.0;
    const auto ions =
        ionsOf(molecules.value(), charges.value(), isProfile || files.value().size() == 1);
    if (ions.hasError())
        return passedOn(ions.error());
    Averagine averagine;
    if (request.value().hasAveragine) {
        if (auto error = averagine.init(molecules.value()); error.hasError())
            return passedOn(std::move(error));
    }

    const Report report(request.value(), published.value());
    Output *const file = results->file();
    std::optional<JsonArrayWriter> json;
    if (commandLine.isJson())
        json.emplace(file ? file : results->standard(), commandLine.jsonLayout());
    else if (file && !isProfile && !commandLine.isSet(u"no-header"_s))
        file->write(report.csvTitle());
    QList<Spectrum> spectra(files.value().size(), Spectrum(request.value().resolution));
    Spectrum whole(request.value().resolution); // for a profile in a file
    Progress progress(u"predicting"_s, ions.value().size());
    for (qsizetype i = 0; i < ions.value().size(); ++i) {
        auto predicted = patternOf(ions.value()[i], request.value());
        if (predicted.hasError())
            return passedOn(std::move(predicted).error());
        IonPattern pattern = std::move(predicted).value();
        pattern.isMixture = isMixture;
        pattern.part = isMixture ? pattern.molecule().weight / weights : 1.0;
        if (request.value().hasAveragine) {
            auto shares = averagine.sharesFor(
                pattern.molecule().averageMass(), pattern.firstShift, pattern.peaks.size());
            if (shares.hasError())
                return passedOn(std::move(shares).error());
            pattern.averagine = std::move(shares).value();
        }
        warnOfFineStructure(pattern, request.value().resolution);
        const qsizetype molecule = i / charges.value().count();
        if (!files.value().isEmpty())
            spectra[files.value().size() > 1 ? molecule : 0].add(pattern);
        if (isProfile && file)
            whole.add(pattern);
        if (json) {
            json->add(report.asJson(pattern));
        } else {
            if (results->standard())
                results->print(report.asTable(pattern));
            if (file && !isProfile)
                file->write(Report::asCsv(pattern));
        }
        if (isInterrupted())
            return interrupted();
        progress.update(i);
    }
    if (json)
        json->end();
    if (isProfile && file)
        file->write(csvOf(whole.profile(),
            commandLine.isSet(u"no-header"_s) ? QByteArray() : profileTitleOf(whole.xTitle())));
    for (qsizetype i = 0; i < files.value().size(); ++i) {
        const Spectrum &spectrum = spectra[i];
        if (spectrum.isEmpty())
            continue;
        results->addPlot(files.value()[i],
            [title = spectrum.title(), x = spectrum.xTitle(), panel = spectrum.panel()](
                const QString &path) { return drawCurves(path, title, x, {panel}); });
    }
    results->setVerdict(bad.verdict());
    return vex::ErrorCode::NoError;
}

} // namespace vexcli

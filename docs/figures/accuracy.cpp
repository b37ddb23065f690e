// Data behind the figures and tables of docs/accuracy.md: writes coverage.csv, mono-error.csv,
// mono-percentiles.csv, patterns.csv and pattern-percentiles.csv into the folder that is its one
// argument. Draws nothing at random that a second run would draw differently.

#include <QDir>
#include <QFile>
#include <QList>
#include <QString>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/FormulaParser.h>
#include <vex/MolecularFormula.h>
#include <vex/MolecularMass.h>
#include <vex/ResidueCompositions.h>

using namespace Qt::StringLiterals;

namespace {

// Averagine of Senko, Beu and McLafferty 1995, times 10000: the parser drops decimal points.
const QString kAveragine = u"C49384 H77583 N13577 O14773 S417"_s;

struct KnownProtein
{
    const char *name;
    QString formula;
};

// Formulas of the whole molecules: insulin with its three disulfide bridges, albumin reduced,
// trastuzumab without glycans.
const std::array kKnown{
    KnownProtein{"insulin", u"C257H383N65O77S6"_s},
    KnownProtein{"ubiquitin", u"C378H629N105O118S1"_s},
    KnownProtein{"cytochrome c", u"C524H840N144O151S4"_s},
    KnownProtein{"apomyoglobin", u"C769H1212N210O218S2"_s},
    KnownProtein{"serum albumin", u"C2934H4615N781O897S39"_s},
    KnownProtein{"trastuzumab", u"C6470H10012N1726O2013S42"_s},
};

// Further molecules for the patterns, as they occur: disulfide bridges closed, the C-terminus of
// melittin an amide. Metallothionein-2, human, is without metal and without the acetyl group.
const QString kMetallothionein = u"MDPNCSCAAGDSCTCAGSCKCKECKCTSCKKSCCSCCPVGCAKCAQGCICKGASDKCSCCA"_s;
const std::array kFurther{
    KnownProtein{"melittin", u"C131H229N39O31"_s},
    KnownProtein{"glucagon", u"C153H225N43O49S1"_s},
    KnownProtein{"aprotinin", u"C284H432N84O79S7"_s},
    KnownProtein{"ribonuclease A", u"C575H901N171O193S12"_s},
    KnownProtein{"lysozyme", u"C613H951N193O185S10"_s},
};

struct Isotopes
{
    vex::MolecularFormula::AtomType type;
    std::array<double, 3> abundances; // fractions, by nominal mass shift
};

// The element table of the library: docs/constants.md.
constexpr std::array kIsotopes{Isotopes{vex::MolecularFormula::C, {0.9893, 0.0107}},
    Isotopes{vex::MolecularFormula::H, {0.999885, 0.000115}},
    Isotopes{vex::MolecularFormula::N, {0.99632, 0.00368}},
    Isotopes{vex::MolecularFormula::O, {0.99757, 0.00038, 0.00205}},
    Isotopes{vex::MolecularFormula::S, {0.9493, 0.0076, 0.0431}}};

struct ResidueShare
{
    char code;
    int share; // hundredths of a percent
};

// Amino-acid composition of the UniProtKB/Swiss-Prot database, release statistics of about 2021.
constexpr std::array kResidues{ResidueShare{'A', 825}, ResidueShare{'R', 553},
    ResidueShare{'N', 406}, ResidueShare{'D', 546}, ResidueShare{'C', 138}, ResidueShare{'Q', 393},
    ResidueShare{'E', 672}, ResidueShare{'G', 707}, ResidueShare{'H', 227}, ResidueShare{'I', 591},
    ResidueShare{'L', 965}, ResidueShare{'K', 580}, ResidueShare{'M', 241}, ResidueShare{'F', 386},
    ResidueShare{'P', 474}, ResidueShare{'S', 664}, ResidueShare{'T', 535}, ResidueShare{'W', 110},
    ResidueShare{'Y', 292}, ResidueShare{'V', 686}};

constexpr int kSequences = 40'000;
constexpr std::size_t kPatterns = 10'000; // of these, patterns are compared of
constexpr double kHeaviestPattern = 100'000.0; // daltons
constexpr int kShortest = 50; // residues
constexpr int kLongest = 3000;
constexpr std::size_t kPoolSize = 80; // residues that one protein's own frequencies come from
constexpr quint64 kSeed = 1995;

/// Random numbers that are the same with every standard library.
class Random
{
public:
    /// Uniform, 0 <= result < 1.
    double fraction() { return static_cast<double>(m_engine() >> 11) * 0x1p-53; }

private:
    std::mt19937_64 m_engine{kSeed};
};

vex::MolecularFormula parsed(const QString &text)
{
    QHash<vex::MolecularFormula::AtomType, double> counts;
    if (vex::FormulaParser::molecularFormulaHashFromString(text, &counts).hasError())
        qFatal("unreadable formula %s", qPrintable(text));
    vex::MolecularFormula formula;
    formula.setMolecularFormula(counts);
    return formula;
}

const vex::ResidueCompositions::AtomCounts &residue(char code)
{
    return *vex::ResidueCompositions::find(std::string_view(&code, 1));
}

char drawnResidue(Random *random)
{
    static const int total = std::accumulate(kResidues.begin(), kResidues.end(), 0,
        [](int sum, const ResidueShare &residue) { return sum + residue.share; });
    int rest = static_cast<int>(random->fraction() * total);
    for (const ResidueShare &residue : kResidues) {
        rest -= residue.share;
        if (rest < 0)
            return residue.code;
    }
    Q_UNREACHABLE();
}

template <typename Codes>
vex::MolecularFormula formulaOf(const Codes &codes)
{
    vex::ResidueCompositions::AtomCounts atoms = residue('1'); // water
    for (const char code : codes) {
        const auto &added = residue(code);
        std::transform(atoms.begin(), atoms.end(), added.begin(), atoms.begin(), std::plus());
    }
    using vex::MolecularFormula;
    vex::MolecularFormula formula;
    formula.setMolecularFormula({{MolecularFormula::C, atoms[0]}, {MolecularFormula::H, atoms[1]},
        {MolecularFormula::N, atoms[2]}, {MolecularFormula::O, atoms[3]},
        {MolecularFormula::S, atoms[4]}});
    return formula;
}

/// A protein whose composition differs from the average one about as real ones do: its residues
/// are drawn from a pool that was itself drawn from the average composition.
vex::MolecularFormula drawnProtein(Random *random)
{
    std::array<char, kPoolSize> pool;
    for (char &code : pool)
        code = drawnResidue(random);
    std::string codes(static_cast<std::size_t>(
                          kShortest * std::pow(double{kLongest} / kShortest, random->fraction())),
        '\0');
    for (char &code : codes)
        code = pool[static_cast<std::size_t>(random->fraction() * kPoolSize)];
    return formulaOf(codes);
}

/// The first 100 peaks of @p mers mers with nothing cut on the way: coefficients of the power of
/// the one-mer pattern (Knuth, The Art of Computer Programming 2, 4.7).
std::vector<double> uncutPattern(const QList<double> &mer, double mers)
{
    std::vector<double> power(vex::AveragineIsotopeModel::kPeakCount);
    power[0] = std::pow(mer[0], mers);
    for (std::size_t k = 1; k < power.size(); ++k) {
        double sum = 0.0;
        for (std::size_t i = 1; i <= k && i < 4; ++i) {
            const double weight = static_cast<double>(i) * (mers + 1.0) - static_cast<double>(k);
            sum += weight * mer[static_cast<qsizetype>(i)] * power[k - i];
        }
        power[k] = sum / (static_cast<double>(k) * mer[0]);
    }
    return power;
}

struct MassError
{
    double average; // daltons
    double error; // daltons
    double ppm() const { return error / average * 1e6; }
};

/// What the model's monoisotopic mass is too high by.
MassError errorFor(const vex::AveragineIsotopeModel &model, const vex::MolecularFormula &formula)
{
    const double average = vex::MolecularMass::average(formula);
    return {
        average, model.getMonoFromAverageMer(average) - vex::MolecularMass::monoisotopic(formula)};
}

double percentile(const std::vector<double> &sorted, double percent)
{
    const double position = percent / 100.0 * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, sorted.size() - 1);
    return std::lerp(sorted[below], sorted[above], position - std::floor(position));
}

template <typename Model>
QList<double> patternOf(const Model &model, double mass)
{
    QList<double> pattern;
    if (model.peakIntensityRatiosFromMass(mass, &pattern).hasError())
        qFatal("no pattern at %g Da", mass);
    return pattern;
}

/// The first 100 peaks of @p formula, atom by atom with nothing cut.
std::vector<double> exactPattern(const vex::MolecularFormula &formula)
{
    std::vector<double> pattern(vex::AveragineIsotopeModel::kPeakCount);
    pattern[0] = 1.0;
    for (const auto &[type, abundances] : kIsotopes) {
        for (int atom = static_cast<int>(formula.count(type)); atom > 0; --atom) {
            for (std::size_t k = pattern.size() - 1; k > 1; --k)
                pattern[k] = pattern[k] * abundances[0] + pattern[k - 1] * abundances[1]
                    + pattern[k - 2] * abundances[2];
            pattern[1] = pattern[1] * abundances[0] + pattern[0] * abundances[1];
            pattern[0] *= abundances[0];
        }
    }
    return pattern;
}

/// A pattern of the model beside the exact one of the molecule.
struct PatternError
{
    double percent; // largest error of a peak, of the highest
    qsizetype highest; // index of the highest peak
};

struct PatternErrors
{
    double average; // daltons
    qsizetype highest; // index of the highest peak of the exact pattern
    PatternError averagine;
    PatternError own; // the model set up with the molecule's own counts
    PatternError listBased; // the same of the list-based model
};

constexpr std::array kModels{
    &PatternErrors::averagine, &PatternErrors::own, &PatternErrors::listBased};
constexpr std::array kModelNames{"averagine", "own", "list_based"};

PatternErrors patternErrors(
    const vex::AveragineIsotopeModel &averagine, const vex::MolecularFormula &formula)
{
    const double mass = vex::MolecularMass::average(formula);
    const std::vector<double> exact = exactPattern(formula);
    const auto highest = std::max_element(exact.begin(), exact.end());
    const auto compared = [&](const auto &model) {
        const QList<double> pattern = patternOf(model, mass);
        double worst = 0.0;
        for (std::size_t k = 0; k < exact.size(); ++k)
            worst = std::max(worst, std::fabs(pattern[static_cast<qsizetype>(k)] - exact[k]));
        return PatternError{100.0 * worst / *highest,
            std::max_element(pattern.begin(), pattern.end()) - pattern.begin()};
    };
    vex::AveragineIsotopeModel own;
    vex::AveragineIsotopeModelRefactored listBased(vex::AveragineIsotopeModel::kPeakCount);
    if (own.init(formula).hasError() || listBased.init(formula).hasError())
        qFatal("no model of a molecule");
    return {mass, highest - exact.begin(), compared(averagine), compared(own), compared(listBased)};
}

void writePatterns(const vex::AveragineIsotopeModel &averagine, QTextStream &out)
{
    out << "name,average_kDa,highest";
    for (const char *model : kModelNames)
        out << ',' << model << "_percent," << model << "_highest";
    out << '\n';
    const auto write = [&](const char *name, const vex::MolecularFormula &formula) {
        const PatternErrors errors = patternErrors(averagine, formula);
        out << name << ',' << errors.average / 1000.0 << ',' << errors.highest;
        for (const auto model : kModels)
            out << ',' << (errors.*model).percent << ',' << (errors.*model).highest;
        out << '\n';
    };
    for (const KnownProtein &protein : kKnown)
        write(protein.name, parsed(protein.formula));
    for (const KnownProtein &protein : kFurther)
        write(protein.name, parsed(protein.formula));
    write("metallothionein-2", formulaOf(kMetallothionein.toLatin1()));
}

void writePatternPercentiles(const std::vector<PatternErrors> &errors, QTextStream &out)
{
    constexpr std::array kPercents{50, 95, 100};
    constexpr std::array kBounds{5.5, 10.0, 20.0, 50.0, 100.0};
    out << "from_kDa,to_kDa,count";
    for (const char *model : kModelNames) {
        for (const int percent : kPercents)
            out << ',' << model << "_p" << percent << "_percent";
        out << ',' << model << "_highest_right," << model << "_highest_within_1";
    }
    out << '\n';
    for (std::size_t bin = 0; bin + 1 < kBounds.size(); ++bin) {
        std::vector<PatternErrors> inside;
        std::copy_if(errors.begin(), errors.end(), std::back_inserter(inside),
            [&](const PatternErrors &error) {
                return error.average >= 1000.0 * kBounds[bin]
                    && error.average < 1000.0 * kBounds[bin + 1];
            });
        out << kBounds[bin] << ',' << kBounds[bin + 1] << ',' << inside.size();
        for (const auto model : kModels) {
            std::vector<double> percents;
            std::array<double, 2> within{}; // shares with the highest peak right, and off by 1
            for (const PatternErrors &error : inside) {
                percents.push_back((error.*model).percent);
                const qsizetype distance = std::abs((error.*model).highest - error.highest);
                for (std::size_t i = 0; i < within.size(); ++i)
                    within[i] += distance <= static_cast<qsizetype>(i);
            }
            std::sort(percents.begin(), percents.end());
            for (const int percent : kPercents)
                out << ',' << percentile(percents, percent);
            for (const double count : within)
                out << ',' << count / static_cast<double>(inside.size());
        }
        out << '\n';
    }
}

void writeCoverage(const vex::AveragineIsotopeModel &model, QTextStream &out)
{
    const QList<double> mer = patternOf(model, model.merMass());
    out << "mass_kDa,model,hundred_peaks,worst_peak_percent_of_highest\n";
    for (int kilodaltons = 1; kilodaltons <= 250; ++kilodaltons) {
        const double mass = 1000.0 * kilodaltons;
        const std::vector<double> uncut = uncutPattern(mer, std::round(mass / model.merMass()));
        const QList<double> pattern = patternOf(model, mass);
        double worst = 0.0;
        for (std::size_t k = 0; k < uncut.size(); ++k)
            worst = std::max(worst, std::fabs(pattern[static_cast<qsizetype>(k)] - uncut[k]));
        out << kilodaltons << ',' << model.signalCoverage(mass) << ','
            << std::accumulate(uncut.begin(), uncut.end(), 0.0) << ','
            << 100.0 * worst / *std::max_element(uncut.begin(), uncut.end()) << '\n';
    }
}

void writePercentiles(const std::vector<MassError> &errors, QTextStream &out)
{
    constexpr std::array kPercents{1, 5, 25, 50, 75, 95, 99};
    constexpr std::array kBounds{
        5.5, 10.0, 20.0, 30.0, 50.0, 75.0, 100.0, 150.0, 200.0, 250.0, 330.0};
    out << "from_kDa,to_kDa,count,share_beyond_half_dalton";
    for (const char *unit : {"Da", "ppm"}) {
        for (const int percent : kPercents)
            out << ",p" << percent << '_' << unit;
    }
    out << '\n';
    for (std::size_t bin = 0; bin + 1 < kBounds.size(); ++bin) {
        std::vector<double> daltons;
        std::vector<double> ppms;
        for (const MassError &error : errors) {
            if (error.average < 1000.0 * kBounds[bin] || error.average >= 1000.0 * kBounds[bin + 1])
                continue;
            daltons.push_back(error.error);
            ppms.push_back(error.ppm());
        }
        std::sort(daltons.begin(), daltons.end());
        std::sort(ppms.begin(), ppms.end());
        const auto beyond = std::count_if(
            daltons.begin(), daltons.end(), [](double error) { return std::fabs(error) > 0.5; });
        out << kBounds[bin] << ',' << kBounds[bin + 1] << ',' << daltons.size() << ','
            << static_cast<double>(beyond) / static_cast<double>(daltons.size());
        for (const auto *values : {&daltons, &ppms}) {
            for (const int percent : kPercents)
                out << ',' << percentile(*values, percent);
        }
        out << '\n';
    }
}

template <typename Write>
bool writeFile(const QString &path, Write write)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        std::fprintf(stderr, "vex_accuracy_figures: %s: %s\n", qPrintable(path),
            qPrintable(file.errorString()));
        return false;
    }
    QTextStream out(&file);
    out.setRealNumberPrecision(9);
    write(out);
    out.flush();
    return out.status() == QTextStream::Ok;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: vex_accuracy_figures FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));

    vex::AveragineIsotopeModel model;
    if (model.init(parsed(kAveragine)).hasError())
        return 1;

    Random random;
    std::vector<MassError> drawn;
    drawn.reserve(kSequences);
    std::vector<PatternErrors> patterns;
    for (int i = 0; i < kSequences; ++i) {
        const vex::MolecularFormula formula = drawnProtein(&random);
        drawn.push_back(errorFor(model, formula));
        if (patterns.size() < kPatterns && drawn.back().average < kHeaviestPattern)
            patterns.push_back(patternErrors(model, formula));
    }

    const bool written = writeFile(folder.filePath(u"coverage.csv"_s), [&](QTextStream &out) {
        writeCoverage(model, out);
    }) && writeFile(folder.filePath(u"mono-percentiles.csv"_s), [&](QTextStream &out) {
        writePercentiles(drawn, out);
    }) && writeFile(folder.filePath(u"patterns.csv"_s), [&](QTextStream &out) {
        writePatterns(model, out);
    }) && writeFile(folder.filePath(u"pattern-percentiles.csv"_s), [&](QTextStream &out) {
        writePatternPercentiles(patterns, out);
    }) && writeFile(folder.filePath(u"mono-error.csv"_s), [&](QTextStream &out) {
        constexpr std::size_t kShown = 500; // dots in the figure
        out << "kind,name,average_kDa,error_Da,error_ppm\n";
        for (const KnownProtein &protein : kKnown) {
            const MassError error = errorFor(model, parsed(protein.formula));
            out << "known," << protein.name << ',' << error.average / 1000.0 << ',' << error.error
                << ',' << error.ppm() << '\n';
        }
        for (std::size_t i = 0; i < kShown; ++i) {
            out << "drawn,," << drawn[i].average / 1000.0 << ',' << drawn[i].error << ','
                << drawn[i].ppm() << '\n';
        }
    });
    return written ? 0 : 1;
}

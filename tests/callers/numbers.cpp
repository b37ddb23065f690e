// Asks the library for numbers and compares a hash of their bits with a recorded one, the same on
// every platform. Built twice, with flags that the library is not built with: what is inline in its
// headers would take them. The inputs are whole numbers and single products, which no flag changes.
#include <QCryptographicHash>

#include <vex/ChemicalFormula.h>
#include <vex/MolecularPattern.h>
#include <vex/ApexFinder.h>
#include <vex/AveragineIsotopeDistribution.h>
#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/PlotUtilities.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <tuple>

namespace {

using Answers = QList<double>;

/// False when the answers to a group of questions are others than those recorded.
bool areSame(const char *name, const Answers &answers, const char *recorded)
{
    const QByteArrayView bytes(
        reinterpret_cast<const char *>(answers.data()), answers.size() * qsizetype{sizeof(double)});
    const auto hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
    std::printf("%-14s %.16s, recorded %s\n", name, hash.data(), recorded);
    return hash.startsWith(recorded);
}

/// A signal that goes up and down, with gaps of different width.
vex::PlotBase signal(int seed)
{
    vex::PlotBase plot;
    for (int i = 0; i < 400; ++i)
        plot.points().append({(10 * i + i * seed % 7) * 0.0011, i * i * seed % 311 * 0.37});
    return plot;
}

Answers ofTable(const vex::AveragineIsotopeDistribution &table, double step)
{
    Answers answers;
    for (int i = 0; i < 9000; ++i) {
        for (int peak = 0; peak < 50; ++peak)
            answers.append(table.isotopeFractionInterpolated(i * step, peak));
        const auto &shares = table.isotopeIntensityFractions(i * step);
        answers.append(Answers(shares.begin(), shares.end()));
    }
    return answers;
}

template <typename Model>
Answers ofModel(const vex::MolecularFormula &composition)
{
    Answers answers;
    Model model;
    std::ignore = model.init(composition); // never an error for this composition
    QList<double> pattern;
    for (int i = 1; i < 300; ++i) {
        const double mass = i * i * 1.37;
        answers.append(model.peakIntensityRatiosFromMass(mass, &pattern).value());
        answers.append(pattern);
        answers.append(Answers{model.getMonoFromAverageMer(mass),
            model.getAverageFromMonoMass(mass), model.signalCoverage(mass), model.merMass()});
    }
    return answers;
}

Answers ofMolecules()
{
    Answers answers;
    for (const char16_t *text :
        {u"C8H10N4O2", u"CaCl2", u"C378H629N105O118S", u"C6464H9960N1720O2008S46",
            u"C44468H69860N12226O13302S375", u"Sn300Xe100", u"S14", u"K3[Fe(CN)6]", u"C10000000"}) {
        const auto formula = vex::ChemicalFormula::read(text).value();
        for (const double share : {0.5, 0.9999, 1.0}) {
            const auto pattern = vex::MolecularPattern::holding(formula, share).value();
            answers.append(double(pattern.firstShift()));
            for (const auto &[held, massDa] : pattern.peaks())
                answers.append(Answers{held, massDa});
        }
    }
    return answers;
}

Answers ofSignals()
{
    Answers answers;
    for (int seed = 3; seed < 40; ++seed) {
        const vex::PlotBase a = signal(seed);
        const vex::PlotBase b = signal(seed + 5);
        const auto verdict = vex::PlotUtilities::compareSignals(a, b, 0.5, 0.5).value();
        answers.append(Answers{verdict.relativeAreaOfError, verdict.correlation,
            a.computeAreaNoUnitConversion(0.1, 3.9, false, vex::PlotBase::Trapezoid),
            a.evaluate(seed * 0.0317, 1, 0), vex::ApexFinder::findApexTime(a, 0.3, seed * 0.09)});
        const auto difference = vex::PlotUtilities::subtract(a, b, 0.0).value();
        for (const QPointF &point : difference.points())
            answers.append(Answers{point.x(), point.y()});
    }
    return answers;
}

} // namespace

int main()
{
#if defined(__FMA__)
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) {
        std::puts("skipped: this processor has no AVX2 or no FMA");
        return 77;
    }
#endif
    using Table = vex::AveragineIsotopeDistribution;
    const Table accurate = Table::Parameters::makeDefaultForAccurate();
    using Formula = vex::MolecularFormula;
    Formula averagine;
    averagine.setMolecularFormula({{Formula::C, 4.9384}, {Formula::H, 7.7583}, {Formula::N, 1.3577},
        {Formula::O, 1.4773}, {Formula::S, 0.0417}});
    const bool results[] = {areSame("table", ofTable({}, 11.3), "e2a4118080a6fc37"),
        areSame("accurate table", ofTable(accurate, 1.13), "b33e04012c20483f"),
        areSame("model", ofModel<vex::AveragineIsotopeModel>(averagine), "399a6ac806f0b034"),
        areSame("list model", ofModel<vex::AveragineIsotopeModelRefactored>(averagine),
            "61fbf2a89bf269e6"),
        areSame("molecules", ofMolecules(), "9820dd578da0f693"),
        areSame("signals", ofSignals(), "16354be19463fda9")};
    return std::find(std::begin(results), std::end(results), false) == std::end(results) ? 0 : 1;
}

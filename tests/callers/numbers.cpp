// Asks the library for numbers and compares a hash of their bits with a recorded one, the same on
// every platform. Built twice, with flags that the library is not built with: what is inline in its
// headers would take them. The inputs are whole numbers and single products, which no flag changes.
#include <QByteArray>
#include <QCryptographicHash>

#include <vex/ApexFinder.h>
#include <vex/AveragineIsotopeDistribution.h>
#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/Decimal.h>
#include <vex/IsotopeWorkspace.h>
#include <vex/MolecularMass.h>
#include <vex/PlotUtilities.h>
#include <vex/ProteinMassConverter.h>

#include <cstdio>
#include <tuple>

namespace {

int failures = 0;

/// What was answered to one group of questions; compared at the end.
class Answers
{
public:
    Answers(const char *name, const char *recorded)
        : m_name(name)
        , m_recorded(recorded)
    {
    }
    Answers(const Answers &) = delete;
    Answers &operator=(const Answers &) = delete;
    ~Answers()
    {
        const QByteArray hash = m_hash.result().toHex().left(16);
        failures += hash != m_recorded;
        std::printf("%-14s %s, recorded %s\n", m_name, hash.data(), m_recorded);
    }

    template <typename... Values>
    void add(Values... values)
    {
        for (const double value : {double(values)...})
            m_hash.addData(QByteArrayView(reinterpret_cast<const char *>(&value), sizeof value));
    }
    template <typename List>
    void addAll(const List &list)
    {
        for (const double value : list)
            add(value);
    }

private:
    const char *m_name;
    const char *m_recorded;
    QCryptographicHash m_hash{QCryptographicHash::Sha1};
};

/// A signal that goes up and down, with gaps of different width.
vex::PlotBase signal(int seed)
{
    vex::PlotBase plot;
    for (int i = 0; i < 400; ++i)
        plot.points().append({(10 * i + i * seed % 7) * 0.0011, i * i * seed % 311 * 0.37});
    return plot;
}

void askTable(Answers &&answers, const vex::AveragineIsotopeDistribution &table, double step)
{
    for (int i = 0; i < 9000; ++i) {
        for (int peak = 0; peak < 50; ++peak)
            answers.add(table.isotopeFractionInterpolated(i * step, peak));
        answers.addAll(table.isotopeIntensityFractions(i * step));
    }
}

template <typename Model>
void askModel(Answers &&answers, const vex::MolecularFormula &composition)
{
    Model model;
    std::ignore = model.init(composition); // never an error for this composition
    QList<double> pattern;
    for (int i = 1; i < 300; ++i) {
        const double mass = i * i * 1.37;
        answers.add(model.peakIntensityRatiosFromMass(mass, &pattern).value(),
            model.getMonoFromAverageMer(mass), model.getAverageFromMonoMass(mass),
            model.signalCoverage(mass), model.merMass());
        answers.addAll(pattern);
    }
}

void askMasses(Answers &&answers, const vex::MolecularFormula &averagine)
{
    answers.add(
        vex::MolecularMass::average(averagine), vex::MolecularMass::monoisotopic(averagine));
    for (int i = 0; i < 100; ++i)
        answers.add(
            vex::ProteinMassConverter::averageMassToMono(i * 97.3, QStringLiteral("C5H8N1O1")),
            vex::ProteinMassConverter::monoMassToAverage(i * 97.3, QStringLiteral("C5H8N1O1")));
    std::vector<double> pattern{1.0};
    std::vector<int> totals(5);
    vex::constructNextIsotope(1e-9, vex::IsotopeWorkspace(vex::IsotopeWorkspace::RatiosSet2),
        {50, 80, 14, 15, 3}, pattern, totals);
    answers.addAll(pattern);
}

void askSignals(Answers &&answers)
{
    for (int seed = 3; seed < 40; ++seed) {
        const vex::PlotBase a = signal(seed);
        const vex::PlotBase b = signal(seed + 5);
        const auto verdict = vex::PlotUtilities::compareSignals(a, b, 0.5, 0.5).value();
        answers.add(verdict.relativeAreaOfError, verdict.correlation, verdict.overlapEnd,
            vex::PlotUtilities::guessSamplingInterval(a).value(),
            a.computeAreaNoUnitConversion(0.1, 3.9, false, vex::PlotBase::Trapezoid),
            a.evaluate(seed * 0.0317, 1, 0), vex::ApexFinder::findApexTime(a, 0.3, seed * 0.09),
            vex::Decimal(seed, 2) == vex::Decimal(seed * 1.000000000001, 2));
        const auto difference = vex::PlotUtilities::subtract(a, b, 0.0).value();
        for (const QPointF &point : difference.points())
            answers.add(point.x(), point.y());
    }
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
    askTable({"table", "e2a4118080a6fc37"}, Table(), 11.3);
    askTable({"accurate table", "b33e04012c20483f"},
        Table(Table::Parameters::makeDefaultForAccurate()), 1.13);

    using Formula = vex::MolecularFormula;
    Formula averagine;
    averagine.setMolecularFormula({{Formula::C, 4.9384}, {Formula::H, 7.7583}, {Formula::N, 1.3577},
        {Formula::O, 1.4773}, {Formula::S, 0.0417}});
    askModel<vex::AveragineIsotopeModel>({"model", "c75dbd492024b07c"}, averagine);
    askModel<vex::AveragineIsotopeModelRefactored>({"list model", "e4206889240b34d1"}, averagine);
    askMasses({"masses", "e4ddce11591bc09d"}, averagine);
    askSignals({"signals", "6400e11430825b6e"});
    return failures == 0 ? 0 : 1;
}

// Numbers behind docs/models.md and the second part of docs/constants.md: writes
// models-coverage.csv, models-numbers.csv and proteins.csv into the folder that is its one
// argument. Rows of times differ from run to run, those of memory in their last digits; all else
// comes out the same.

#include <QDir>
#include <QFile>
#include <QHash>
#include <QList>
#include <QString>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#ifdef __GLIBC__
#    include <malloc.h>
#endif

#include <vex/AveragineIsotopeDistribution.h>
#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/ChemicalFormula.h>
#include <vex/ElementsIsoMassAndAbundances.h>
#include <vex/IsotopeWorkspace.h>
#include <vex/MolecularFormula.h>
#include <vex/MolecularMass.h>
#include <vex/MolecularPattern.h>
#include <vex/PublishedIsotopes.h>

using namespace Qt::StringLiterals;

namespace {

using Classic = vex::AveragineIsotopeModel;
using Formula = vex::MolecularFormula;
using Grid = vex::AveragineIsotopeDistribution;
using ListBased = vex::AveragineIsotopeModelRefactored;

using Real = long double; // of the patterns that others are compared with
using Exact = std::vector<Real>;
using Amounts = std::array<double, 5>; // C, H, N, O, S

constexpr std::array kTypes{Formula::C, Formula::H, Formula::N, Formula::O, Formula::S};
constexpr std::array kElementNames{"C", "H", "N", "O", "S"};
// Averagine of Senko, Beu and McLafferty 1995.
constexpr Amounts kAveragine{4.9384, 7.7583, 1.3577, 1.4773, 0.0417};
constexpr std::array kCapacities{100, 200, 400};
constexpr std::array kMasses{1.0, 10.0, 25.0, 50.0, 100.0, 150.0}; // kilodaltons
constexpr std::size_t kExactPeaks = 400;
constexpr double kScanStep = 7.0; // daltons; shares no factor with a spacing of the grid

Formula formulaOf(const Amounts &amounts)
{
    QHash<Formula::AtomType, double> counts;
    for (std::size_t i = 0; i < kTypes.size(); ++i)
        counts.insert(kTypes[i], amounts[i]);
    Formula formula;
    formula.setMolecularFormula(counts);
    return formula;
}

void requireSuccess(bool isGood)
{
    if (!isGood)
        qFatal("vex_model_figures: the library refused what it should take");
}

/// @p model with the composition @p formula.
template <typename Model>
Model modelOf(Model model, const Formula &formula)
{
    requireSuccess(!model.init(formula).hasError());
    return model;
}

ListBased listModel(int capacity, const Amounts &amounts = kAveragine)
{
    return modelOf(ListBased(capacity), formulaOf(amounts));
}

template <typename Model>
Exact patternOf(const Model &model, double mass)
{
    QList<double> pattern;
    requireSuccess(!model.peakIntensityRatiosFromMass(mass, &pattern).hasError());
    return {pattern.begin(), pattern.end()};
}

Exact nearest(const Grid &grid, double mass)
{
    const std::vector<double> &pattern = grid.isotopeIntensityFractions(mass);
    return {pattern.begin(), pattern.end()};
}

Exact interpolated(const Grid &grid, double mass)
{
    Exact pattern(kExactPeaks);
    for (std::size_t i = 0; i < pattern.size(); ++i)
        pattern[i] = grid.isotopeFractionInterpolated(mass, static_cast<int>(i));
    return pattern;
}

Exact withoutZerosAtTheEnd(Exact pattern)
{
    while (pattern.size() > 1 && pattern.back() == 0)
        pattern.pop_back();
    return pattern;
}

/// @p base to the power @p exponent, whole or not, with nothing cut but what lies behind
/// @p size peaks (Knuth, The Art of Computer Programming 2, 4.7).
Exact power(const Exact &base, Real exponent, std::size_t size = kExactPeaks)
{
    Exact result(size);
    result[0] = std::pow(base[0], exponent);
    for (std::size_t k = 1; k < size; ++k) {
        Real sum = 0;
        for (std::size_t i = 1; i <= k && i < base.size(); ++i)
            sum += (static_cast<Real>(i) * (exponent + 1) - static_cast<Real>(k)) * base[i]
                * result[k - i];
        result[k] = sum / (static_cast<Real>(k) * base[0]);
    }
    return result;
}

Exact product(const Exact &a, const Exact &b)
{
    Exact result(kExactPeaks);
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] == 0)
            continue;
        for (std::size_t j = 0; j < b.size() && i + j < result.size(); ++j)
            result[i + j] += a[i] * b[j];
    }
    return result;
}

/// The pattern of a molecule of @p atoms, each element by itself.
Exact atomByAtom(const Amounts &atoms, const std::vector<Exact> &isotopes)
{
    Exact result{1};
    for (std::size_t element = 0; element < atoms.size(); ++element)
        result = product(result, power(isotopes[element], atoms[element]));
    return result;
}

std::vector<Exact> isotopesOf(const vex::IsotopeWorkspace &workspace)
{
    std::vector<Exact> isotopes;
    for (const std::vector<double> &abundances : workspace.isotopeAbundances)
        isotopes.emplace_back(abundances.begin(), abundances.end());
    return isotopes;
}

/// Isotopes of the models' element table: the pattern of one atom.
std::vector<Exact> isotopesOfModels()
{
    std::vector<Exact> isotopes;
    for (std::size_t element = 0; element < kTypes.size(); ++element) {
        Amounts pure{};
        pure[element] = 1.0;
        const ListBased model = listModel(100, pure);
        isotopes.push_back(withoutZerosAtTheEnd(patternOf(model, model.merMass())));
    }
    return isotopes;
}

double elementMass(std::size_t element)
{
    Amounts pure{};
    pure[element] = 1.0;
    return listModel(100, pure).merMass();
}

Amounts fractionsOf(const vex::IsotopeWorkspace &workspace)
{
    Amounts fractions{};
    std::copy_n(workspace.atomFractions.begin(), fractions.size(), fractions.begin());
    return fractions;
}

/// Atoms of the grid's averagine at @p mass, whole ones or not.
Amounts gridAtoms(const vex::IsotopeWorkspace &workspace, double mass, bool areWhole)
{
    Amounts atoms = fractionsOf(workspace);
    for (double &count : atoms) {
        count *= mass / workspace.averageAtomMass;
        if (areWhole)
            count = std::floor(count + 0.5);
    }
    return atoms;
}

double sumOf(const Exact &pattern)
{
    return static_cast<double>(std::accumulate(pattern.begin(), pattern.end(), Real{0}));
}

double meanOf(const Exact &pattern)
{
    Real sum = 0;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        sum += static_cast<Real>(i) * pattern[i];
    return static_cast<double>(sum) / sumOf(pattern);
}

double highestOf(const Exact &pattern)
{
    return static_cast<double>(
        std::distance(pattern.begin(), std::max_element(pattern.begin(), pattern.end())));
}

/// Largest difference of a peak among the first @p peaks, in percent of the highest of @p exact.
double worstPeak(const Exact &pattern, const Exact &exact, std::size_t peaks = kExactPeaks)
{
    Real worst = 0;
    for (std::size_t i = 0; i < std::min(peaks, std::max(pattern.size(), exact.size())); ++i) {
        const Real a = i < pattern.size() ? pattern[i] : 0;
        const Real b = i < exact.size() ? exact[i] : 0;
        worst = std::max(worst, std::fabs(a - b));
    }
    return static_cast<double>(100 * worst / *std::max_element(exact.begin(), exact.end()));
}

/// The grid with the trims of @p trims, @p count points every @p spacing daltons.
Grid::Parameters gridOf(double spacing, double count, const Grid::Parameters &trims)
{
    Grid::Parameters parameters = trims;
    parameters.massSpacing = spacing;
    parameters.avgDistCount = count;
    return parameters;
}

const Grid::Parameters kDefault = Grid::Parameters::makeDefaultForQuorlmapFeatureFinder();
const Grid::Parameters kAccurate = Grid::Parameters::makeDefaultForAccurate();

/// Rows of models-numbers.csv.
class Rows
{
public:
    explicit Rows(QTextStream *out)
        : m_out(out)
    {
        *m_out << "quantity,object,mass_kDa,value\n";
    }

    /// @param mass  kilodaltons; 0 for what depends on none
    void add(const char *quantity, const std::string &object, double mass, double value)
    {
        *m_out << quantity << ',' << object.c_str() << ',';
        if (mass > 0.0)
            *m_out << mass;
        *m_out << ',' << value << '\n';
    }

private:
    QTextStream *m_out;
};

std::string listName(int capacity)
{
    std::string name = "list ";
    return name.append(std::to_string(capacity));
}

std::string peakName(std::size_t peak)
{
    std::string name = "+";
    return name.append(std::to_string(peak));
}

// ---- Times and memory

volatile double g_sink; // keeps what is timed from being left out

/// Seconds that one call takes: the smallest of seven medians, because others may use the machine.
template <typename Call>
double secondsPerCall(Call call)
{
    using Clock = std::chrono::steady_clock;
    const auto secondsFor = [&](long calls) {
        const Clock::time_point start = Clock::now();
        for (long i = 0; i < calls; ++i)
            call();
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    constexpr double kBatch = 1e-4; // seconds
    constexpr double kRound = 0.05;
    long calls = 1;
    double batch = secondsFor(calls);
    while (batch < kBatch)
        batch = secondsFor(calls *= 2);
    const int batches = static_cast<int>(std::clamp(kRound / batch, 5.0, 500.0));
    double smallest = HUGE_VAL;
    for (int round = 0; round < 7; ++round) {
        std::vector<double> times;
        for (int i = 0; i < batches; ++i)
            times.push_back(secondsFor(calls));
        std::nth_element(times.begin(), times.begin() + batches / 2, times.end());
        smallest = std::min(
            smallest, times[static_cast<std::size_t>(batches / 2)] / static_cast<double>(calls));
    }
    return smallest;
}

template <typename Model>
void writeQueryTimes(Rows *rows, const std::string &name, const Model &model)
{
    QList<double> pattern;
    for (const double kilodaltons : kMasses) {
        const volatile double mass = 1000.0 * kilodaltons;
        const double seconds = secondsPerCall([&] {
            requireSuccess(!model.peakIntensityRatiosFromMass(mass, &pattern).hasError());
            g_sink = pattern.constLast();
        });
        rows->add("query_us", name, kilodaltons, 1e6 * seconds);
    }
}

/// Masses all over the table of @p grid, in no order.
std::vector<double> anyMasses(const Grid &grid)
{
    std::mt19937_64 engine(1995);
    std::vector<double> masses(1 << 16);
    const double end = (grid.patternCount() - 1) * grid.parameters().massSpacing;
    for (double &mass : masses)
        mass = end * static_cast<double>(engine() >> 11) * 0x1p-53;
    return masses;
}

void writeGridTimes(Rows *rows, const std::string &name, const Grid::Parameters &parameters)
{
    rows->add("setup_us", name, 0,
        1e6 * secondsPerCall([&] { g_sink = Grid(parameters).patternCount(); }));
    const Grid grid(parameters);
    const volatile double mass = 1000.0;
    rows->add("nearest_ns", name, 1,
        1e9 * secondsPerCall([&] { g_sink = grid.isotopeIntensityFractions(mass).front(); }));
    rows->add("interpolated_ns", name, 1,
        1e9 * secondsPerCall([&] { g_sink = grid.isotopeFractionInterpolated(mass, 1); }));
    const std::vector<double> masses = anyMasses(grid);
    std::size_t next = 0;
    const auto nextMass = [&] { return masses[++next % masses.size()]; };
    rows->add("nearest_any_mass_ns", name, 0,
        1e9 * secondsPerCall([&] { g_sink = grid.isotopeIntensityFractions(nextMass()).front(); }));
    rows->add("interpolated_any_mass_ns", name, 0,
        1e9 * secondsPerCall([&] { g_sink = grid.isotopeFractionInterpolated(nextMass(), 1); }));
}

void writeTimes(Rows *rows)
{
    const Formula averagine = formulaOf(kAveragine);
    rows->add("setup_us", "classic", 0, 1e6 * secondsPerCall([&] {
        Classic model;
        requireSuccess(!model.init(averagine).hasError());
        g_sink = model.merMass();
    }));
    QList<double> pattern;
    rows->add("setup_and_first_query_us", "classic", 150, 1e6 * secondsPerCall([&] {
        Classic model;
        requireSuccess(!model.init(averagine).hasError());
        requireSuccess(!model.peakIntensityRatiosFromMass(150e3, &pattern).hasError());
        g_sink = pattern.constLast();
    }));
    const Classic classic = modelOf(Classic(), averagine);
    writeQueryTimes(rows, "classic", classic);

    for (const int capacity : kCapacities) {
        rows->add("setup_us", listName(capacity), 0, 1e6 * secondsPerCall([&] {
            ListBased model(capacity);
            requireSuccess(!model.init(averagine).hasError());
            g_sink = model.merMass();
        }));
        writeQueryTimes(rows, listName(capacity), listModel(capacity));
    }
    writeGridTimes(rows, "grid default", kDefault);
    writeGridTimes(rows, "grid accurate", kAccurate);
    writeGridTimes(rows, "grid cut finely", gridOf(100.0, 1000.0, kAccurate));
    writeGridTimes(rows, "grid cut finely to 300 kDa", gridOf(100.0, 3001.0, kAccurate));
}

/// Bytes that this process has on the heap; 0 where nothing tells.
double heapBytes()
{
#ifdef __GLIBC__
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
#else
    return 0.0;
#endif
}

template <typename Make>
double bytesOf(Make make)
{
    const double before = heapBytes();
    using Object = decltype(make());
    const std::unique_ptr<const Object> object(new Object(make())); // made there, not copied
    const double bytes = heapBytes() - before;
    g_sink = static_cast<double>(sizeof *object);
    return bytes;
}

void writeMemory(Rows *rows)
{
    rows->add("memory_kB", "classic", 0, bytesOf([] {
        Classic model;
        requireSuccess(!model.init(formulaOf(kAveragine)).hasError());
        return model;
    }) / 1e3);
    for (const int capacity : kCapacities)
        rows->add(
            "memory_kB", listName(capacity), 0, bytesOf([&] { return listModel(capacity); }) / 1e3);
    rows->add("memory_kB", "grid default", 0, bytesOf([] { return Grid(); }) / 1e3);
    rows->add("memory_kB", "grid accurate", 0, bytesOf([] { return Grid(kAccurate); }) / 1e3);
    rows->add("memory_kB", "grid cut finely", 0,
        bytesOf([] { return Grid(gridOf(100.0, 1000.0, kAccurate)); }) / 1e3);
    rows->add("memory_kB", "grid cut finely to 300 kDa", 0,
        bytesOf([] { return Grid(gridOf(100.0, 3001.0, kAccurate)); }) / 1e3);
}

// ---- What patterns hold

template <typename Coverage>
double rangeOf(Coverage coverage, double end)
{
    double mass = 0.0;
    while (mass + 100.0 <= end && coverage(mass + 100.0) >= 0.99)
        mass += 100.0;
    return mass / 1000.0;
}

void writeCoverage(QTextStream *out, Rows *rows)
{
    const Classic classic = modelOf(Classic(), formulaOf(kAveragine));
    std::vector<ListBased> lists;
    for (const int capacity : kCapacities)
        lists.push_back(listModel(capacity));
    const Grid grid(gridOf(100.0, 3001.0, kDefault));
    const Grid finelyCut(gridOf(100.0, 3001.0, kAccurate));
    const auto ofGrid = [&](double mass) { return sumOf(nearest(grid, mass)); };

    *out << "mass_kDa,classic,list_100,list_200,list_400,grid,grid_cut_finely\n";
    for (int kilodaltons = 1; kilodaltons <= 300; ++kilodaltons) {
        const double mass = 1000.0 * kilodaltons;
        *out << kilodaltons << ',' << classic.signalCoverage(mass);
        for (const ListBased &list : lists)
            *out << ',' << list.signalCoverage(mass);
        *out << ',' << ofGrid(mass) << ',' << sumOf(nearest(finelyCut, mass)) << '\n';
    }

    for (const double kilodaltons : {1.0, 10.0, 25.0, 50.0, 100.0, 150.0, 200.0, 300.0}) {
        const double mass = 1000.0 * kilodaltons;
        rows->add("held_percent", "classic", kilodaltons, 100.0 * classic.signalCoverage(mass));
        for (const ListBased &list : lists)
            rows->add("held_percent", listName(list.capacity()), kilodaltons,
                100.0 * list.signalCoverage(mass));
        rows->add("held_percent", "grid to 300 kDa", kilodaltons, 100.0 * ofGrid(mass));
        rows->add("held_percent", "grid cut finely", kilodaltons,
            100.0 * sumOf(nearest(finelyCut, mass)));
        rows->add("peaks", "grid to 300 kDa", kilodaltons,
            static_cast<double>(nearest(grid, mass).size()));
        rows->add("peaks", "grid cut finely", kilodaltons,
            static_cast<double>(nearest(finelyCut, mass).size()));
    }
    rows->add("held_percent", "grid default", 99.9, 100.0 * sumOf(nearest(Grid(), 99.9e3)));

    rows->add("range_kDa", "classic", 0,
        rangeOf([&](double mass) { return classic.signalCoverage(mass); }, 2e6));
    for (const ListBased &list : lists)
        rows->add("range_kDa", listName(list.capacity()), 0,
            rangeOf([&](double mass) { return list.signalCoverage(mass); }, 2e6));
    rows->add("range_kDa", "grid to 300 kDa", 0, rangeOf(ofGrid, 300e3));
    // Which of the two cuts costs what.
    Grid::Parameters parameters = kAccurate;
    parameters.interTrim = kDefault.interTrim;
    const Grid growing(gridOf(100.0, 1600.0, parameters));
    parameters = kAccurate;
    parameters.finalTrim = kDefault.finalTrim;
    const Grid stored(gridOf(100.0, 1600.0, parameters));
    for (const double kilodaltons : kMasses) {
        rows->add("held_percent", "grid cut when growing only", kilodaltons,
            100.0 * sumOf(nearest(growing, 1000.0 * kilodaltons)));
        rows->add("held_percent", "grid cut when stored only", kilodaltons,
            100.0 * sumOf(nearest(stored, 1000.0 * kilodaltons)));
    }
    for (const auto &[name, table] :
        {std::pair{"grid default", Grid()}, std::pair{"grid accurate", Grid(kAccurate)}}) {
        const auto shorter = [&table = table](int pattern) {
            return table.csvRow(pattern).size() < table.csvRow(pattern - 1).size();
        };
        int count = 0;
        for (int pattern = 1; pattern < table.patternCount(); ++pattern)
            count += shorter(pattern) ? 1 : 0;
        rows->add("rows_shorter_than_the_one_before", name, 0, count);
        rows->add("csv_header_fields", name, 0, static_cast<double>(table.csvHeader().size()));
    }
}

// ---- Errors

void writeModelErrors(Rows *rows)
{
    const Classic classic = modelOf(Classic(), formulaOf(kAveragine));
    const ListBased list = listModel(int(kExactPeaks));
    const ListBased lists[] = {listModel(100), listModel(200), list};
    const double merMass = list.merMass();
    Exact mer = withoutZerosAtTheEnd(patternOf(list, merMass));
    const Real sum = std::accumulate(mer.begin(), mer.end(), Real(0)); // 1 but for rounding
    for (Real &share : mer)
        share /= sum;
    const std::vector<Exact> isotopes = isotopesOfModels();
    const double unitAtoms = std::accumulate(kAveragine.begin(), kAveragine.end(), 0.0);
    const auto atomsAt = [&](double mass) {
        Amounts atoms = kAveragine;
        for (double &count : atoms)
            count *= mass / merMass / unitAtoms;
        return atoms;
    };
    for (const double kilodaltons : kMasses) {
        const double mass = 1000.0 * kilodaltons;
        const double units = std::round(mass / merMass);
        const Exact exact = power(mer, units);
        rows->add("error_percent", "classic", kilodaltons,
            worstPeak(patternOf(classic, mass), exact, 100));
        for (const ListBased &some : lists)
            rows->add("error_percent", listName(some.capacity()), kilodaltons,
                worstPeak(patternOf(some, mass), exact, static_cast<std::size_t>(some.capacity())));
        // The same units as single atoms of each element.
        const Exact molecule = atomByAtom(atomsAt(units * merMass), isotopes);
        rows->add("average_atom_percent", "list 400", kilodaltons,
            worstPeak(patternOf(list, mass), molecule));
        rows->add("average_atom_percent", "classic", kilodaltons,
            worstPeak(patternOf(classic, mass), molecule, 100));
        double worstClassic = 0.0;
        double worstList = 0.0;
        for (double near = mass; near < mass + 1000.0; near += kScanStep) {
            const Exact between = power(mer, near / merMass);
            worstClassic =
                std::max(worstClassic, worstPeak(patternOf(classic, near), between, 100));
            worstList = std::max(worstList, worstPeak(patternOf(list, near), between));
        }
        rows->add("error_any_mass_percent", "classic", kilodaltons, worstClassic);
        rows->add("error_any_mass_percent", "list 400", kilodaltons, worstList);
    }
}

void writeGridErrors(Rows *rows)
{
    const vex::IsotopeWorkspace workspace(vex::IsotopeWorkspace::RatiosSet0);
    const std::vector<Exact> isotopes = isotopesOf(workspace);
    const auto at = [&](double mass) {
        return atomByAtom(gridAtoms(workspace, mass, false), isotopes);
    };
    const auto wholeAt = [&](double mass) {
        return atomByAtom(gridAtoms(workspace, mass, true), isotopes);
    };
    const struct
    {
        const char *name;
        Grid grid;
        double end; // daltons
    } grids[] = {
        {"grid default", Grid(gridOf(100.0, 1600.0, kDefault)), 151e3},
        {"grid accurate", Grid(gridOf(10.0, 1101.0, kAccurate)), 10e3 + 990.0},
        {"grid cut finely", Grid(gridOf(100.0, 1600.0, kAccurate)), 151e3},
    };
    for (const auto &[name, grid, end] : grids) {
        for (const double kilodaltons : kMasses) {
            const double mass = 1000.0 * kilodaltons;
            if (mass > end)
                continue;
            const Exact whole = wholeAt(mass);
            rows->add("error_percent", name, kilodaltons, worstPeak(nearest(grid, mass), whole));
            Exact scaled = nearest(grid, mass);
            for (Real &share : scaled)
                share /= sumOf(nearest(grid, mass));
            rows->add("error_scaled_percent", name, kilodaltons, worstPeak(scaled, whole));
            rows->add("lost_mean_shift_Da", name, kilodaltons, meanOf(scaled) - meanOf(whole));
            rows->add("highest_peak", name, kilodaltons, highestOf(scaled));
            rows->add("highest_peak", "exact", kilodaltons, highestOf(whole));
            double onPoints = 0.0;
            for (double point = mass; point < mass + 1000.0; point += grid.parameters().massSpacing)
                onPoints = std::max(onPoints, worstPeak(nearest(grid, point), wholeAt(point)));
            rows->add("error_points_percent", name, kilodaltons, onPoints);
            double worstNearest = 0.0;
            double worstInterpolated = 0.0;
            for (double near = mass; near < mass + 990.0; near += kScanStep) {
                const Exact exact = at(near);
                worstNearest = std::max(worstNearest, worstPeak(nearest(grid, near), exact));
                worstInterpolated =
                    std::max(worstInterpolated, worstPeak(interpolated(grid, near), exact));
            }
            rows->add("nearest_any_mass_percent", name, kilodaltons, worstNearest);
            rows->add("interpolated_any_mass_percent", name, kilodaltons, worstInterpolated);
        }
    }

    for (const double kilodaltons : kMasses) {
        const double mass = 1000.0 * kilodaltons;
        // Whole atoms against as many as the mass asks for, nothing cut; and the same without the
        // rounding of one element.
        double worst = 0.0;
        std::array<double, 5> alone{};
        double lightest = 0.0;
        double heaviest = 0.0;
        double leastShift = 0.0;
        double mostShift = 0.0;
        for (double point = mass; point < mass + 3000.0; point += 100.0) {
            const Exact exact = at(point);
            const Amounts atoms = gridAtoms(workspace, point, false);
            const Amounts whole = gridAtoms(workspace, point, true);
            const Exact ofWhole = wholeAt(point);
            worst = std::max(worst, worstPeak(ofWhole, exact));
            double added = 0.0;
            for (std::size_t element = 0; element < alone.size(); ++element) {
                Amounts one = atoms;
                one[element] = whole[element];
                alone[element] =
                    std::max(alone[element], worstPeak(atomByAtom(one, isotopes), exact));
                added += (whole[element] - atoms[element]) * elementMass(element);
            }
            lightest = std::min(lightest, added);
            heaviest = std::max(heaviest, added);
            const double shift = meanOf(ofWhole) - meanOf(exact);
            leastShift = std::min(leastShift, shift);
            mostShift = std::max(mostShift, shift);
        }
        rows->add("rounding_percent", "all elements", kilodaltons, worst);
        for (std::size_t element = 0; element < alone.size(); ++element)
            rows->add("rounding_percent", kElementNames[element], kilodaltons, alone[element]);
        rows->add("rounding_mass_Da", "lightest", kilodaltons, lightest);
        rows->add("rounding_mass_Da", "heaviest", kilodaltons, heaviest);
        rows->add("rounding_mean_shift_Da", "least", kilodaltons, leastShift);
        rows->add("rounding_mean_shift_Da", "most", kilodaltons, mostShift);

        // Fractions scaled to the sum 1.
        const Exact exact = at(mass);
        Amounts scaled = gridAtoms(workspace, mass, false);
        const Amounts fractions = fractionsOf(workspace);
        const double sum = std::accumulate(fractions.begin(), fractions.end(), 0.0);
        for (double &count : scaled)
            count /= sum;
        const Exact ofScaled = atomByAtom(scaled, isotopes);
        rows->add("fractions_percent", "grid", kilodaltons, worstPeak(ofScaled, exact));
        rows->add("fractions_mean_shift_Da", "grid", kilodaltons, meanOf(exact) - meanOf(ofScaled));

        // The two kinds side by side.
        const ListBased list = listModel(int(kExactPeaks));
        rows->add("constants_percent", "grid and list", kilodaltons,
            worstPeak(
                power(withoutZerosAtTheEnd(patternOf(list, list.merMass())), mass / list.merMass()),
                exact));
    }
    const auto firstSulfur = [&] {
        double mass = 0.0;
        while (gridAtoms(workspace, mass, true)[4] < 1.0)
            mass += 1.0;
        return mass;
    };
    rows->add("first_sulfur_Da", "grid", 0, firstSulfur());
    for (const double mass : {1300.0, 1400.0}) {
        const Exact whole = wholeAt(mass);
        const Exact exact = at(mass);
        for (const std::size_t peak : {1U, 2U})
            rows->add("sulfur_step_percent_of_peak", peakName(peak), mass / 1000.0,
                static_cast<double>(100 * (whole[peak] / exact[peak] - 1)));
    }
}

// ---- The constants of the workspace

void writeConstants(Rows *rows)
{
    const vex::IsotopeWorkspace set0(vex::IsotopeWorkspace::RatiosSet0);
    const Amounts fractions = fractionsOf(set0);
    const double unitAtoms = std::accumulate(kAveragine.begin(), kAveragine.end(), 0.0);
    double massOfFractions = 0.0;
    for (std::size_t element = 0; element < fractions.size(); ++element) {
        rows->add("fraction_averagine", kElementNames[element], 0, kAveragine[element] / unitAtoms);
        rows->add("fraction_relative_ppm", kElementNames[element], 0,
            1e6 * (fractions[element] / (kAveragine[element] / unitAtoms) - 1.0));
        massOfFractions += fractions[element] * elementMass(element);
    }
    const double sum = std::accumulate(fractions.begin(), fractions.end(), 0.0);
    const double merMass = listModel(100).merMass();
    rows->add("fraction_sum", "workspace", 0, sum);
    rows->add("atom_mass_Da", "workspace", 0, set0.averageAtomMass);
    rows->add("atom_mass_Da", "fractions as they are", 0, massOfFractions);
    rows->add("atom_mass_Da", "fractions scaled to 1", 0, massOfFractions / sum);
    rows->add("atom_mass_Da", "models", 0, merMass);
    rows->add("atom_mass_relative_ppm", "workspace to models", 0,
        1e6 * (set0.averageAtomMass / merMass - 1.0));
    rows->add("atom_mass_relative_ppm", "workspace to fractions as they are", 0,
        1e6 * (set0.averageAtomMass / massOfFractions - 1.0));
    rows->add("atoms_relative_ppm", "grid to models", 0,
        1e6 * (sum / set0.averageAtomMass * merMass - 1.0));

    const double published = 111.1254 / unitAtoms;
    rows->add("atom_mass_Da", "111.1254 through the unit's atoms", 0, published);
    // The sets, and the elements of the models in their place, all else the same.
    std::vector<std::pair<std::string, std::vector<Exact>>> sets;
    for (const auto ratios : {vex::IsotopeWorkspace::RatiosSet0, vex::IsotopeWorkspace::RatiosSet1,
             vex::IsotopeWorkspace::RatiosSet2})
        sets.emplace_back(
            "set " + std::to_string(ratios), isotopesOf(vex::IsotopeWorkspace(ratios)));
    sets.emplace_back("models", isotopesOfModels());
    sets.emplace_back("set 1 with sulfur-36 at +4", sets[1].second);
    std::swap(sets.back().second.back()[3], sets.back().second.back()[4]);
    for (const auto &[name, isotopes] : sets) {
        for (std::size_t element = 0; element < isotopes.size(); ++element) {
            rows->add(
                "abundance_sum", name + ' ' + kElementNames[element], 0, sumOf(isotopes[element]));
        }
        for (const double kilodaltons : {1.0, 10.0, 100.0}) {
            const Amounts atoms = gridAtoms(set0, 1000.0 * kilodaltons, false);
            const Exact pattern = atomByAtom(atoms, isotopes);
            rows->add("mean_shift_Da", name, kilodaltons, meanOf(pattern));
            rows->add("sum_percent", name, kilodaltons, 100.0 * sumOf(pattern));
            rows->add("sets_percent", name, kilodaltons,
                worstPeak(pattern, atomByAtom(atoms, sets.front().second)));
            if (kilodaltons > 1.0)
                continue;
            for (const std::size_t peak : {1U, 2U, 3U, 4U}) {
                rows->add("peak_percent_of_first", name + ' ' + peakName(peak), kilodaltons,
                    static_cast<double>(100 * pattern[peak] / pattern[0]));
            }
        }
    }
}

// ---- Real proteins

struct Protein
{
    const char *name;
    QString formula;
};

// Neutral molecules: insulin with its three disulfide bridges, metallothionein without the acetyl
// group, the antibodies without glycans. Sources: docs/models.md.
const std::array kProteins{
    Protein{"human insulin", u"C257H383N65O77S6"_s},
    Protein{"metallothionein-2", u"C223H381N71O82S21"_s},
    Protein{"metallothionein-2 with 7 Zn", u"C223H367N71O82S21Zn7"_s},
    Protein{"ubiquitin", u"C378H629N105O118S"_s},
    Protein{"horse apomyoglobin", u"C769H1212N210O218S2"_s},
    Protein{"adalimumab", u"C6428H9912N1694O1987S46"_s},
    Protein{"trastuzumab", u"C6470H10012N1726O2013S42"_s},
};

// By Formula::AtomType; zinc takes the place that is reserved.
const std::array kSymbols{u"C"_s, u"H"_s, u"O"_s, u"N"_s, u"S"_s, u"P"_s, u"Na"_s, u"Zn"_s};

/// The list-based model with the isotopes that MolecularPattern has.
ListBased listOfPublished()
{
    vex::ElementsIsoMassAndAbundances elements;
    for (const QString &symbol : kSymbols) {
        QList<double> masses;
        QList<double> abundances;
        for (const auto &isotope : vex::PublishedIsotopes::find(symbol)->isotopes) {
            masses.append(isotope.massDa);
            abundances.append(isotope.abundance);
        }
        requireSuccess(!elements.insertIsoMassAndAbundance(masses, abundances).hasError());
    }
    ListBased model(int{kExactPeaks});
    requireSuccess(!model.initElementsIsoMassAndAbundance(elements).hasError());
    return model;
}

Formula countsOf(const vex::ChemicalFormula &formula)
{
    QHash<Formula::AtomType, double> counts;
    for (const auto &atoms : formula.atoms()) {
        const auto place = std::find(kSymbols.begin(), kSymbols.end(), atoms.element->symbol);
        requireSuccess(place != kSymbols.end());
        counts.insert(static_cast<Formula::AtomType>(place - kSymbols.begin()), atoms.count);
    }
    Formula result;
    result.setMolecularFormula(counts);
    return result;
}

Exact exactPattern(const vex::ChemicalFormula &formula)
{
    const auto pattern = vex::MolecularPattern::holding(formula, 1.0);
    requireSuccess(!pattern.hasError());
    Exact shares(static_cast<std::size_t>(pattern.value().firstShift()));
    for (const auto &peak : pattern.value().peaks())
        shares.push_back(peak.share);
    return shares;
}

/// One row for each way to @p protein 's pattern.
void writeProtein(QTextStream *out, const Protein &protein)
{
    const auto formula = vex::ChemicalFormula::read(protein.formula);
    requireSuccess(!formula.hasError());
    const double mass = formula.value().averageMass();
    const Exact exact = exactPattern(formula.value());
    const Formula own = countsOf(formula.value());
    const Formula averagine = formulaOf(kAveragine);
    const double averagineSulfur =
        averagine.count(Formula::S) * mass / vex::MolecularMass::average(averagine);
    const auto write = [&](const char *way, const Exact &pattern) {
        *out << protein.name << ',' << mass / 1000.0 << ',' << own.count(Formula::S) << ','
             << averagineSulfur << ',' << way << ',' << worstPeak(pattern, exact) << ','
             << worstPeak(pattern, exact, Classic::kPeakCount) << ',' << 100.0 * sumOf(pattern)
             << ',' << highestOf(pattern) << ',' << highestOf(pattern) - highestOf(exact) << ','
             << meanOf(pattern) << ',' << meanOf(pattern) - meanOf(exact) << '\n';
    };
    write("exact", exact);

    const ListBased list(int{kExactPeaks});
    const ListBased listPublished = listOfPublished();
    if (own.count(Formula::Reserved) == 0.0) { // the built-in tables have no zinc
        write("classic own", patternOf(modelOf(Classic(), own), mass));
        write("list own", patternOf(modelOf(list, own), mass));
        Amounts amounts{};
        std::transform(kTypes.begin(), kTypes.end(), amounts.begin(),
            [&](Formula::AtomType type) { return own.count(type); });
        write("table of the models alone", atomByAtom(amounts, isotopesOfModels()));
        const vex::IsotopeWorkspace workspace(vex::IsotopeWorkspace::RatiosSet0);
        write("table of the grid alone", atomByAtom(amounts, isotopesOf(workspace)));
    }
    write("list own published isotopes", patternOf(modelOf(listPublished, own), mass));
    write("classic averagine", patternOf(modelOf(Classic(), averagine), mass));
    write("list averagine", patternOf(modelOf(list, averagine), mass));
    write("list averagine published isotopes", patternOf(modelOf(listPublished, averagine), mass));
    static const Grid grid(gridOf(100.0, 1600.0, kDefault));
    static const Grid finelyCut(gridOf(100.0, 1600.0, kAccurate));
    write("grid default", nearest(grid, mass));
    write("grid cut finely", nearest(finelyCut, mass));
}

void writeProteins(QTextStream *out)
{
    *out << "protein,average_kDa,sulfur,averagine_sulfur,way,error_percent,error_of_100_peaks_"
            "percent,held_percent,highest,"
            "highest_off_Da,mean,mean_off_Da\n";
    for (const Protein &protein : kProteins)
        writeProtein(out, protein);
}

template <typename Write>
bool writeFile(const QString &path, Write write)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        std::fprintf(stderr, "vex_model_figures: %s: %s\n", qPrintable(path),
            qPrintable(file.errorString()));
        return false;
    }
    QTextStream out(&file);
    out.setRealNumberPrecision(9);
    write(&out);
    out.flush();
    return out.status() == QTextStream::Ok;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: vex_model_figures FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    bool isGood = true;
    isGood &= writeFile(folder.filePath(u"models-numbers.csv"_s), [&](QTextStream *numbers) {
        Rows rows(numbers);
        writeMemory(&rows);
        writeTimes(&rows);
        isGood &= writeFile(folder.filePath(u"models-coverage.csv"_s),
            [&](QTextStream *coverage) { writeCoverage(coverage, &rows); });
        writeModelErrors(&rows);
        writeGridErrors(&rows);
        writeConstants(&rows);
    });
    isGood &= writeFile(folder.filePath(u"proteins.csv"_s), writeProteins);
    return isGood ? 0 : 1;
}

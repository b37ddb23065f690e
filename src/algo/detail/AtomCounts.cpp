#include "algo/detail/AtomCounts.h"

#include "algo/detail/Electron.h"

#include <algorithm>
#include <tuple>

namespace vex::detail {

using Atoms = ChemicalFormula::Atoms;

namespace {

template <typename MassOf>
double massOf(const QList<Atoms> &atoms, int charge, MassOf massOfMixture)
{
    double sum = 0.0;
    for (const Atoms &each : atoms) {
        const PublishedIsotopes::Isotope *isotope =
            PublishedIsotopes::find(*each.element, each.massNumber);
        sum += each.count * (isotope ? isotope->massDa : massOfMixture(*each.element));
    }
    return sum - charge * kElectronMass;
}

} // namespace

QList<Atoms> inHillOrder(const AtomCounts &counts)
{
    QList<Atoms> atoms;
    bool hasCarbon = false;
    for (const auto &[kind, count] : counts) {
        if (count == 0)
            continue;
        atoms.append({kind.first, kind.second, static_cast<int>(count)});
        hasCarbon = hasCarbon || kind.first->atomicNumber == 6;
    }
    const auto place = [hasCarbon](const Atoms &each) {
        const int number = each.element->atomicNumber;
        const int group = hasCarbon && number == 6 ? 0 : hasCarbon && number == 1 ? 1 : 2;
        return std::tuple(group, each.element->symbol, each.massNumber);
    };
    std::sort(atoms.begin(), atoms.end(),
        [&place](const Atoms &a, const Atoms &b) { return place(a) < place(b); });
    return atoms;
}

double averageMass(const QList<Atoms> &atoms, int charge)
{
    return massOf(atoms, charge, &PublishedIsotopes::averageMass);
}

double monoisotopicMass(const QList<Atoms> &atoms, int charge)
{
    return massOf(atoms, charge, &PublishedIsotopes::monoisotopicMass);
}

} // namespace vex::detail

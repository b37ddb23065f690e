#pragma once

#include <map>
#include <utility>

#include <vex/ChemicalFormula.h>

namespace vex::detail {

/// Atoms of one kind: the element, and the mass number of a single isotope or 0.
using AtomKind = std::pair<const PublishedIsotopes::Element *, int>;

/// How many of each kind, also fewer than none.
using AtomCounts = std::map<AtomKind, qint64>;

inline constexpr qint64 kLargestCount = 10'000'000;

/// The elements that are too short-lived to have a natural mixture.
inline constexpr QLatin1StringView kUnweighed{
    "Tc Pm Po At Rn Fr Ra Ac Np Pu Am Cm Bk Cf Es Fm Md No Lr "
    "Rf Db Sg Bh Hs Mt Ds Rg Cn Nh Fl Mc Lv Ts Og"};

/// Those whose count is not 0, in Hill order; none is beyond the largest count.
QList<ChemicalFormula::Atoms> inHillOrder(const AtomCounts &counts);

/// Sum of count times mass over @p atoms, less the electrons that @p charge took.
double averageMass(const QList<ChemicalFormula::Atoms> &atoms, int charge);

/// The same with the most abundant isotope of each element.
double monoisotopicMass(const QList<ChemicalFormula::Atoms> &atoms, int charge);

} // namespace vex::detail

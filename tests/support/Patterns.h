#pragma once

#include "Numbers.h"

#include <QHash>
#include <QList>

#include <algorithm>

#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vex::test {

using Type = MolecularFormula::AtomType;
using Counts = QHash<Type, double>;

inline const Counts kAveragine{
    {Type::C, 4.9384}, {Type::H, 7.7583}, {Type::N, 1.3577}, {Type::O, 1.4773}, {Type::S, 0.0417}};

inline MolecularFormula formulaOf(const Counts &counts)
{
    MolecularFormula formula;
    formula.setMolecularFormula(counts);
    return formula;
}

/// What a model answers for a mass.
struct Answer
{
    int best; // -2 for an error
    QList<double> pattern;

    bool operator==(const Answer &other) const
    {
        return best == other.best && std::ranges::equal(pattern, other.pattern, sameBits);
    }
};

/// Asks a model, or a cursor over one.
template <typename Asked>
Answer ask(Asked &&asked, double mass)
{
    QList<double> pattern{1.0, 2.0, 3.0}; // to be replaced
    const Result<int> best = asked.peakIntensityRatiosFromMass(mass, &pattern);
    return {best.valueOr(-2), pattern};
}

} // namespace vex::test

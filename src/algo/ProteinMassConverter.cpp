#include <vex/ProteinMassConverter.h>

#include <vex/AveragineIsotopeModel.h>

#include "algo/detail/FormulaText.h"

#include <algorithm>
#include <array>

namespace vex {

// Each call sets up the whole model, although mer mass and mass excess would do: the interface has
// it so.
template <typename Query>
double ProteinMassConverter::askModelOf(const QString &formula, Query query)
{
    const auto symbolCounts = detail::symbolCounts(formula);
    if (!symbolCounts) // Deliberate: nothing is logged; 0.0 tells.
        return 0.0;
    std::array<double, MolecularFormula::kAtomTypeCount> counts{};
    std::copy(symbolCounts->begin(), symbolCounts->end(), counts.begin());
    AveragineIsotopeModel model;
    model.initAverageMer(counts.data());
    return query(model);
}

double ProteinMassConverter::averageMassToMono(double averageMass, const QString &formula)
{
    return askModelOf(formula, [averageMass](const AveragineIsotopeModel &model) {
        return model.getMonoFromAverageMer(averageMass);
    });
}

double ProteinMassConverter::monoMassToAverage(double monoMass, const QString &formula)
{
    return askModelOf(formula, [monoMass](const AveragineIsotopeModel &model) {
        return model.getAverageFromMonoMass(monoMass);
    });
}

} // namespace vex

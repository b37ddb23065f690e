#include <vex/AveragineIsotopeModel.h>
#include <vex/FormulaParser.h>

#include <cstdio>
#include <tuple>

int main()
{
    QHash<vex::MolecularFormula::AtomType, double> counts;
    const QString text = QStringLiteral("C49384H77583N13577O14773S417"); // modern averagine
    if (auto error = vex::FormulaParser::molecularFormulaHashFromString(text, &counts);
        error.hasError())
        return 1;
    vex::MolecularFormula averagine;
    averagine.setMolecularFormula(counts);

    vex::AveragineIsotopeModel model;
    std::ignore = model.init(averagine); // never an error
    QList<double> intensities;
    const auto highest =
        model.peakIntensityRatiosFromMass(16951.3, &intensities); // horse apomyoglobin
    if (highest)
        std::printf("peak %d is the highest: %.4f of the signal\n", highest.value(),
            intensities[highest.value()]);
}

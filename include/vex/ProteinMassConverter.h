#pragma once

#include <QString>

#include <vex/Export.h>

namespace vex {

/// Average and monoisotopic mass of molecules whose composition follows an averagine formula text.
///
/// Each call parses the text and builds a whole AveragineIsotopeModel; to convert many masses with
/// one formula, keep a model and ask it.
///
/// @par Exceptions
/// A count in the formula that cannot be read leaves as the standard exception of FormulaParser.
class VEX_EXPORT ProteinMassConverter
{
public:
    /// Monoisotopic mass in daltons.
    ///
    /// @param averageMass  average mass in daltons
    /// @param formula      composition, see FormulaParser; only the proportions of the counts
    /// matter
    /// @return 0.0 when the formula holds none of C, H, O, N, S, P, Na
    static double averageMassToMono(double averageMass, const QString &formula);

    /// Average mass in daltons.
    ///
    /// @param monoMass  monoisotopic mass in daltons
    /// @param formula   composition, see FormulaParser; only the proportions of the counts matter
    /// @return 0.0 when the formula holds none of C, H, O, N, S, P, Na
    static double monoMassToAverage(double monoMass, const QString &formula);

private:
    template <typename Query>
    static double askModelOf(const QString &formula, Query query);
};

} // namespace vex

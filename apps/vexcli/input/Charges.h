#pragma once

#include <QList>
#include <QString>

#include <vex/DeltaComposition.h>
#include <vex/Result.h>

#include "input/Molecules.h"

namespace vexcli {

class CommandLine;

/// A molecule as it flies.
struct Ion
{
    const Molecule *molecule = nullptr;
    vex::ChemicalFormula formula; // with adducts and charge
    int adductCount = 0; // 0 for the molecule as it was written
    QString label; // "[M+10H]10+"; empty without a charge

    int charge() const { return formula.charge(); }
    /// Where a mass of @ref formula, in daltons, lies: m/z, or for a neutral molecule the mass. The
    /// mass that modifications add without atoms counts.
    double position(double mass) const;
    /// "m/z", or "mass / Da".
    QString positionTitle() const
    {
        return charge() == 0 ? QStringLiteral("mass / Da") : QStringLiteral("m/z");
    }
};

/// The charge states that are asked for.
class Charges
{
public:
    /// Adds --charge and --adduct.
    static void addOptions(CommandLine *commandLine);

    /// Those of the options; none when no option asks.
    static vex::Result<Charges> fromOptions(const CommandLine &commandLine);

    /// How many ions are made of each molecule.
    qsizetype count() const { return m_numbers.isEmpty() ? 1 : m_numbers.size(); }

    /// The ion @p index of @p molecule.
    vex::Result<Ion> ionOf(const Molecule &molecule, qsizetype index) const;

private:
    QList<int> m_numbers; // of adducts
    QString m_adduct; // "+H", "-H", for labels
    vex::DeltaComposition m_delta; // of one adduct
};

} // namespace vexcli

#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <vex/ChemicalFormula.h>
#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/Result.h>

namespace vex {

/// What a molecule gains and loses: atoms, and a charge. Deamidation takes N and H away and brings
/// O; a sodium adduct brings Na and a charge of 1.
///
/// ChemicalFormula::plus() applies it. The text is that of the field's tables: "H-1N-1O",
/// "[13C6]C-6". Unlike in a formula, the count of an isotope stands inside its bracket.
class VEX_EXPORT DeltaComposition
{
public:
    using Atoms = ChemicalFormula::Atoms; ///< with a count that is below 0 for what is lost

    /// Nothing gained, nothing lost.
    DeltaComposition() = default;

    /// Gains all of @p formula, its charge included.
    DeltaComposition(const ChemicalFormula &formula);

    /// Reads symbols and isotopes, each with a whole count of 1 to 10,000,000 or its negative; 1
    /// where none is written. Blanks may stand between them. Counts of one kind add up.
    ///
    /// @param text    such as "C2H2O", "H-1N-1O" or "[13C6]C-6"
    /// @param charge  what the molecule's charge grows by, in elementary charges
    /// @par Errors
    /// GeneralFailure for every other text, also an empty one; the message, a line, names the fault
    /// and its column, which counts UTF-16 units from 1
    static Result<DeltaComposition> read(QStringView text, int charge = 0);

    /// Adds @p other to this @p times, which may be negative.
    /// @par Errors
    /// GeneralFailure when a count or the charge would be beyond 10,000,000; nothing has changed
    /// then
    Error add(const DeltaComposition &other, int times = 1);

    /// Each kind once, in the order of ChemicalFormula::atoms(); no count is 0.
    const QList<Atoms> &atoms() const { return m_atoms; }

    /// Charge in elementary charges.
    int charge() const { return m_charge; }

    /// The atoms as read() takes them, in the same order, such as "C-6[13C6]"; empty for none.
    QString text() const;

    /// Change of the average mass in daltons; electrons count as in ChemicalFormula.
    double averageMass() const;

    /// Change of the monoisotopic mass in daltons.
    double monoisotopicMass() const;

private:
    QList<Atoms> m_atoms;
    int m_charge = 0;
};

} // namespace vex

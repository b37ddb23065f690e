#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <vex/Export.h>
#include <vex/PublishedIsotopes.h>
#include <vex/Result.h>

namespace vex {

class DeltaComposition;

/// The atoms and the charge of a chemical formula, read strictly: a text that is not wholly
/// understood is an error. FormulaParser is the tolerant reader, which drops what it does not know.
///
/// @par What is read
/// - Elements, spelled as usual, with a count: C6H12O6. Those of PublishedIsotopes.
/// - Single isotopes: [13C]6, [2H]2O, D2O, T.
/// - Groups in (), [] and {}, at most 100 deep: Ca3(PO4)2, [Co(NH3)6]Cl3. A bracket that begins
///   with a digit is an isotope.
/// - Parts joined by '*', '.' or U+00B7, each with a number in front: CuSO4*5H2O, 3CaO*Al2O3. A
///   number in front of the only part is an error. So is a point between two digits, which looks
///   like a decimal point, unless it joins water: CuSO4.5H2O.
/// - A charge at the end: Na+, Ca++, SO4^2-, SO4(2-). For the sign also U+2212.
/// - Counts in subscript and charges in superscript digits of Unicode.
///
/// Counts are whole numbers without leading zeros, 1 to 10,000,000, also of all atoms of one kind
/// together. An explicit 0 is an error.
///
/// @par Digits in front of a sign
/// They are a charge, a count, or both, so only these are read:
/// - [SO4]2-: one bracket is the whole text. A charge.
/// - NH4+, Al(OH)4-: one digit and one sign, behind other atoms, and not behind ']'. A count.
/// - Hg2++: several signs. A count.
/// - SO₄2-: behind a count in subscript. A charge.
///
/// SO42-, Ca2+, C10H15+ and K[PtCl6]2- are errors whose message says how to write them. '^' and
/// parentheses make everything clear.
class VEX_EXPORT ChemicalFormula
{
public:
    /// Atoms of one kind.
    struct VEX_EXPORT Atoms
    {
        const PublishedIsotopes::Element *element = nullptr; ///< of PublishedIsotopes::elements()
        int massNumber = 0; ///< of a single isotope; 0 for the natural mixture
        int count = 0; ///< 1 to 10,000,000

        /// "C" for the natural mixture, "[13C]" for an isotope; D is "[2H]", T "[3H]".
        QString label() const;
    };

    /// Reads @p text.
    /// @par Errors
    /// GeneralFailure for every other text; the message, a line, names the fault and its column,
    /// which counts UTF-16 units from 1
    static Result<ChemicalFormula> read(QStringView text);

    /// Each kind once, in Hill order: with carbon C, H, then the others by symbol; without carbon
    /// all by symbol. Isotopes follow their element, by mass number.
    const QList<Atoms> &atoms() const { return m_atoms; }

    /// Charge in elementary charges.
    int charge() const { return m_charge; }

    /// The formula in Hill order, such as "CH2[2H]2" or "O4S^2-". read() understands it.
    QString hillText() const;

    /// Average mass in daltons, of the ion where there is a charge: each electron is
    /// 0.000548579909065 Da (CODATA 2018: Tiesinga et al., Reviews of Modern Physics 93 (2021)
    /// 025010).
    double averageMass() const;

    /// Like averageMass(), with the most abundant isotope of each element (not always the lightest)
    /// in place of the natural mixture.
    double monoisotopicMass() const;

    /// Sum of the mass numbers of those isotopes; of a single isotope its own.
    qint64 nominalMass() const;

    /// The formula that a change makes of this one: a modified molecule, an ion with its adducts,
    /// or, since a formula is a DeltaComposition, two molecules as one.
    ///
    /// @param delta  what is gained and lost
    /// @param times  how often; may be negative
    /// @par Errors
    /// GeneralFailure when a count would fall below 0 or exceed 10,000,000, when no atom would be
    /// left, or the charge would exceed the number of electrons; the message is a line
    Result<ChemicalFormula> plus(const DeltaComposition &delta, int times = 1) const;

private:
    QList<Atoms> m_atoms;
    int m_charge = 0;
};

} // namespace vex

#pragma once

#include <QString>
#include <QStringView>

#include <vex/ChemicalFormula.h>
#include <vex/DeltaComposition.h>
#include <vex/Export.h>
#include <vex/Modifications.h>
#include <vex/Result.h>

namespace vex {

/// A peptide or protein chain with its modifications, read from ProForma, the notation of the HUPO
/// Proteomics Standards Initiative (LeDuc et al., Journal of Proteome Research 21 (2022) 1189).
///
/// @par What is read
/// - Residues in capital letters: the twenty, U (selenocysteine), O (pyrrolysine), and J (I or L,
///   whose atoms are the same). X stands only in front of a mass, for a gap: RTAAX[+367.0537]WT.
/// - Modifications in brackets behind their residue, several in a row: EM[Oxidation]EVEES[Phospho].
/// - Of the termini: [Acetyl]-PEPTIDE, PEPTIDE-[Amidated].
/// - By name or number, those of Modifications: [Oxidation], [U:Oxidation], [UNIMOD:35].
/// - By atoms, as DeltaComposition reads them: [Formula:C2H2O], [Formula:[13C2]C-2].
/// - By mass in daltons, always with a sign: [+15.9949], [U:-18.01], [Obs:+1].
///
/// B, Z, small letters, and all else of ProForma (other vocabularies, glycans, cross-links, places
/// that are not known, ranges, labels of the whole molecule, a charge) are errors.
class VEX_EXPORT ModifiedSequence
{
public:
    /// What stands in one pair of brackets.
    struct VEX_EXPORT Tag
    {
        const Modifications::Modification *known = nullptr; ///< null for atoms or a mass
        DeltaComposition delta; ///< what is gained and lost; empty for a mass
        double massDa = 0.0; ///< in daltons, of one that is known by its mass alone
        bool isMass = false; ///< known by its mass alone

        /// Reads @p text, such as "Oxidation", "UNIMOD:35", "+15.9949" or "Formula:O".
        /// @par Errors
        /// GeneralFailure as for ModifiedSequence::read()
        static Result<Tag> read(QStringView text);
    };

    /// Reads @p text. The result's warnings name residues and termini that Unimod does not know to
    /// carry their modification; it is counted all the same.
    /// @par Errors
    /// GeneralFailure for a text that is not understood; the message, a line, names the fault and
    /// its column, which counts UTF-16 units from 1
    static Result<ModifiedSequence> read(QStringView text);

    /// The atoms of a residue, that is of the amino acid without water; null for a character that
    /// stands for none, or for several.
    static const DeltaComposition *residue(QChar code);

    /// The letters of the residues, without the modifications.
    const QString &residues() const { return m_residues; }

    /// The neutral molecule: residues, one water, and the modifications whose atoms are known.
    const ChemicalFormula &formula() const { return m_formula; }

    /// Sum of the modifications that are known by their mass alone, in daltons. It moves the peaks
    /// of the pattern; the isotopes of their atoms are not in it.
    double massShiftDa() const { return m_massShift; }

    /// True when a modification is known by its mass alone.
    bool hasMassShift() const { return m_hasMassShift; }

private:
    QString m_residues;
    ChemicalFormula m_formula;
    double m_massShift = 0.0;
    bool m_hasMassShift = false;
};

} // namespace vex

#pragma once

#include <QList>

#include <vex/ChemicalFormula.h>
#include <vex/Export.h>
#include <vex/Result.h>

namespace vex {

/// The isotope pattern of a molecule whose atoms are counted: for each nominal mass its share of
/// the signal and the mean mass of what falls together there.
///
/// Works with PublishedIsotopes, for all their elements and for single isotopes. Nothing is an
/// average atom: each element is drawn as often as the formula says. When one of the averagine
/// models serves better: docs/models.md.
///
/// @par What is held
/// Peaks of 1e-18 of the highest and more are carried, and all between them; at the ends none is
/// below 1e-20. From those a run of consecutive peaks is answered. Shares are of the whole signal,
/// whatever the run.
///
/// @par Errors of the numbers
/// Shares are right within 1e-12 of the highest. Masses are right within 1e-6 Da up to 1 MDa, for
/// peaks of at least 1e-15 of the highest; the masses of isotopes are taken as exact. The bits are
/// the same on every platform. Two questions about one formula may differ within these bounds.
///
/// @par Time and memory
/// Microseconds for a protein; what is needed grows with the square of the number of peaks that are
/// carried. 10 million atoms of carbon take 0.1 ms, of tin 1.5 s. Up to 350 peaks nothing but the
/// answer is allocated; up to 60 kB of the stack are used.
class VEX_EXPORT MolecularPattern
{
public:
    /// What falls together at one nominal mass.
    struct Peak
    {
        double share = 0.0; ///< of the whole signal, 0 to 1
        /// Mean mass in daltons; of the ion where there is a charge, as in
        /// ChemicalFormula::averageMass(). At a share of 0, as between the peaks of chlorine, a
        /// place between the neighbours without further meaning.
        double massDa = 0.0;
    };

    /// The shortest run of consecutive peaks that holds @p share of the signal or more. Of runs of
    /// that length it is the one with the greatest share, the lightest of equals. Sums of shares
    /// are compared within 1e-14.
    ///
    /// @param formula  counted atoms, with a charge or without
    /// @param share    above 0; 1 stands for all peaks that are carried
    /// @par Errors
    /// GeneralFailure for a formula without atoms, or a share that is not above 0 and at most 1
    static Result<MolecularPattern> holding(const ChemicalFormula &formula, double share = 0.9999);

    /// The run of @p count consecutive peaks with the greatest share, the lightest of equals; all
    /// peaks that are carried when there are no more than @p count.
    ///
    /// @param formula  counted atoms, with a charge or without
    /// @param count    at least 1
    /// @par Errors
    /// GeneralFailure for a formula without atoms, or a count below 1
    static Result<MolecularPattern> ofLength(const ChemicalFormula &formula, qsizetype count);

    /// The run, by nominal mass; at least one peak.
    const QList<Peak> &peaks() const { return m_peaks; }

    /// Place of the first peak: nominal mass units above the molecule of the lightest isotopes that
    /// occur in nature.
    qint64 firstShift() const { return m_firstShift; }

    /// Nominal mass of the first peak: the sum of the mass numbers of its atoms.
    qint64 firstMassNumber() const { return m_firstMassNumber; }

private:
    static MolecularPattern of(const ChemicalFormula &formula, double share, qsizetype count);

    QList<Peak> m_peaks;
    qint64 m_firstShift = 0;
    qint64 m_firstMassNumber = 0;
};

} // namespace vex

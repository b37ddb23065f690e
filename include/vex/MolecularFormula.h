#pragma once

#include <QHash>

#include <vex/Error.h>
#include <vex/Export.h>

namespace vex {

/// Elemental composition: how many atoms of each type, fractions allowed.
///
/// Fractions are normal, since an averagine unit is an average composition.
class VEX_EXPORT MolecularFormula
{
public:
    /// Atom types, in the order of the element slots of the isotope models.
    enum AtomType : qint32 {
        C = 0, ///< carbon
        H = 1, ///< hydrogen
        O = 2, ///< oxygen
        N = 3, ///< nitrogen
        S = 4, ///< sulfur
        P = 5, ///< phosphorus
        Na = 6, ///< sodium
        Reserved = 7, ///< spare slot without a symbol; no formula text can set it
    };

    /// Number of atom types, the spare one included.
    static constexpr int kAtomTypeCount = 8;

    /// All eight types with 0 atoms.
    MolecularFormula();

    /// Replaces the counts of the types that @p formula holds; the others keep theirs.
    void setMolecularFormula(const QHash<AtomType, double> &formula);

    /// Writes the counts to @p formula, whose former content is replaced.
    void molecularFormula(QHash<AtomType, double> *formula) const;

    /// Atoms of @p type; 0 when the formula lacks it.
    double count(AtomType type) const { return m_formula.value(type, 0.0); }

    /// Writes each type's fraction of all atoms to @p formula, whose former content is replaced.
    ///
    /// All eight types are written. A formula whose counts add up to 0 gives NaN for each.
    /// @return never an error
    Error normalizedMolecularFormula(QHash<AtomType, double> *formula);

    /// Adds every count of @p formula to @p sum.
    ///
    /// @p sum accumulates: set it to 0 before the call. The order of the additions is that of the
    /// hash, so the last bit may differ between processes.
    /// @return never an error
    Error sumOfValuesInMolecularFormulaMap(const QHash<AtomType, double> &formula, double *sum);

    /// Removes all entries: every count then reads as 0 and molecularFormula() gives an empty hash.
    void clear();

private:
    QHash<AtomType, double> m_formula;
};

} // namespace vex

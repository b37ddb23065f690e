#pragma once

#include <QList>

#include <vex/Error.h>
#include <vex/Export.h>

namespace vex {

/// A table of elements with their isotopes' masses and abundances, filled by the caller.
///
/// Elements are known by their position, in the order of insertion; by convention that is the order
/// of MolecularFormula::AtomType. Nothing is checked but the sizes of lists: abundances need not
/// add up to 1, masses need no order. AveragineIsotopeModelRefactored takes its elements from here.
class VEX_EXPORT ElementsIsoMassAndAbundances
{
public:
    /// One isotope of an element.
    struct Isotope
    {
        double mass = 0.0; ///< daltons
        double abundance = 0.0; ///< a fraction; what reads the table may take other scales too
    };

    /// One element.
    struct Element
    {
        QList<Isotope> isotopes; ///< in the order in which they were given
    };

    /// Appends an element; empty lists make one without isotopes.
    ///
    /// @param masses      daltons
    /// @param abundances  fractions, as many as masses
    /// @par Errors  GeneralFailure and a warning in the log when the lists differ in size; the
    /// table
    ///              is unchanged then
    Error insertIsoMassAndAbundance(const QList<double> &masses, const QList<double> &abundances);

    /// Deliberate: checks the sizes of the lists and changes nothing. To change an element, build
    /// the table anew.
    ///
    /// @param element     0 to numberOfElements() - 1, not checked
    /// @param masses      daltons
    /// @param abundances  fractions, as many as masses
    /// @par Errors  GeneralFailure and a warning in the log when the lists differ in size
    Error setIsoMassAndAbundanceForElement(
        int element, const QList<double> &masses, const QList<double> &abundances);

    /// Reads one isotope.
    ///
    /// @param element    position of the element
    /// @param isotope    position of the isotope in the element
    /// @param mass       replaced, daltons; untouched on failure
    /// @param abundance  replaced, a fraction; untouched on failure
    /// @par Errors  GeneralFailure for a position outside the table
    Error elementIsoMassAbundanceFromIndex(
        int element, int isotope, double *mass, double *abundance) const;

    /// Number of elements.
    int numberOfElements() const { return static_cast<int>(m_elements.size()); }

    /// Number of isotopes of one element.
    /// @param element  0 to numberOfElements() - 1, not checked
    int numberOfIsotopesForElement(int element) const
    {
        return static_cast<int>(m_elements[element].isotopes.size());
    }

private:
    QList<Element> m_elements;
};

} // namespace vex

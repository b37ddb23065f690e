#pragma once

#include <QLatin1StringView>
#include <QStringView>

#include <span>

#include <vex/Export.h>

namespace vex {

/// Masses and abundances of the isotopes of all elements, as they are published.
///
/// ChemicalFormula computes with them. The models and MolecularMass have tables of their own, which
/// never change; docs/constants.md tells where the three differ and what that is worth.
///
/// Masses: AME2020, Wang, Huang, Kondev, Audi and Naimi, Chinese Physics C 45 (2021) 030003.
/// Abundances: Berglund and Wieser, Isotopic compositions of the elements 2009, Pure and Applied
/// Chemistry 83 (2011) 397; those of Se and Hg from the table of 2013, Meija et al., Pure and
/// Applied Chemistry 88 (2016) 293.
class VEX_EXPORT PublishedIsotopes
{
public:
    /// One isotope.
    struct Isotope
    {
        int massNumber = 0; ///< protons and neutrons
        double massDa = 0.0; ///< of the neutral atom, daltons
        double abundance = 0.0; ///< fraction of the atoms; 0 for 3H and 14C, which only label
    };

    /// One element.
    struct Element
    {
        int atomicNumber = 0; ///< protons
        QLatin1StringView symbol; ///< such as "Na"
        std::span<const Isotope> isotopes; ///< by mass number; abundances add up to 1
    };

    /// The 84 elements with natural isotopes, H to U, by atomic number. Tc, Pm and Po to Ac have
    /// none to weigh.
    static std::span<const Element> elements();

    /// The element of @p symbol, which must be spelled as usual; null when the table lacks it. D
    /// and T are isotopes, not elements.
    static const Element *find(QStringView symbol);

    /// The isotope of @p element with this mass number; null when the table lacks it.
    static const Isotope *find(const Element &element, int massNumber);

    /// Sum of mass times abundance over the isotopes, in their order, in daltons.
    static double averageMass(const Element &element);

    /// The most abundant isotope.
    static const Isotope &mostAbundant(const Element &element);

    /// Mass of the most abundant isotope in daltons, not always the lightest: 4He, 11B, 56Fe.
    static double monoisotopicMass(const Element &element);
};

} // namespace vex

#pragma once

#include <QList>

#include <memory>
#include <vector>

#include <vex/ElementsIsoMassAndAbundances.h>
#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vex {

namespace detail {
struct ListedElement;
class UnitPath;
class UnitPatterns;
} // namespace detail

/// Isotope patterns of molecules of a given mass, as many peaks of them as the caller wants.
///
/// Answers the questions of AveragineIsotopeModel in the same units: a pattern is a list of shares
/// of the whole signal by nominal mass shift, 0 is the monoisotopic peak. What is different:
///
/// - the number of peaks, the capacity, is the caller's choice,
/// - nothing is cut but what lies beyond the capacity: the peaks equal those of an exact
///   convolution of average atoms within 1e-12,
/// - the elements may be the caller's, with any number of isotopes.
///
/// The composition is scaled to one atom, the "unit" (the mer of the other model). Patterns of 1 to
/// 9 units, tens, hundreds and of thousands of units are kept; a mass asks for at most one of each.
/// Which model to use when: docs/models.md.
///
/// Construct, init(), then ask. After init() any number of threads may ask.
class VEX_EXPORT AveragineIsotopeModelRefactored
{
public:
    /// Takes the built-in elements of AveragineIsotopeModel. Until init() the model has no
    /// composition: every pattern is the single peak 1.0, every converted mass 0.0.
    ///
    /// @param capacity  number of peaks of a pattern
    explicit AveragineIsotopeModelRefactored(int capacity = 100);

    /// Copies; both share what is kept. There is no move: a model stays whole whatever is done with
    /// it.
    AveragineIsotopeModelRefactored(const AveragineIsotopeModelRefactored &) = default;
    /// Copies; both share what is kept.
    AveragineIsotopeModelRefactored &operator=(const AveragineIsotopeModelRefactored &) = default;
    ~AveragineIsotopeModelRefactored() = default;

    /// Takes the elements from @p elements; the position of an element is its
    /// MolecularFormula::AtomType, types beyond the table have no isotopes.
    ///
    /// Isotopes are placed by their mass, rounded to whole daltons above the element's lightest
    /// one; those of abundance 0 are left out. The abundances of an element are scaled to the sum
    /// 1, so percentages do as well. A composition that was set stays and is worked out anew.
    /// @par Errors  GeneralFailure and a critical log line, and the model stays as it was: more
    ///              elements than atom types; an element without any abundance above 0; a mass that
    ///              is not finite and above 0; an abundance that is negative or not finite;
    ///              elements that do not go with the composition, see init()
    Error initElementsIsoMassAndAbundance(const ElementsIsoMassAndAbundances &elements);

    /// Sets the composition and works out the patterns that are kept, replacing the former ones.
    ///
    /// Only the proportions of the counts matter. Types that the formula lacks count as 0.
    /// @par Errors  GeneralFailure and a critical log line, and the model stays as it was: a count
    ///              that is negative or not finite; no count above 0; a count above 0 of a type
    ///              without isotopes; a capacity below the number of peaks of one unit, 3 for the
    ///              built-in elements
    Error init(const MolecularFormula &formula);

    /// Writes the pattern of a molecule to @p intensities, whose former content is replaced.
    ///
    /// Every double is answered: a mass of at most half a unit, or NaN, gives the single peak 1.0.
    /// @param mass         average mass in daltons
    /// @param intensities  capacity() shares of the whole signal
    /// @return index of the highest peak, the first of equals; -1 when all are 0
    /// @par Errors  GeneralFailure and a critical log line for a capacity below 1
    Result<int> peakIntensityRatiosFromMass(double mass, QList<double> *intensities) const;

    /// Share of the whole isotope pattern that the peaks at @p mass (in daltons) hold, 0 to 1.
    double signalCoverage(double mass) const;

    /// Monoisotopic mass in daltons for an average mass in daltons; 0.0 without a composition.
    double getMonoFromAverageMer(double averageMass) const;

    /// Average mass in daltons for a monoisotopic mass in daltons; 0.0 without a composition.
    double getAverageFromMonoMass(double monoMass) const;

    /// Average mass of one unit in daltons; 0.0 without a composition.
    double merMass() const;

    /// Number of peaks of a pattern.
    int capacity() const { return m_capacity; }

private:
    friend class detail::UnitPath; // of a cursor: does a query in steps

    using Elements = std::vector<detail::ListedElement>; // by MolecularFormula::AtomType

    Error setUp(const QList<double> &counts, const std::shared_ptr<const Elements> &elements);

    int m_capacity;
    std::shared_ptr<const Elements> m_elements;
    QList<double> m_counts; // of the composition by AtomType; empty before init()
    std::shared_ptr<const detail::UnitPatterns> m_unit; // null before init()
};

} // namespace vex

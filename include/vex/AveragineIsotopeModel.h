#pragma once

#include <QList>

#include <array>
#include <memory>

#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vex {

namespace detail {
class AveraginePath;
class PatternProduct;
class ThousandsChain;
} // namespace detail

/// Isotope patterns of molecules of a given mass, from an average composition (an averagine).
///
/// A pattern is 100 relative intensities indexed by nominal mass shift: 0 is the monoisotopic peak,
/// 1 the peak one dalton above. The composition is scaled to one atom, the "mer"; a mass is taken
/// apart greedily into blocks of 1000, 100, 10 and 1 mers, whose stored patterns are convolved.
/// Element masses and abundances are listed in docs/constants.md. How far 100 peaks reach:
/// docs/accuracy.md, or ask signalCoverage().
///
/// Construct, init(), then ask. The queries are safe to use from several threads at a time.
class VEX_EXPORT AveragineIsotopeModel
{
public:
    /// Number of peaks of a pattern.
    static constexpr int kPeakCount = 100;

    /// Loads the element table. Until init() the model has no composition: every pattern is the
    /// single peak 1.0, every converted mass 0.0.
    AveragineIsotopeModel();

    /// Builds mer and block patterns from @p formula, replacing the former ones.
    ///
    /// Only the proportions of the counts matter. Types that the formula lacks count as 0.
    /// @return never an error
    Error init(const MolecularFormula &formula);

    /// Writes the pattern of a molecule to @p intensities, whose former content is replaced.
    ///
    /// Intensities are shares of the whole signal; peaks beyond the 100th are cut, so at high mass
    /// they add up to less than 1. Every double is answered: a mass of at most half a mer, or NaN,
    /// gives the single peak 1.0; an infinite mass gives what ever larger masses lead to, for
    /// averagine zeros.
    ///
    /// @param mass         average mass in daltons
    /// @param intensities  100 values
    /// @return index of the highest peak, the first of equals; -1 when all are 0
    Result<int> peakIntensityRatiosFromMass(double mass, QList<double> *intensities) const;

    /// Share of the whole isotope pattern that the 100 peaks at @p mass hold.
    ///
    /// The plain sum of what peakIntensityRatiosFromMass() writes: 1 minus what lies beyond the
    /// 100th peak and minus what the block patterns of this mass leave out below 1e-4. What was
    /// left out inside a block pattern when it was built does not show: docs/accuracy.md. Rounding
    /// can carry the sum above 1, by 2e-15 up to 200 kDa. Of a composition with negative counts it
    /// is the sum, but no share of anything.
    /// @param mass  average mass in daltons
    double signalCoverage(double mass) const;

    /// Monoisotopic mass in daltons for an average mass in daltons; 0.0 without a composition.
    double getMonoFromAverageMer(double averageMass) const;

    /// Average mass in daltons for a monoisotopic mass in daltons; 0.0 without a composition.
    double getAverageFromMonoMass(double monoMass) const;

    /// Average mass of one mer in daltons; 0.0 without a composition.
    double merMass() const { return m_merMass; }

private:
    friend class detail::AveraginePath; // of a cursor: does a query in steps
    friend class ProteinMassConverter; // sets a model up from counts that no formula object holds

    using Pattern = std::array<double, kPeakCount>;
    struct Element
    {
        std::array<double, 4> masses; // daltons, by nominal mass shift
        std::array<double, 4> abundances; // fractions
        double averageMass; // daltons
    };

    void initElements();
    void initAverageMer(const double *counts);
    void averageMer(double mass, detail::PatternProduct *pattern) const;
    void multiplyThousands(double times, detail::PatternProduct *pattern) const;
    double adjustmentForSingleMer() const;

    std::array<Element, MolecularFormula::kAtomTypeCount> m_elements; // by AtomType
    std::array<Pattern, 4> m_patterns{}; // of 1, 10, 100 and 1000 mers
    double m_merMass = 0.0; // daltons
    std::array<double, MolecularFormula::kAtomTypeCount>
        m_composition{}; // atoms per mer, by AtomType
    std::shared_ptr<detail::ThousandsChain> m_thousands; // of init(); copies share it
};

} // namespace vex

#pragma once

#include <QList>
#include <QString>

#include <vector>

#include <vex/Export.h>

namespace vex {

struct IsotopeWorkspace;

/// Isotope patterns of averagine on an even grid of masses, computed once, looked up from then on.
///
/// A pattern is a list of shares of the whole signal by nominal mass shift: 0 is the monoisotopic
/// peak. Patterns differ in length: each ends with the last share that reaches `finalTrim`, and
/// what is cut is not made up for. When to use this and when one of the models: docs/models.md.
///
/// The two look-ups treat the ends of the grid differently, and that is required:
///
/// | Mass | isotopeIntensityFractions() | isotopeFractionInterpolated() |
/// |---|---|---|
/// | below 0 | the first pattern | 0 |
/// | between two grid points | the nearer one, the upper one from the middle on | interpolated |
/// | the last grid point | the last pattern | 0 |
/// | beyond | the last pattern | 0 |
/// | NaN | the first pattern | 0 |
///
/// A peak behind the end of a pattern counts as 0. With a negative spacing every mass above 0 lies
/// below the grid: the first pattern.
///
/// Nothing changes after construction: any number of threads may ask.
class VEX_EXPORT AveragineIsotopeDistribution
{
public:
    /// Size of the grid and where patterns end.
    struct VEX_EXPORT Parameters
    {
        /// Number of grid points; a fraction counts as one more, nothing above 0 means none.
        double avgDistCount = 1000.0;
        double massSpacing = 100.0; ///< daltons between two grid points, the first is at 0
        /// Share of the signal below which the end of the growing pattern is cut, at every atom.
        double interTrim = 0.0001;
        /// Share of the signal below which the end of a stored pattern is cut.
        double finalTrim = 0.001;

        /// Every 10 Da up to 9990 Da, cut at 1e-7 only.
        static Parameters makeDefaultForAccurate();
        /// The default: every 100 Da up to 99 900 Da.
        static Parameters makeDefaultForQuorlmapFeatureFinder();

        /// The four numbers in one word, such as for the name of a file; six significant digits.
        QString toStringDevFriendly() const;
    };

    /// Most numbers that a table may hold, as estimated from the parameters (4 GiB).
    static constexpr double kMostValues = 536870912.0;
    /// Largest mass of a grid, in daltons; patterns beyond would take minutes and mean nothing.
    static constexpr double kLargestMass = 1e8;

    /// The table for Parameters().
    AveragineIsotopeDistribution();

    /// The table for @p parameters.
    ///
    /// @throws std::length_error  when the table would exceed kMostValues or kLargestMass
    /// @throws std::bad_alloc     when there is no memory for it
    AveragineIsotopeDistribution(const Parameters &parameters);

    /// Copies the table. There is no move: one that was moved from would be without its table.
    AveragineIsotopeDistribution(const AveragineIsotopeDistribution &) = default;
    /// Replaces the table by a copy.
    AveragineIsotopeDistribution &operator=(const AveragineIsotopeDistribution &) = default;
    ~AveragineIsotopeDistribution() = default;

    /// The stored pattern of the grid point nearest to @p mass (in daltons).
    ///
    /// Valid as long as this object; nothing is copied. An empty table gives an empty pattern and a
    /// debug message.
    const std::vector<double> &isotopeIntensityFractions(double mass) const;

    /// Share of the signal on peak @p isotopeIndex at @p mass (in daltons), interpolated linearly
    /// between the grid points around it.
    double isotopeFractionInterpolated(double mass, int isotopeIndex) const;

    /// The parameters that the table was built with.
    const Parameters &parameters() const { return m_parameters; }

    /// Number of patterns.
    int patternCount() const { return static_cast<int>(m_averagTable.size()); }

    /// Writes the table as CSV with CRLF line ends: a header "MassDalton", "iso0", "iso1", ...,
    /// then a row of mass and shares for each pattern, as long as the pattern is.
    ///
    /// An empty table gives an empty file. Deliberate: failures are silent. Whoever needs to know
    /// writes csvHeader() and csvRow() out.
    /// @param path  the file, replaced
    void saveToFile(const QString &path) const;

    /// The fields of the header of the CSV: as many peaks as the last pattern has.
    QList<QString> csvHeader() const;

    /// The fields of a row of the CSV: mass in six significant digits, shares in twelve.
    /// @param pattern  0 to patternCount() - 1
    QList<QString> csvRow(int pattern) const;

private:
    void construstAveragineIsotopes(IsotopeWorkspace &workspace);
    int isotopeIntensityFractionsIndexRound(double mass) const;
    int isotopeIntensityFractionsIndexFloor(double mass, double *fraction) const;

    std::vector<std::vector<double>> m_averagTable;
    Parameters m_parameters;
};

} // namespace vex

#include <vex/AveragineIsotopeDistribution.h>

#include <vex/IsotopeWorkspace.h>

#include "algo/detail/IsotopeGrowth.h"
#include "detail/Companions.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

constexpr std::size_t kElementCount = 5;

/// How many atoms each grid point adds to those of the one before.
class AtomTargets
{
public:
    using Counts = std::array<int, kElementCount>; // C, H, N, O, S

    AtomTargets(double spacing, const IsotopeWorkspace &workspace)
        // No other spacing that is let through adds atoms: negative, NaN, or of a single point.
        : m_spacing(
            spacing > 0.0 && spacing <= AveragineIsotopeDistribution::kLargestMass ? spacing : 0.0)
        , m_atomMass(workspace.averageAtomMass)
    {
        std::copy_n(workspace.atomFractions.begin(), kElementCount, m_fractions.begin());
    }

    /// For grid point @p index; to be asked in ascending order from 0.
    const Counts &added(int index)
    {
        const auto place = static_cast<std::size_t>(index % kAhead);
        if (place == 0)
            workAhead(index);
        return m_added[place];
    }

private:
    static constexpr int kAhead = 32; // grid points whose divisions do not wait for each other
    static constexpr std::size_t kPadded = 6; // elements, to an even number

    void workAhead(int first)
    {
        // From the mass each time, so that errors of rounding do not add up.
        std::array<std::array<int, kPadded>, kAhead> targets;
        for (int i = 0; i < kAhead; ++i) {
            for (std::size_t element = 0; element < kPadded; ++element) {
                const double atoms = (first + i) * m_spacing * m_fractions[element] / m_atomMass;
                // NOLINTNEXTLINE(bugprone-incorrect-roundings): given by the interface
                targets[std::size_t(i)][element] = static_cast<int>(atoms + 0.5);
            }
        }
        for (std::size_t i = 0; i < kAhead; ++i) {
            for (std::size_t element = 0; element < kElementCount; ++element)
                m_added[i][element] = targets[i][element] - m_before[element];
            std::copy_n(targets[i].begin(), kElementCount, m_before.begin());
        }
    }

    double m_spacing;
    double m_atomMass;
    std::array<double, kPadded> m_fractions{};
    Counts m_before{}; // atoms of the grid point before m_added
    std::array<Counts, kAhead> m_added;
};

std::string shown(double value)
{
    return QString::number(value).toStdString();
}

/// Throws for a table that would take all memory, or all day.
void requireFeasible(
    const AveragineIsotopeDistribution::Parameters &parameters, const IsotopeWorkspace &workspace)
{
    using Distribution = AveragineIsotopeDistribution;
    const double count = std::ceil(parameters.avgDistCount);
    if (!(count > 0.0))
        return;
    const double largest = (count - 1.0) * parameters.massSpacing; // daltons
    if (largest > Distribution::kLargestMass)
        throw std::length_error("a grid up to " + shown(largest) + " Da; the largest mass is "
            + shown(Distribution::kLargestMass) + " Da");
    // The centre of a pattern moves up by this much per dalton; its flanks are the smaller part.
    double shift = 0.0;
    for (std::size_t element = 0; element < kElementCount; ++element) {
        const std::vector<double> &abundances = workspace.isotopeAbundances[element];
        for (std::size_t isotope = 1; isotope < abundances.size(); ++isotope)
            shift += workspace.atomFractions[element] * abundances[isotope] * double(isotope);
    }
    shift /= workspace.averageAtomMass;
    constexpr double kFlank = 16.0; // also for what a list costs besides its values
    const double values = count * (kFlank + 0.5 * (largest > 0.0 ? largest : 0.0) * shift);
    if (!(values <= Distribution::kMostValues))
        throw std::length_error(shown(count) + " patterns hold about " + shown(values)
            + " numbers; the most are " + shown(Distribution::kMostValues));
}

} // namespace

AveragineIsotopeDistribution::Parameters
AveragineIsotopeDistribution::Parameters::makeDefaultForAccurate()
{
    Parameters parameters;
    parameters.massSpacing = 10.0;
    parameters.interTrim = 1e-8;
    parameters.finalTrim = 1e-7;
    return parameters;
}

AveragineIsotopeDistribution::Parameters
AveragineIsotopeDistribution::Parameters::makeDefaultForQuorlmapFeatureFinder()
{
    return {};
}

QString AveragineIsotopeDistribution::Parameters::toStringDevFriendly() const
{
    return u"massspacing_%1__avgDist_%2__interTrim_%3__finalTrim_%4"_s.arg(massSpacing)
        .arg(avgDistCount)
        .arg(interTrim)
        .arg(finalTrim);
}

AveragineIsotopeDistribution::AveragineIsotopeDistribution()
    : AveragineIsotopeDistribution(Parameters::makeDefaultForQuorlmapFeatureFinder())
{
}

AveragineIsotopeDistribution::AveragineIsotopeDistribution(const Parameters &parameters)
    : m_parameters(parameters)
{
    IsotopeWorkspace workspace(IsotopeWorkspace::RatiosSet0);
    construstAveragineIsotopes(workspace);
}

void AveragineIsotopeDistribution::construstAveragineIsotopes(IsotopeWorkspace &workspace)
{
    requireFeasible(m_parameters, workspace);
    if (m_parameters.avgDistCount > 0.0)
        m_averagTable.reserve(static_cast<std::size_t>(m_parameters.avgDistCount));
    const std::vector<detail::AtomShares> shares(
        workspace.isotopeAbundances.begin(), workspace.isotopeAbundances.end());
    detail::GrowingPattern running({1.0});
    AtomTargets targets(m_parameters.massSpacing, workspace);
    for (int i = 0; i < m_parameters.avgDistCount; ++i) {
        const auto &added = targets.added(i);
        for (std::size_t element = 0; element < kElementCount; ++element) {
            if (added[element] > 0)
                running.addAtoms(added[element], shares[element], m_parameters.interTrim);
        }
        running.appendTrimmed(m_parameters.finalTrim, &m_averagTable);
    }
}

int AveragineIsotopeDistribution::isotopeIntensityFractionsIndexRound(double mass) const
{
    if (m_averagTable.empty())
        return -1;
    const double position = mass / m_parameters.massSpacing;
    if (!(position > 0.0)) // below the grid, or NaN
        return 0;
    return static_cast<int>(std::min(position + 0.5, double(patternCount() - 1)));
}

/// The grid point at or below @p mass and how far @p mass lies behind it, in spacings; 0 at the
/// ends.
int AveragineIsotopeDistribution::isotopeIntensityFractionsIndexFloor(
    double mass, double *fraction) const
{
    *fraction = 0.0;
    const int last = patternCount() - 1; // -1 for an empty table
    const double position = mass / m_parameters.massSpacing;
    if (!(position < last)) // beyond the grid, or NaN
        return last;
    if (position < 0.0)
        return std::min(last, 0);
    const int index = static_cast<int>(position);
    *fraction = position - index;
    return index;
}

const std::vector<double> &AveragineIsotopeDistribution::isotopeIntensityFractions(
    double mass) const
{
    static const std::vector<double> kEmpty;
    const int index = isotopeIntensityFractionsIndexRound(mass);
    if (index < 0) {
        qDebug("m_averagTable size is <= 0");
        return kEmpty;
    }
    return m_averagTable[static_cast<std::size_t>(index)];
}

double AveragineIsotopeDistribution::isotopeFractionInterpolated(
    double mass, int isotopeIndex) const
{
    if (isotopeIndex < 0 || mass < 0.0)
        return 0.0;
    double fraction = 0.0;
    const int index = isotopeIntensityFractionsIndexFloor(mass, &fraction);
    if (index < 0 || index >= patternCount() - 1) // Deliberate: 0 at the last grid point as well
        return 0.0;
    const auto shareIn = [isotope = static_cast<std::size_t>(isotopeIndex)](
                             const std::vector<double> &pattern) {
        return isotope < pattern.size() ? pattern[isotope] : 0.0;
    };
    const std::vector<double> *pattern = m_averagTable.data() + index;
    return (1.0 - fraction) * shareIn(pattern[0]) + fraction * shareIn(pattern[1]);
}

QList<QString> AveragineIsotopeDistribution::csvHeader() const
{
    QList<QString> fields{u"MassDalton"_s};
    const std::size_t peaks = m_averagTable.empty() ? 0 : m_averagTable.back().size();
    for (std::size_t peak = 0; peak < peaks; ++peak)
        fields.append(u"iso%1"_s.arg(peak));
    return fields;
}

QList<QString> AveragineIsotopeDistribution::csvRow(int pattern) const
{
    QList<QString> fields{QString::number(pattern * m_parameters.massSpacing, 'g', 6)};
    for (const double share : m_averagTable[static_cast<std::size_t>(pattern)])
        fields.append(QString::number(share, 'g', 12));
    return fields;
}

void AveragineIsotopeDistribution::saveToFile(const QString &path) const
{
    CsvWriter writer(path, u"\r\n"_s, u',');
    if (!writer.open() || m_averagTable.empty())
        return;
    // Deliberate: a row that cannot be written is passed over without a word.
    writer.writeRow(csvHeader());
    for (int pattern = 0; pattern < patternCount(); ++pattern)
        writer.writeRow(csvRow(pattern));
}

} // namespace vex

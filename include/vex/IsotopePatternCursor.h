#pragma once

#include <QList>

#include <memory>

#include <vex/Export.h>
#include <vex/Result.h>

namespace vex {

class AveragineIsotopeModel;
class AveragineIsotopeModelRefactored;

namespace detail {
class PatternPath;
} // namespace detail

/// Asks one averagine model for the isotope patterns of many masses.
///
/// A cursor answers what its model answers, to the last bit, for any masses in any order. It keeps
/// the way to the pattern before: a mass that is made of the same blocks only has that pattern
/// copied, and one that begins with the same blocks goes on from there. So masses are best asked in
/// ascending order. How much faster that is: docs/performance.md.
///
/// @par Threads
/// One thread at a time may use a cursor. Cursors of several threads may share a model, also one
/// that is asked itself meanwhile.
///
/// @par Memory
/// 18 KB for AveragineIsotopeModel; for AveragineIsotopeModelRefactored 40 bytes for each peak of
/// the capacity, and 10 KB at least. Up to 170 kDa of averagine, or as far as the list-based model
/// keeps its patterns, an answer allocates nothing but a list that is too short or shared.
class VEX_EXPORT IsotopePatternCursor
{
public:
    /// Asks @p model as it is now; what becomes of it later does not matter.
    explicit IsotopePatternCursor(const AveragineIsotopeModel &model);
    /// Asks @p model as it is now; what becomes of it later does not matter.
    explicit IsotopePatternCursor(const AveragineIsotopeModelRefactored &model);
    IsotopePatternCursor(const IsotopePatternCursor &) = delete;
    IsotopePatternCursor &operator=(const IsotopePatternCursor &) = delete;
    ~IsotopePatternCursor();

    /// Writes the pattern of a molecule to @p intensities, whose former content is replaced.
    ///
    /// @param mass         average mass in daltons; every double is answered
    /// @param intensities  as many shares of the whole signal as the model has peaks, by nominal
    ///                     mass shift
    /// @return index of the highest peak, the first of equals; -1 when all are 0
    /// @par Errors  GeneralFailure and a critical log line for a list-based model with a capacity
    ///              below 1
    Result<int> peakIntensityRatiosFromMass(double mass, QList<double> *intensities);

private:
    std::unique_ptr<detail::PatternPath> m_path;
};

} // namespace vex

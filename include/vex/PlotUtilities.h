#pragma once

#include <QList>

#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/PlotBase.h>
#include <vex/Result.h>

namespace vex {

/// Comparing and combining sampled signals.
///
/// Signals hold their points in ascending x. x is in minutes or m/z, the same unit in both signals;
/// y and areas are in the units of the signals. Magnitudes up to 1e-12 count as 0, positions closer
/// than 1e-6 as one. A signal that is not ascending gets the answer of the same steps, more slowly;
/// checkSignal() finds it. Values between samples and areas are those of PlotBase. Where memory
/// runs out, std::bad_alloc is thrown.
namespace PlotUtilities {

/// A signal with the magnitude of every y.
VEX_EXPORT PlotBase abs(const PlotBase &plot);

/// True when both signals have the same points, each x and y within 1e-12 of the larger magnitude,
/// or within 1e-12 where both are below 1. A NaN equals nothing.
/// @return never an error
VEX_EXPORT Result<bool> centroidedPlotSame(const PlotBase &a, const PlotBase &b);

/// The median gap between neighbouring x, the upper one of the two in the middle.
///
/// @par Errors  InvalidInput for a signal of fewer than two points
VEX_EXPORT Result<double> guessSamplingInterval(const PlotBase &plot);

/// Thins a list in place: drops every value that is closer than @p tolerance to the last one kept.
///
/// @param values     ascending; replaced by what is kept
/// @param tolerance  a value exactly that far away is kept, and so is NaN
/// @return never an error
VEX_EXPORT Error removeCloseValues(QList<double> *values, double tolerance);

/// Common x positions of two signals: the samples of both, where either does not end at 0 also the
/// places one sampling interval beyond its ends, within the range of both.
///
/// @param a, b       points in ascending x
/// @param tolerance  not used: positions closer than 1e-6 always count as one
/// @return ascending positions; when a signal is empty, the other's x as they stand. Never an
///         error: of two signals that need a sampling interval the longer one has two points
VEX_EXPORT Result<QList<double>> mergeDomains(
    const PlotBase &a, const PlotBase &b, double tolerance);

/// The difference @p a minus @p b on their common positions.
///
/// @param a, b       points in ascending x
/// @param tolerance  not used, see mergeDomains()
/// @return never an error
VEX_EXPORT Result<PlotBase> subtract(const PlotBase &a, const PlotBase &b, double tolerance);

/// Area under the magnitude of the difference, divided by the smaller of the areas under the
/// magnitudes of both signals; by the larger one when the smaller counts as 0; 0 when both do.
///
/// Areas above 1.8e308 are infinite, and the quotient of two such is NaN.
/// @param a, b       points in ascending x
/// @param tolerance  not used, see mergeDomains()
/// @return never an error
VEX_EXPORT Result<double> relativeAreaOfError(
    const PlotBase &a, const PlotBase &b, double tolerance);

/// Pearson's correlation of both signals over their common positions; 0 when one of them is flat.
///
/// @param a, b  points in ascending x
/// @return never an error
VEX_EXPORT Result<double> pearsonsCorrelation(const PlotBase &a, const PlotBase &b);

/// Whether two signals are alike: both without intensity, or close in area and correlation.
///
/// Decided in this order: signals of which one or both carry no intensity; relative area of error;
/// correlation. compareSignals() tells which one it was.
/// @param a, b                     points in ascending x
/// @param ignoredTolerance         not used
/// @param maxRelativeAreaOfError   largest that still counts as alike; NaN as area passes
/// @param minCorrelation           smallest that still counts as alike; NaN as correlation passes
/// @return never an error
VEX_EXPORT Result<bool> plotSame(const PlotBase &a, const PlotBase &b, double ignoredTolerance,
    double maxRelativeAreaOfError, double minCorrelation);

/// What plotSame() found, and why.
struct SignalVerdict
{
    /// What decided, in the order in which it is asked.
    enum Rule {
        OneWithoutIntensity, ///< only one of the signals carries intensity: not alike
        BothWithoutIntensity, ///< neither does: alike
        AreaOfError, ///< the relative area of error is too large: not alike
        Correlation, ///< the correlation is too small: not alike
        WithinBoth, ///< both measures are within their limits: alike
    };

    bool isSame = false; ///< the answer of plotSame()
    Rule rule = WithinBoth; ///< what decided
    double relativeAreaOfError = 0.0; ///< also where it did not decide; NaN when it has no value
    double correlation = 0.0; ///< also where it did not decide; NaN when it has no value
    qsizetype domainSize = 0; ///< number of common positions
    /// Where the ranges of both signals begin to overlap, in units of x; NaN when one is empty.
    double overlapStart = 0.0;
    /// Where they end to; below overlapStart when they do not overlap, NaN when one is empty.
    double overlapEnd = 0.0;
};

/// The answer of plotSame() with all that it goes by.
///
/// @param a, b                    points in ascending x
/// @param maxRelativeAreaOfError  as plotSame()
/// @param minCorrelation          as plotSame()
/// @return never an error
VEX_EXPORT Result<SignalVerdict> compareSignals(
    const PlotBase &a, const PlotBase &b, double maxRelativeAreaOfError, double minCorrelation);

/// Something about a signal that the functions above do not expect.
struct SignalFinding
{
    /// What it is.
    enum Kind {
        Descending, ///< x is below the one before
        RepeatedPosition, ///< x equals the one before: only the first y counts there
        PositionNotFinite, ///< x is NaN or infinite
        ValueNotFinite, ///< y is NaN or infinite
    };

    Kind kind = Descending; ///< what it is
    qsizetype index = 0; ///< of the point

    /// True for the same finding in the same place.
    bool operator==(const SignalFinding &) const = default;
};

/// Looks for what is wrong with a signal, in the order of its points.
///
/// @param plot  any
/// @param most  number of findings at which the search ends
VEX_EXPORT QList<SignalFinding> checkSignal(const PlotBase &plot, qsizetype most = 1000);

} // namespace PlotUtilities

} // namespace vex

#pragma once

#include <QVarLengthArray>
#include <QtGlobal>

namespace vex::detail {

/// Values by nominal mass; as many as here are held without allocation.
using Values = QVarLengthArray<double, 512>;

/// Consecutive entries of a pattern.
struct Run
{
    qsizetype first = 0;
    qsizetype count = 0;
};

/// Shares of the signal by nominal mass, and how far the masses are from an even ladder.
struct CountedPattern
{
    qint64 shift = 0; ///< nominal mass of the first entry above that of the lightest isotopes
    Values shares; ///< of the sum 1, but for what is left off
    Values excess; ///< share times mean excess of mass in daltons; empty when all are 0
};

/// The isotopes of one element that occur, each as a place above the lightest one.
struct IsotopeLadder
{
    QVarLengthArray<double, 16> shares; ///< by shift, of the sum 1; first and last are above 0
    /// By shift: mass above that of the lightest isotope in daltons; 0 where there is none.
    QVarLengthArray<double, 16> masses;
    int isotopeCount = 0;
    int lightestNumber = 0; ///< mass number of the lightest isotope
    double lightestMass = 0.0; ///< in daltons
    double mean = 0.0; ///< of the shift of one atom
    double variance = 0.0; ///< of the same

    qsizetype range() const { return shares.size() - 1; }
};

/// From the first to the last entry that is at least @p negligible times the highest.
Run carried(const Values &values, double negligible);

/// The entries @p run of the convolution of @p a and @p b, into @p result, which is another object.
void convolve(const Values &a, const Values &b, Run run, Values *result);

/// The shares of @p count atoms of an element, of the sum 1, without the ends below @p negligible
/// times the highest, into @p result; returns the shift of the first.
qint64 sharesOf(const IsotopeLadder &isotopes, int count, double negligible, Values *result);

} // namespace vex::detail

#include "algo/detail/CountedPattern.h"

#include "algo/detail/ConvolutionKernel.h"

#include <algorithm>
#include <cmath>

namespace vex::detail {

namespace {

// The recurrence of a power starts at the lightest isotopes: with so many units of mean shift at
// most, its first value is above 1e-130 of the highest.
constexpr double kMostMeanOfRecurrence = 256.0;
// What is likelier to end too late than in time is not tried.
constexpr double kMostMeanOfAtom = 0.25;
constexpr int kFewestOfRecurrence = 16;

constexpr qsizetype kLanes = 4; // worked out side by side: none waits for the one before

/// Scales @p values to the sum 1.
void normalise(Values *values)
{
    double sums[kLanes] = {};
    const qsizetype size = values->size();
    double *const data = values->data();
    qsizetype i = 0;
    for (; i + kLanes <= size; i += kLanes) {
        for (qsizetype lane = 0; lane < kLanes; ++lane)
            sums[lane] += data[i + lane];
    }
    for (; i < size; ++i)
        sums[0] += data[i];
    const double factor = 1.0 / ((sums[0] + sums[1]) + (sums[2] + sums[3]));
    for (i = 0; i < size; ++i)
        data[i] *= factor;
}

/// Takes off what is negligible; returns how many entries were in front.
qsizetype trim(Values *values, double negligible)
{
    const Run run = carried(*values, negligible);
    if (run.first > 0)
        std::copy_n(values->cbegin() + run.first, run.count, values->begin());
    values->resize(run.count);
    return run.first;
}

/// The numbers of heavy atoms among @p count, each heavy with the odds @p heavy to @p light;
/// returns the smallest that is carried.
///
/// Goes from the likeliest number to both sides, so that nothing overflows or underflows, and the
/// error of a value is that of its own few steps.
qint64 binomial(double light, double heavy, int count, double negligible, Values *result)
{
    const double odds = heavy / light;
    const double backOdds = light / heavy;
    const auto mode = static_cast<qint64>(
        std::min(double(count), std::floor((count + 1.0) * (heavy / (light + heavy)))));
    result->clear();
    double value = 1.0;
    double heavier = static_cast<double>(count - mode) + 1.0;
    for (auto k = static_cast<double>(mode); k > 0.0; k -= 1.0, heavier += 1.0) {
        value *= k * backOdds / heavier;
        if (value < negligible)
            break;
        result->append(value);
    }
    const qint64 first = mode - result->size();
    std::reverse(result->begin(), result->end());
    value = 1.0;
    double lighter = static_cast<double>(count - mode);
    for (auto k = static_cast<double>(mode) + 1.0; value >= negligible; k += 1.0, lighter -= 1.0) {
        result->append(value);
        value *= lighter * odds / k; // 0 behind the last
    }
    normalise(result);
    return first;
}

/// The power @p count of @p one, from its lowest entry up. False, and nothing of use, when it would
/// not be sure of its digits.
///
/// With P = one^count, from P' one = count P one':
///     k one[0] P[k] = sum over i of (i (count + 1) - k) one[i] P[k - i].
/// No term is negative up to k = count + 1, so the relative errors only add up. Where k is not
/// below the mean, (count + 1) / count times, the factors of the sum add up to 1 at most: as many
/// negligible entries in a row as the sum has terms are followed by no other.
bool powerByRecurrence(const QVarLengthArray<double, 16> &one, int count, double mean,
    double negligible, Values *result)
{
    const qsizetype range = one.size() - 1;
    if (mean > kMostMeanOfAtom || count < kFewestOfRecurrence)
        return false;
    QVarLengthArray<double, 16> ratios(one.size());
    for (qsizetype i = 0; i <= range; ++i)
        ratios[i] = one[i] / one[0];
    const double next = count + 1.0;
    result->resize(1);
    result->front() = 1.0;
    double value = 1.0;
    double highest = 1.0;
    qsizetype below = 0;
    for (qsizetype k = 1; k <= count + 1; ++k) {
        const double part = 1.0 / double(k);
        const double *const end = result->constData() + k;
        double sum = 0.0;
        for (qsizetype i = std::min(k, range); i > 1; --i)
            sum += ((double(i) * next - double(k)) * part * ratios[i]) * end[-i];
        value = sum + ((next - double(k)) * part * ratios[1]) * value; // the one to wait for
        result->append(value);
        highest = std::max(highest, value);
        below = value < negligible * highest ? below + 1 : 0;
        if (below >= range && double(k) >= next * mean)
            return true;
    }
    return false;
}

/// The power @p count of @p one into @p result; returns the shift of the first entry.
qint64 power(const QVarLengthArray<double, 16> &one, int count, double mean, double negligible,
    Values *result)
{
    int halvings = 0;
    while (mean * (count >> halvings) > kMostMeanOfRecurrence)
        ++halvings;
    Values factor;
    factor.append(one.cbegin(), one.size());
    if (count == 0) {
        halvings = 0;
        result->resize(1);
        result->front() = 1.0;
    } else if (!powerByRecurrence(one, count >> halvings, mean, negligible, result)) {
        for (halvings = 0; count >> halvings > 1;)
            ++halvings;
        *result = factor;
    }
    qint64 first = trim(result, negligible);
    normalise(result);
    Values product;
    for (; halvings > 0; --halvings) {
        convolve(*result, *result, {0, 2 * result->size() - 1}, &product);
        first = 2 * first + trim(&product, negligible);
        *result = product;
        if ((count >> (halvings - 1)) % 2 == 1) {
            convolve(*result, factor, {0, result->size() + factor.size() - 1}, &product);
            first += trim(&product, negligible);
            *result = product;
        }
        normalise(result);
    }
    return first;
}

} // namespace

Run carried(const Values &values, double negligible)
{
    double highest[kLanes] = {};
    const double *const data = values.constData();
    qsizetype i = 0;
    for (; i + kLanes <= values.size(); i += kLanes) {
        for (qsizetype lane = 0; lane < kLanes; ++lane)
            highest[lane] = std::max(highest[lane], data[i + lane]);
    }
    for (; i < values.size(); ++i)
        highest[0] = std::max(highest[0], data[i]);
    const double threshold = negligible * *std::max_element(highest, highest + kLanes);
    Run run{0, values.size()};
    while (values[run.first + run.count - 1] < threshold)
        --run.count;
    for (; values[run.first] < threshold; ++run.first)
        --run.count;
    return run;
}

void convolve(const Values &a, const Values &b, Run run, Values *result)
{
    const Values &taps = a.size() < b.size() ? a : b;
    const Values &values = a.size() < b.size() ? b : a;
    const qsizetype front = taps.size() - 1;
    const qsizetype blocks = (run.count + kKernelBlock - 1) / kKernelBlock * kKernelBlock;
    QVarLengthArray<double, 1024> padded(front + std::max(run.first + blocks, values.size()));
    double *const start = std::fill_n(padded.data(), front, 0.0);
    std::fill(std::copy(values.cbegin(), values.cend(), start), padded.end(), 0.0);
    result->resize(blocks);
    activeKernel()(taps.constData(), static_cast<int>(taps.size()), start + run.first,
        result->data(), static_cast<int>(blocks));
    result->resize(run.count);
}

qint64 sharesOf(const IsotopeLadder &isotopes, int count, double negligible, Values *result)
{
    if (isotopes.isotopeCount != 2)
        return power(isotopes.shares, count, isotopes.mean, negligible, result);
    const qint64 fewest =
        binomial(isotopes.shares.front(), isotopes.shares.back(), count, negligible, result);
    const qsizetype step = isotopes.range();
    const qsizetype numbers = result->size();
    if (step > 1) { // apart, from the end on
        result->resize((numbers - 1) * step + 1);
        for (qsizetype i = numbers - 1; i > 0; --i) {
            (*result)[i * step] = (*result)[i];
            std::fill_n(result->begin() + (i - 1) * step + 1, step - 1, 0.0);
        }
    }
    return fewest * step;
}

} // namespace vex::detail

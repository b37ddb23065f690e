#include <vex/MolecularPattern.h>

#include "algo/detail/CountedPattern.h"
#include "algo/detail/Electron.h"
#include "detail/Trace.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, chosen here.
constexpr detail::TraceSource kSource{"src/algo/MolecularPattern"};
namespace at {
constexpr auto shareRefused = kSource.line(1);
constexpr auto countRefused = kSource.line(2);
constexpr auto nothingToHold = kSource.line(3);
constexpr auto nothingToCount = kSource.line(4);
} // namespace at

using detail::CountedPattern;
using detail::IsotopeLadder;
using detail::Run;
using detail::Values;

// What is left off at both ends of a pattern, as a fraction of its highest value: at first, which
// is enough for the peaks that are high, and when there are others in the answer.
constexpr double kNegligibleAtFirst = 1e-16;
constexpr double kHigh = 1e-8;
constexpr double kNegligible = 1e-20;
// Where the answer to most questions lies: so many standard deviations from the mean.
constexpr double kLikely = 4.6;
// What differences of sums of shares may be off by.
constexpr double kSumsAreRight = 1e-14;

/// Atoms of an element that occurs as more than one isotope.
struct Mixture
{
    const IsotopeLadder *isotopes;
    int count;

    double mean() const { return count * isotopes->mean; } // of the shift
    double variance() const { return count * isotopes->variance; }
};

IsotopeLadder ladderOf(const PublishedIsotopes::Element &element)
{
    IsotopeLadder ladder;
    for (const auto &[massNumber, mass, abundance] : element.isotopes) {
        if (abundance == 0.0)
            continue;
        if (ladder.isotopeCount++ == 0) {
            ladder.lightestNumber = massNumber;
            ladder.lightestMass = mass;
        }
        ladder.shares.resize(massNumber - ladder.lightestNumber, 0.0);
        ladder.masses.resize(massNumber - ladder.lightestNumber, 0.0);
        ladder.shares.append(abundance);
        ladder.masses.append(mass - ladder.lightestMass);
    }
    double square = 0.0;
    for (qsizetype i = 0; i < ladder.shares.size(); ++i) {
        ladder.mean += double(i) * ladder.shares[i];
        square += double(i * i) * ladder.shares[i];
    }
    ladder.variance = square - ladder.mean * ladder.mean;
    return ladder;
}

/// The ladder of an element of PublishedIsotopes::elements().
const IsotopeLadder &ladder(const PublishedIsotopes::Element *element)
{
    static const auto ladders = [] {
        std::vector<IsotopeLadder> all;
        for (const PublishedIsotopes::Element &each : PublishedIsotopes::elements())
            all.push_back(ladderOf(each));
        return all;
    }();
    return ladders[static_cast<std::size_t>(element - PublishedIsotopes::elements().data())];
}

/// The sums of the first 0, 1, ... entries.
Values sumsOf(const Values &values)
{
    Values sums(values.size() + 1);
    sums[0] = 0.0;
    for (qsizetype i = 0; i < values.size(); ++i)
        sums[i + 1] = sums[i] + values[i];
    return sums;
}

/// Length of the shortest run between two of @p sums that holds @p share; of all when none does.
qsizetype shortest(const Values &sums, Run within, double share)
{
    qsizetype length = within.count;
    qsizetype begin = within.first;
    for (qsizetype end = begin + 1; end <= within.first + within.count; ++end) {
        while (sums[end] - sums[begin + 1] >= share)
            ++begin;
        if (sums[end] - sums[begin] >= share)
            length = std::min(length, end - begin);
    }
    return length;
}

/// A run of peaks that the caller asks for.
struct Question
{
    double share = 1.0; // to be held; 1 is all that there is
    qsizetype count = 0; // in place of a share where it is not 0

    bool isForAll() const { return count == 0 && share == 1.0; }
};

/// The run with the greatest share of all that are as short as can be.
struct Answer
{
    Run run;
    double share = -1.0;
};

Answer answerFrom(const Values &sums, Run all, const Question &question)
{
    const auto &[share, count] = question;
    const qsizetype length = count == 0 ? shortest(sums, all, share) : std::min(count, all.count);
    Answer best{{all.first, length}};
    for (qsizetype first = all.first; first + length <= all.first + all.count; ++first) {
        const double held = sums[first + length] - sums[first];
        if (held > best.share) {
            best.share = held;
            best.run.first = first;
        }
    }
    return best;
}

/// The answer to @p question among @p shares, where those in front and behind are not known.
/// Nothing when they matter, or when a share of the answer is not high.
std::optional<Run> sureAnswer(
    const Values &shares, bool hasFront, bool hasBack, const Question &question)
{
    const Values sums = sumsOf(shares);
    const auto &[run, share] = answerFrom(sums, {0, shares.size()}, question);
    const double unknown = 1.0 - sums.back() + kSumsAreRight;
    const double least = question.count == 0 ? question.share : share;
    // A run of that length that reaches out holds at most the outermost shares and all that is not
    // known. Where too little is known for the question, that is no less than is asked.
    const bool isNotInFront = !hasFront || sums[run.count] + unknown < least;
    const bool isNotBehind =
        !hasBack || sums.back() - sums[shares.size() - run.count] + unknown < least;
    const double high = kHigh * *std::max_element(shares.cbegin(), shares.cend());
    const bool isHigh = std::all_of(shares.cbegin() + run.first,
        shares.cbegin() + run.first + run.count, [high](double each) { return each >= high; });
    return isNotInFront && isNotBehind && isHigh ? std::optional(run) : std::nullopt;
}

/// Adds what @p values contribute to @p sum, which may still be empty.
void addTo(const Values &values, Values *sum)
{
    if (sum->isEmpty()) {
        *sum = values;
        return;
    }
    for (qsizetype i = 0; i < values.size(); ++i)
        (*sum)[i] += values[i];
}

/// The atoms of a formula, sorted for the work.
struct Atoms
{
    QVarLengthArray<Mixture, 8> mixtures; // by variance
    double lightestMass = 0.0; // of the molecule of the lightest isotopes, in daltons
    qint64 lightestNumber = 0; // its mass number
};

Atoms atomsOf(const ChemicalFormula &formula)
{
    Atoms result;
    for (const ChemicalFormula::Atoms &atoms : formula.atoms()) {
        const IsotopeLadder &isotopes = ladder(atoms.element);
        const PublishedIsotopes::Isotope *single =
            PublishedIsotopes::find(*atoms.element, atoms.massNumber);
        result.lightestMass += atoms.count * (single ? single->massDa : isotopes.lightestMass);
        result.lightestNumber +=
            qint64(atoms.count) * (single ? single->massNumber : isotopes.lightestNumber);
        if (!single && isotopes.isotopeCount > 1)
            result.mixtures.append({&isotopes, atoms.count});
    }
    result.lightestMass -= formula.charge() * detail::kElectronMass;
    std::sort(
        result.mixtures.begin(), result.mixtures.end(), [](const Mixture &a, const Mixture &b) {
            return std::tuple(a.variance(), a.isotopes) < std::tuple(b.variance(), b.isotopes);
        });
    return result;
}

/// Entries near the mean of a pattern of @p all entries, whose first is at @p shift.
Run likely(const Atoms &atoms, qint64 shift, qsizetype all)
{
    double mean = -double(shift);
    double variance = 0.0;
    for (const Mixture &mixture : atoms.mixtures) {
        mean += mixture.mean();
        variance += mixture.variance();
    }
    const double reach = kLikely * (std::sqrt(variance) + 1.0);
    const auto first = static_cast<qsizetype>(std::max(0.0, mean - reach));
    const auto end = static_cast<qsizetype>(std::min(double(all), mean + reach));
    return {first, end - first};
}

/// Atoms of an element as what a pattern is multiplied by.
///
/// One atom is as good as another: the excess of all of them is that of one, count times, while the
/// others have shares only. So the pattern is multiplied by the others, and then by one atom.
struct Factor
{
    Values others; // shares of all atoms but one; of all where none has an excess
    qint64 shift; // of their first entry
    Values one; // shares of the one atom; {1} where there is none
    Values excess; // of all atoms, in the place of the one; empty when all are 0
};

Factor factorOf(const Mixture &mixture, double spacing, double negligible)
{
    const auto &[isotopes, count] = mixture;
    Factor factor;
    bool isEven = true;
    for (qsizetype i = 0; i <= isotopes->range(); ++i) {
        const double share = isotopes->shares[i];
        const double excess =
            share == 0.0 ? 0.0 : count * (share * (isotopes->masses[i] - double(i) * spacing));
        factor.one.append(share);
        factor.excess.append(excess);
        isEven = isEven && excess == 0.0;
    }
    if (isEven) {
        factor.one.resize(1);
        factor.one.front() = 1.0;
        factor.excess.clear();
    }
    factor.shift =
        detail::sharesOf(*isotopes, isEven ? count : count - 1, negligible, &factor.others);
    return factor;
}

/// What the entries @p run of a product need of its first factor, of @p size entries, when the
/// second one has @p range + 1.
Run needed(Run run, qsizetype size, qsizetype range)
{
    const qsizetype first = std::max(qsizetype(0), run.first - range);
    return {first, std::min(size, run.first + run.count) - first};
}

/// The entries of the pattern that answer @p question, into @p result. False, and nothing of use,
/// when @p isQuick and that is not sure.
bool answer(const Atoms &atoms, double spacing, const Question &question, bool isQuick,
    CountedPattern *result)
{
    const double negligible = isQuick ? kNegligibleAtFirst : kNegligible;
    result->shift = 0;
    result->shares.resize(1);
    result->shares.front() = 1.0;
    result->excess.clear();
    for (qsizetype i = 0; i < atoms.mixtures.size(); ++i) {
        const bool isLast = i == atoms.mixtures.size() - 1;
        const Factor factor = factorOf(atoms.mixtures[i], spacing, negligible);
        const qsizetype size = result->shares.size() + factor.others.size() - 1;
        const qsizetype range = factor.one.size() - 1;
        const qsizetype all = size + range;
        result->shift += factor.shift;

        const Run seen = isLast && isQuick ? likely(atoms, result->shift, all) : Run{0, all};
        const Run before = needed(seen, size, range);
        Values shares; // without the one atom, then with it where there is one
        Values together;
        detail::convolve(result->shares, factor.others, before, &shares);
        if (range > 0)
            detail::convolve(
                shares, factor.one, {seen.first - before.first, seen.count}, &together);
        const Values &withOne = range > 0 ? together : shares;
        Run run;
        if (isLast && isQuick) {
            const bool hasBack = seen.first + seen.count < all;
            const auto sure = sureAnswer(withOne, seen.first > 0, hasBack, question);
            if (!sure)
                return false;
            run = *sure;
        } else {
            run = detail::carried(withOne, negligible);
            if (isLast && !question.isForAll())
                run = answerFrom(sumsOf(withOne), run, question).run;
        }

        result->shares.clear();
        result->shares.append(withOne.cbegin() + run.first, run.count);
        run.first += seen.first;
        result->shift += run.first;
        if (!result->excess.isEmpty()) {
            const Run part = needed(run, size, range);
            detail::convolve(result->excess, factor.others, part, &together);
            if (range > 0)
                detail::convolve(
                    together, factor.one, {run.first - part.first, run.count}, &result->excess);
            else
                result->excess = together;
        }
        if (!factor.excess.isEmpty()) {
            detail::convolve(
                shares, factor.excess, {run.first - before.first, run.count}, &together);
            addTo(together, &result->excess);
        }
    }
    return true;
}

Result<MolecularPattern> refused(
    detail::TraceSite site, const char *function, const QString &reason)
{
    return detail::stamped(
        site, function, Result<MolecularPattern>(Error(ErrorCode::GeneralFailure, reason)));
}

} // namespace

Result<MolecularPattern> MolecularPattern::holding(const ChemicalFormula &formula, double share)
{
    if (!(share > 0.0 && share <= 1.0))
        return refused(at::shareRefused, Q_FUNC_INFO,
            u"The share of the signal is %1. It must be above 0 and at most 1."_s.arg(share));
    if (formula.atoms().isEmpty())
        return refused(at::nothingToHold, Q_FUNC_INFO, u"The formula has no atoms."_s);
    return of(formula, share, 0);
}

Result<MolecularPattern> MolecularPattern::ofLength(const ChemicalFormula &formula, qsizetype count)
{
    if (count < 1)
        return refused(at::countRefused, Q_FUNC_INFO,
            u"The number of peaks is %1. It must be at least 1."_s.arg(count));
    if (formula.atoms().isEmpty())
        return refused(at::nothingToCount, Q_FUNC_INFO, u"The formula has no atoms."_s);
    return of(formula, 1.0, count);
}

MolecularPattern MolecularPattern::of(const ChemicalFormula &formula, double share, qsizetype count)
{
    const Atoms atoms = atomsOf(formula);
    // The widest element comes last, when the others are together. Its own isotopes are the even
    // ladder, so that with two of them it has no excess, and most of the work is for shares alone.
    const qsizetype last = atoms.mixtures.size() - 1;
    const IsotopeLadder *widest = last < 0 ? nullptr : atoms.mixtures[last].isotopes;
    const double spacing = widest ? widest->masses.back() / double(widest->range()) : 1.0;
    const Question question{share, count};
    CountedPattern pattern;
    if (question.isForAll() || !answer(atoms, spacing, question, true, &pattern))
        answer(atoms, spacing, question, false, &pattern);

    MolecularPattern result;
    result.m_firstShift = pattern.shift;
    result.m_firstMassNumber = atoms.lightestNumber + pattern.shift;
    result.m_peaks.resize(pattern.shares.size());
    for (qsizetype i = 0; i < result.m_peaks.size(); ++i) {
        const double held = pattern.shares[i];
        const double excess =
            held > 0.0 && !pattern.excess.isEmpty() ? pattern.excess[i] / held : 0.0;
        result.m_peaks[i] = {
            held, atoms.lightestMass + double(pattern.shift + i) * spacing + excess};
    }
    return result;
}

} // namespace vex

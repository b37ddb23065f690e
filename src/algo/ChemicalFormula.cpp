#include <vex/ChemicalFormula.h>
#include <vex/DeltaComposition.h>

#include "detail/ShownText.h"
#include "algo/detail/AtomCounts.h"
#include "detail/Trace.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, chosen here.
constexpr detail::TraceSource kSource{"src/algo/ChemicalFormula"};
namespace at {
constexpr auto notUnderstood = kSource.line(1);
constexpr auto notPossible = kSource.line(2);
} // namespace at

using Element = PublishedIsotopes::Element;
using Atoms = ChemicalFormula::Atoms;
using Kind = detail::AtomKind;
using Counts = detail::AtomCounts;
using detail::kLargestCount;
using detail::kUnweighed;

constexpr std::size_t kDeepest = 100;

/// Characters that stand for the same thing in different shapes. Digits are in order.
struct Script
{
    QStringView digits;
    QStringView plus;
    QStringView minus;
};
constexpr Script kLine{u"0123456789", u"+", u"-\u2212"};
constexpr Script kSubscript{u"₀₁₂₃₄₅₆₇₈₉", u"", u""};
constexpr Script kSuperscript{u"⁰¹²³⁴⁵⁶⁷⁸⁹", u"⁺", u"⁻"};

bool isCapital(QChar character)
{
    return character >= u'A' && character <= u'Z';
}

bool isSmall(QChar character)
{
    return character >= u'a' && character <= u'z';
}

bool isSeparator(QChar character)
{
    return character == u'.' || character == u'*' || character == u'\u00B7';
}

/// +1, -1, or 0 for what is no sign.
int signOf(QChar character, const Script &script)
{
    return script.plus.contains(character) ? 1 : script.minus.contains(character) ? -1 : 0;
}

QChar closing(QChar open)
{
    return open == u'(' ? u')' : open == u'[' ? u']' : u'}';
}

/// Of the neutral atoms.
qint64 electronsOf(const Counts &counts)
{
    qint64 electrons = 0;
    for (const auto &[kind, count] : counts)
        electrons += kind.first->atomicNumber * count;
    return electrons;
}

/// Reads one text from its beginning to its end, or to the first fault.
class Reader
{
public:
    explicit Reader(QStringView text)
        : m_text(text)
    {
    }

    bool read()
    {
        if (m_text.isEmpty())
            return fail(0, u"is empty"_s);
        qsizetype parts = 0;
        std::optional<qsizetype> factorAt; // of the first number in front of a part
        do {
            m_at += parts > 0; // the separator
            if (isOfOneOf(peek(), kLine.digits) && !factorAt)
                factorAt = m_at;
            if (!readPart())
                return false;
            ++parts;
        } while (isSeparator(peek()));
        if (parts == 1 && factorAt)
            return fail(*factorAt, u"begins with a number, which belongs behind a group"_s);
        return readCharge();
    }

    const QString &problem() const { return m_problem; }
    const Counts &counts() const { return m_counts; }
    int charge() const { return m_charge; }

private:
    struct Group
    {
        qsizetype start; // of its bracket
        Counts counts;
    };

    static bool isOfOneOf(QChar character, QStringView set)
    {
        return !character.isNull() && set.contains(character);
    }

    /// The next character; NUL at the end.
    QChar peek(qsizetype ahead = 0) const
    {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : QChar();
    }

    /// Says what is wrong at a position.
    bool fail(qsizetype position, const QString &what)
    {
        m_problem = u"%1 %2 (column %3)"_s.arg(m_text.isEmpty() ? u"the formula"_s : quoted(m_text),
            what, QString::number(position + 1));
        return false;
    }

    static QString quoted(QStringView text) { return detail::quotedHead(text); }
    static QString quoted(QChar character) { return quoted(QStringView(&character, 1)); }

    /// Says that the next character, or the end, is not what can follow.
    bool failHere()
    {
        if (m_at == m_text.size())
            return fail(m_at, u"ends too early"_s);
        const QChar character = peek();
        if (character.isSpace())
            return fail(m_at, u"has a blank"_s);
        if (isSmall(character))
            return fail(m_at,
                u"has %1 where an element begins, with a capital letter"_s.arg(quoted(character)));
        const bool isPair = character.isHighSurrogate() && peek(1).isLowSurrogate();
        return fail(m_at,
            u"has %1 where it cannot stand"_s.arg(quoted(m_text.sliced(m_at, isPair ? 2 : 1))));
    }

    /// Units up to a separator, a charge or the end.
    bool readPart()
    {
        const qsizetype factorAt = m_at;
        qint64 factor = 1;
        if (isPointOfDecimal())
            return fail(m_at - 1, u"has a point between digits, write '*' if it joins two parts"_s);
        if (isOfOneOf(peek(), kLine.digits) && !readNumber(kLine, &factor))
            return false;
        m_partStart = m_at;
        m_groups.assign(1, Group{m_at, {}});
        for (bool isMore = true; isMore;) {
            if (!readUnit(&isMore))
                return false;
        }
        if (m_groups.size() > 1 && m_at == m_text.size()) {
            const qsizetype open = m_groups.back().start;
            return fail(open,
                u"has no %1 for its %2"_s.arg(quoted(closing(m_text[open])), quoted(m_text[open])));
        }
        if (m_groups.size() > 1 || m_at == m_partStart)
            return failHere();
        return merge(m_groups.front().counts, factor, factorAt, &m_counts);
    }

    /// True right behind a point that has a digit on both sides and joins no water.
    bool isPointOfDecimal() const
    {
        if (m_at < 2 || m_text[m_at - 1] != u'.' || !kLine.digits.contains(m_text[m_at - 2])
            || !isOfOneOf(peek(), kLine.digits))
            return false;
        const auto isDigit = [](QChar character) { return kLine.digits.contains(character); };
        const auto start = std::find_if_not(m_text.begin() + m_at, m_text.end(), isDigit);
        const auto end = std::find_if(start, m_text.end(),
            [](QChar character) { return isSeparator(character) || character == u'^'; });
        const QStringView part(start, end);
        return part != u"H2O" && part != u"D2O" && part != u"H₂O" && part != u"D₂O";
    }

    /// An element, an isotope, or one end of a group; or nothing of these.
    bool readUnit(bool *isUnit)
    {
        const qsizetype start = m_at;
        const QChar character = peek();
        *isUnit = true;
        if (isCapital(character)) {
            Kind kind;
            return readElement(&kind) && addCounted(start, false, {{kind, 1}});
        }
        if (character == u'[' && isOfOneOf(peek(1), kLine.digits)) {
            Kind kind;
            return readIsotope(&kind) && addCounted(start, true, {{kind, 1}});
        }
        if (character == u')' || character == u']' || character == u'}')
            return closeGroup();
        const bool isCharge = character == u'(' && m_groups.size() == 1
            && (isOfOneOf(peek(1), kLine.digits) || signOf(peek(1), kLine) != 0);
        *isUnit = (character == u'(' || character == u'[' || character == u'{') && !isCharge;
        if (!*isUnit)
            return true;
        if (m_groups.size() > kDeepest)
            return fail(m_at, u"has groups more than %1 deep"_s.arg(kDeepest));
        m_groups.push_back({m_at++, {}});
        return true;
    }

    bool closeGroup()
    {
        if (m_groups.size() == 1)
            return fail(m_at, u"has %1 without its beginning"_s.arg(quoted(peek())));
        const Group group = std::move(m_groups.back());
        const QChar open = m_text[group.start];
        if (closing(open) != peek())
            return fail(m_at,
                u"has %1 where %2 must close the group of column %3"_s.arg(
                    quoted(peek()), quoted(closing(open)), QString::number(group.start + 1)));
        if (m_at == group.start + 1)
            return fail(group.start, u"has an empty group"_s);
        m_groups.pop_back();
        ++m_at;
        return addCounted(group.start, open == u'[', group.counts);
    }

    /// A symbol, which may also be D or T.
    bool readElement(Kind *kind)
    {
        const qsizetype start = m_at;
        const auto end = std::find_if_not(m_text.begin() + start + 1, m_text.end(), isSmall);
        m_at = end - m_text.begin();
        const QStringView symbol = m_text.sliced(start, m_at - start);
        if (symbol == u"D" || symbol == u"T")
            *kind = {PublishedIsotopes::find(u"H"), symbol == u"D" ? 2 : 3};
        else
            *kind = {PublishedIsotopes::find(symbol), 0};
        if (kind->first)
            return true;
        if (symbol.size() == 2 && kUnweighed.contains(symbol))
            return fail(start,
                u"has the element %1, which has no natural isotopes to weigh"_s.arg(
                    quoted(symbol)));
        const QString meant = symbol.size() == 1 ? withCapitals(start) : QString();
        return fail(start,
            u"has no element %1%2"_s.arg(quoted(symbol),
                meant.isEmpty() ? meant : ", perhaps "_L1 + meant + " is meant"_L1));
    }

    /// The element that the letter at @p position makes with a capital beside it, as in NACL.
    QString withCapitals(qsizetype position) const
    {
        for (const qsizetype first : {position - 1, position}) {
            if (first < 0 || first + 1 >= m_text.size())
                continue;
            QString symbol = m_text[first] + QString(m_text[first + 1].toLower());
            if (isCapital(m_text[first + 1]) && PublishedIsotopes::find(symbol))
                return symbol;
        }
        return {};
    }

    /// "[13C]" without its count.
    bool readIsotope(Kind *kind)
    {
        const qsizetype start = ++m_at;
        qint64 massNumber = 0;
        if (!readNumber(kLine, &massNumber))
            return false;
        const qsizetype symbolAt = m_at;
        if (!isCapital(peek()))
            return failHere();
        if (!readElement(kind))
            return false;
        const Element &element = *kind->first;
        if (kind->second != 0)
            return fail(symbolAt, u"has a mass number in front of an isotope"_s);
        kind->second = static_cast<int>(massNumber);
        if (!PublishedIsotopes::find(element, kind->second)) {
            QStringList known;
            for (const PublishedIsotopes::Isotope &isotope : element.isotopes)
                known.append(QString::number(isotope.massNumber));
            return fail(start,
                u"has no isotope '%1%2', of %2 there are %3"_s.arg(
                    QString::number(massNumber), element.symbol, known.join(", "_L1)));
        }
        if (peek() != u']')
            return m_at == m_text.size()
                ? fail(start - 1, u"has no ']' for its '['"_s)
                : fail(m_at, u"has %1 where ']' must close the isotope"_s.arg(quoted(peek())));
        ++m_at;
        return true;
    }

    /// Adds what has been read from @p start, times the count that follows.
    bool addCounted(qsizetype start, bool isBracket, const Counts &counts)
    {
        const qsizetype countAt = m_at;
        qint64 count = 1;
        if (isOfOneOf(peek(), kSubscript.digits)) {
            if (!readNumber(kSubscript, &count))
                return false;
        } else if (isOfOneOf(peek(), kLine.digits)) {
            const auto isDigit = [](QChar character) { return kLine.digits.contains(character); };
            const auto end = std::find_if_not(m_text.begin() + m_at, m_text.end(), isDigit);
            const qsizetype digits = end - m_text.begin() - m_at;
            const bool isLast = m_at + digits + 1 == m_text.size();
            if (isLast && signOf(peek(digits), kLine) != 0) {
                if (start == 0 && isBracket && !kLine.digits.contains(m_text[1]))
                    return merge(counts, 1, start, &m_groups.back().counts); // a charge follows
                if (digits > 1 || isBracket || start == m_partStart)
                    return failUnclear(digits);
            }
            if (!readNumber(kLine, &count))
                return false;
        }
        return merge(counts, count, countAt, &m_groups.back().counts);
    }

    /// Says how to write the digits in front of a sign.
    bool failUnclear(qsizetype digits)
    {
        constexpr qsizetype kLongest = 40;
        const QStringView before = m_text.size() > kLongest ? QStringView() : m_text.first(m_at);
        const QStringView number = m_text.sliced(m_at, std::min(digits, kLongest));
        const QChar sign = signOf(peek(digits), kLine) > 0 ? u'+' : u'-';
        const qsizetype counted = digits > 1 ? number.size() - 1 : 0;
        const QString asCharge =
            u"%1%2^%3"_s.arg(before, number.first(counted), number.sliced(counted)) + sign;
        const QString asCount = u"%1%2^"_s.arg(before, number) + sign;
        return fail(
            m_at, u"does not tell a count from a charge, write %1 or %2"_s.arg(asCharge, asCount));
    }

    /// A number of at least one digit without leading zeros, up to the largest count.
    bool readNumber(const Script &script, qint64 *number)
    {
        const qsizetype start = m_at;
        *number = 0;
        for (; isOfOneOf(peek(), script.digits); ++m_at)
            *number = std::min(*number * 10 + script.digits.indexOf(peek()), kLargestCount + 1);
        if (m_text[start] == script.digits[0])
            return fail(start,
                m_at == start + 1 ? u"has the number 0"_s : u"has a number with a leading zero"_s);
        if (*number > kLargestCount)
            return fail(start, u"has a number above %1"_s.arg(kLargestCount));
        return true;
    }

    /// Adds @p counts @p factor times to @p sum.
    bool merge(const Counts &counts, qint64 factor, qsizetype position, Counts *sum)
    {
        for (const auto &[kind, count] : counts) {
            qint64 &total = (*sum)[kind];
            total += count * factor;
            if (total > kLargestCount)
                return fail(position,
                    u"has more than %1 atoms of %2"_s.arg(
                        QString::number(kLargestCount), kind.first->symbol));
        }
        return true;
    }

    /// What stands behind the atoms, up to the end of the text.
    bool readCharge()
    {
        const qsizetype start = m_at;
        const bool isEnclosed = peek() == u'(';
        const bool isMarked = isEnclosed || peek() == u'^';
        const bool isRaised =
            isOfOneOf(peek(), kSuperscript.digits) || signOf(peek(), kSuperscript) != 0;
        if (m_at == m_text.size())
            return true;
        m_at += isMarked;
        const Script &script = isRaised ? kSuperscript : kLine;
        qint64 number = 1;
        const bool hasNumber = isOfOneOf(peek(), script.digits);
        if (hasNumber && !readNumber(script, &number))
            return false;
        const int sign = signOf(peek(), script);
        if (sign == 0)
            return failHere();
        ++m_at;
        for (; !hasNumber && signOf(peek(), script) == sign; ++m_at)
            ++number;
        if (isEnclosed) {
            if (peek() != u')')
                return failHere();
            ++m_at;
        }
        if (m_at < m_text.size())
            return fail(m_at, u"goes on behind its charge"_s);
        if (number > kLargestCount || sign * number > electronsOf(m_counts))
            return fail(start, u"has a charge beyond its electrons"_s);
        m_charge = static_cast<int>(sign * number);
        return true;
    }

    QStringView m_text;
    qsizetype m_at = 0; // of the next character
    qsizetype m_partStart = 0; // of the first unit of this part
    std::vector<Group> m_groups; // the part itself first, then those that are open
    Counts m_counts;
    int m_charge = 0;
    QString m_problem;
};

} // namespace

QString ChemicalFormula::Atoms::label() const
{
    if (massNumber == 0)
        return element->symbol;
    return u'[' + QString::number(massNumber) + element->symbol + u']';
}

Result<ChemicalFormula> ChemicalFormula::read(QStringView text)
{
    Reader reader(text);
    if (!reader.read())
        return detail::stamped(at::notUnderstood, Q_FUNC_INFO,
            Result<ChemicalFormula>(Error(ErrorCode::GeneralFailure, reader.problem())));
    ChemicalFormula formula;
    formula.m_charge = reader.charge();
    formula.m_atoms = detail::inHillOrder(reader.counts());
    return formula;
}

QString ChemicalFormula::hillText() const
{
    QString text;
    for (const Atoms &atoms : m_atoms)
        text += atoms.label() + (atoms.count > 1 ? QString::number(atoms.count) : QString());
    if (m_charge == 0)
        return text;
    const int size = std::abs(m_charge);
    return text + u'^' + (size > 1 ? QString::number(size) : QString())
        + (m_charge > 0 ? u'+' : u'-');
}

double ChemicalFormula::averageMass() const
{
    return detail::averageMass(m_atoms, m_charge);
}

double ChemicalFormula::monoisotopicMass() const
{
    return detail::monoisotopicMass(m_atoms, m_charge);
}

qint64 ChemicalFormula::nominalMass() const
{
    qint64 sum = 0;
    for (const Atoms &atoms : m_atoms)
        sum += qint64(atoms.count)
            * (atoms.massNumber != 0 ? atoms.massNumber
                                     : PublishedIsotopes::mostAbundant(*atoms.element).massNumber);
    return sum;
}

Result<ChemicalFormula> ChemicalFormula::plus(const DeltaComposition &delta, int times) const
{
    const auto refused = [](const QString &problem) {
        return detail::stamped(at::notPossible, Q_FUNC_INFO,
            Result<ChemicalFormula>(Error(ErrorCode::GeneralFailure, problem)));
    };
    Counts counts;
    for (const Atoms &atoms : m_atoms)
        counts[{atoms.element, atoms.massNumber}] += atoms.count;
    for (const Atoms &atoms : delta.atoms()) {
        const qint64 change = qint64(atoms.count) * times;
        qint64 &count = counts[{atoms.element, atoms.massNumber}];
        if (count + change < 0)
            return refused(u"there is not enough %1, %2 of %3 would be taken away"_s.arg(
                atoms.label(), QString::number(-change), QString::number(count)));
        if (count + change > kLargestCount)
            return refused(u"there would be more than %1 atoms of %2"_s.arg(
                QString::number(kLargestCount), atoms.label()));
        count += change;
    }
    ChemicalFormula formula;
    formula.m_atoms = detail::inHillOrder(counts);
    const qint64 charge = m_charge + qint64(delta.charge()) * times;
    if (formula.m_atoms.isEmpty())
        return refused(u"no atom would be left"_s);
    if (charge > electronsOf(counts) || -charge > kLargestCount)
        return refused(u"a charge of %1 would be beyond the electrons"_s.arg(charge));
    formula.m_charge = static_cast<int>(charge);
    return formula;
}

} // namespace vex

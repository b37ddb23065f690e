#include <vex/FormulaParser.h>

#include "algo/detail/ErrorUtils.h"
#include "algo/detail/FormulaText.h"
#include "detail/Trace.h"

#include <QRegularExpression>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/algo/AveragineIsotopeModel"};
namespace at {
constexpr auto noElementForList = kSource.line(423);
constexpr auto noElementForHash = kSource.line(454);
constexpr auto formulaUnreadable = kSource.line(456); // chosen here
} // namespace at

/// The atom type of @p symbol, when it is one of the seven.
std::optional<MolecularFormula::AtomType> atomType(QStringView symbol)
{
    if (symbol == "Na"_L1)
        return MolecularFormula::Na;
    if (symbol.size() == 1) {
        switch (symbol.front().unicode()) {
        case u'C':
            return MolecularFormula::C;
        case u'H':
            return MolecularFormula::H;
        case u'O':
            return MolecularFormula::O;
        case u'N':
            return MolecularFormula::N;
        case u'S':
            return MolecularFormula::S;
        case u'P':
            return MolecularFormula::P;
        default:
            break;
        }
    }
    return std::nullopt;
}

bool isKept(QChar character)
{
    return character.isLetter() || character.isDigit() || character == u'-' || character == u'+';
}

using FilteredText = QVarLengthArray<QChar, 256>;

FilteredText filtered(QStringView formula)
{
    FilteredText text(formula.size());
    const auto end = std::copy_if(formula.begin(), formula.end(), text.begin(), isKept);
    text.resize(end - text.begin());
    return text;
}

/// One element of a filtered formula text: symbol from start, count from count, up to end.
struct Token
{
    qsizetype start;
    qsizetype count;
    qsizetype end;
};

template <typename Visitor>
void forEachToken(QStringView text, Visitor visit)
{
    const auto isStart = [](QChar character) { return character.isUpper(); };
    const auto isNoLetter = [](QChar character) { return !character.isLetter(); };
    auto start = std::find_if(text.begin(), text.end(), isStart);
    while (start != text.end()) {
        const auto end = std::find_if(start + 1, text.end(), isStart);
        const auto count = std::find_if(start, end, isNoLetter);
        visit(Token{start - text.begin(), count - text.begin(), end - text.begin()});
        start = end;
    }
}

/// What strtod makes of a count text.
struct Count
{
    enum State {
        Read,
        NoNumber,
        OutOfRange
    };
    State state = Read;
    double value = 1.0;
    qsizetype used = 0; ///< characters that belong to the number
};

/// The value of up to 15 plain digits: exact, as strtod's; nothing for any other text.
std::optional<double> wholeNumber(QStringView text)
{
    if (text.size() > 15)
        return std::nullopt;
    qint64 value = 0;
    for (const QChar character : text) {
        if (character < u'0' || character > u'9')
            return std::nullopt;
        value = value * 10 + (character.unicode() - u'0');
    }
    return static_cast<double>(value);
}

Count readCount(QStringView text)
{
    if (text.isEmpty())
        return {};
    if (const auto value = wholeNumber(text)) // most counts are
        return {Count::Read, *value, text.size()};
    const QByteArray utf8 = text.toUtf8();
    Count count;
    char *end = nullptr;
    const int savedErrno = errno;
    errno = 0;
    count.value = std::strtod(utf8.constData(), &end);
    const bool outOfRange = errno == ERANGE;
    errno = savedErrno;
    count.used = end - utf8.constData(); // a number is ASCII: one byte, one character
    if (count.used == 0)
        count.state = Count::NoNumber;
    else if (outOfRange)
        count.state = Count::OutOfRange;
    return count;
}

double countOrThrow(QStringView text)
{
    const Count count = readCount(text);
    switch (count.state) {
    case Count::NoNumber:
        throw std::invalid_argument("invalid stod argument");
    case Count::OutOfRange:
        throw std::out_of_range("stod argument out of range");
    case Count::Read:
        break;
    }
    return count.value;
}

/// Inserts a count, or adds it to the one that the symbol has: 0.0 + -0.0 would lose the sign.
void addCount(QMap<QString, double> *counts, QStringView symbol, double count)
{
    const QString key = symbol.toString();
    if (const auto present = counts->find(key); present != counts->end())
        *present += count;
    else
        counts->insert(key, count);
}

Error noElement()
{
    return ErrorUtils::emptyCheckReturn(QMap<QString, double>(), Error(ErrorCode::GeneralFailure));
}

/// @p text for a message: cut when nobody would read it to its end.
QString quotable(QStringView text)
{
    constexpr qsizetype kLongest = 40;
    return text.size() <= kLongest ? text.toString() : text.first(kLongest).toString() + u'…';
}

/// What the dropping of characters did to the kept ones around them.
enum class Gap {
    Harmless,
    InSymbol,
    BeforeCount,
    InCount,
};

/// The findings of one text. Callers count in the filtered text, findings in the full one.
class Findings
{
public:
    explicit Findings(const QString &formula)
        : m_formula(formula)
    {
        for (qsizetype i = 0; i < formula.size(); ++i) {
            if (isKept(formula[i]))
                m_positions.append(i);
        }
        m_positions.append(formula.size());
    }

    /// Adds what was dropped in front of the kept characters up to @p to, those done before aside.
    void addDropped(qsizetype to, Gap gap)
    {
        for (; m_done < to; ++m_done) {
            const qsizetype from = m_done > 0 ? m_positions[m_done - 1] + 1 : 0;
            const qsizetype next = m_positions[m_done];
            const bool joinsDigits = from > 0 && next < m_formula.size()
                && m_formula[from - 1].isDigit() && m_formula[next].isDigit();
            for (qsizetype i = from; i < next;)
                i += addDroppedAt(i, next, joinsDigits, gap);
        }
    }

    void add(
        FormulaParser::Finding::Kind kind, qsizetype from, QStringView text, const QString &message)
    {
        const qsizetype position = m_positions[from];
        m_findings.append({kind, position, text.toString(),
            message.arg(quotable(text), QString::number(position + 1))});
    }

    /// All findings in ascending position.
    QList<FormulaParser::Finding> sorted() &&
    {
        std::stable_sort(m_findings.begin(), m_findings.end(),
            [](const auto &a, const auto &b) { return a.position < b.position; });
        return std::move(m_findings);
    }

private:
    /// The number of UTF-16 units of the character at @p at, 1 or 2.
    qsizetype addDroppedAt(qsizetype at, qsizetype end, bool joinsDigits, Gap gap)
    {
        using Finding = FormulaParser::Finding;
        const bool isPair =
            at + 1 < end && m_formula[at].isHighSurrogate() && m_formula[at + 1].isLowSurrogate();
        const char32_t code = isPair ? QChar::surrogateToUcs4(m_formula[at], m_formula[at + 1])
                                     : m_formula[at].unicode();
        const QString text = m_formula.sliced(at, isPair ? 2 : 1);
        const bool isVisible = QChar::isPrint(code) && (code == U' ' || !QChar::isSpace(code));
        const QString shown =
            isVisible ? u"'%1'"_s.arg(text) : u"U+%1"_s.arg(uint(code), 4, 16, QChar(u'0'));

        Finding::Kind kind = Finding::CountChanged;
        QString effect;
        if (joinsDigits) {
            kind = Finding::DigitsJoined;
            effect = u", the digits around it run together"_s;
        } else if (QChar::isNumber(code)) {
            effect = u", so its number is lost"_s;
        } else if (gap == Gap::InSymbol) {
            effect = u", so the letters around it make one symbol"_s;
        } else if (gap == Gap::BeforeCount) {
            effect = u", so the number behind it counts for the symbol before it"_s;
        } else if (gap == Gap::InCount) {
            effect = u", so the characters around it make one number"_s;
        } else {
            kind = Finding::CharacterDropped;
        }
        m_findings.append({kind, at, text,
            u"%1 at character %2 is dropped%3"_s.arg(shown, QString::number(at + 1), effect)});
        return text.size();
    }

    const QString &m_formula;
    QList<qsizetype> m_positions; // of each kept character in the full text, and its end
    qsizetype m_done = 0; // kept characters in front of which all dropped ones are told
    QList<FormulaParser::Finding> m_findings;
};

} // namespace

std::optional<std::array<double, detail::kSymbolCount>> detail::symbolCounts(const QString &formula)
{
    const FilteredText text = filtered(formula);
    const QStringView view(text.constData(), text.size());
    bool anySymbol = false;
    std::array<std::optional<double>, kSymbolCount> found;
    forEachToken(view, [&](const Token &token) {
        anySymbol = true;
        const double count = countOrThrow(view.sliced(token.count, token.end - token.count));
        if (const auto type = atomType(view.sliced(token.start, token.count - token.start))) {
            std::optional<double> &sum = found[static_cast<std::size_t>(*type)];
            sum = sum ? *sum + count : count;
        }
    });
    if (!anySymbol)
        return std::nullopt;
    std::array<double, kSymbolCount> counts;
    std::transform(found.begin(), found.end(), counts.begin(),
        [](std::optional<double> count) { return count.value_or(0.0); });
    return counts;
}

QMap<QString, double> FormulaParser::parseChemicalFormula(const QString &formula)
{
    const FilteredText text = filtered(formula);
    const QStringView view(text.constData(), text.size());
    QMap<QString, double> counts;
    forEachToken(view, [&](const Token &token) {
        const QStringView symbol = view.sliced(token.start, token.count - token.start);
        addCount(&counts, symbol, countOrThrow(view.sliced(token.count, token.end - token.count)));
    });
    return counts;
}

Error FormulaParser::molecularFormulaHashFromString(
    const QString &formula, QHash<MolecularFormula::AtomType, double> *hash)
{
    const auto counts = detail::symbolCounts(formula);
    if (!counts)
        return detail::stamped(at::noElementForHash, Q_FUNC_INFO, noElement());
    for (std::size_t type = 0; type < counts->size(); ++type)
        hash->insert(static_cast<MolecularFormula::AtomType>(type), (*counts)[type]);
    return ErrorCode::NoError;
}

Error FormulaParser::molecularFormulaParser(const QString &formula, QList<double> *counts)
{
    const auto found = detail::symbolCounts(formula);
    if (!found)
        return detail::stamped(at::noElementForList, Q_FUNC_INFO, noElement());
    for (const double count : *found)
        counts->append(count);
    return ErrorCode::NoError;
}

Error FormulaParser::rangeParser(const QString &text, double *start, double *end)
{
    static const QRegularExpression range(uR"(\[\s*(?<start>\d*)\s*,\s*(?<end>\d*)\s*\])"_s);
    const QRegularExpressionMatch match = range.match(text);
    if (match.hasMatch()) {
        *start = match.captured(u"start"_s).toDouble();
        *end = match.captured(u"end"_s).toDouble();
    }
    return ErrorCode::NoError;
}

Result<FormulaParser::Check> FormulaParser::checkFormula(const QString &formula)
{
    const FilteredText text = filtered(formula);
    const QStringView view(text.constData(), text.size());
    Findings findings(formula);
    Check check;
    qsizetype firstSymbol = view.size();
    forEachToken(view, [&](const Token &token) {
        firstSymbol = std::min(firstSymbol, token.start);
        const QStringView symbol = view.sliced(token.start, token.count - token.start);
        const QStringView countText = view.sliced(token.count, token.end - token.count);
        const Count count = readCount(countText);
        findings.addDropped(token.start + 1, Gap::Harmless);
        findings.addDropped(token.count, Gap::InSymbol);
        findings.addDropped(token.count + std::min<qsizetype>(count.used, 1), Gap::BeforeCount);
        findings.addDropped(token.count + count.used, Gap::InCount);
        if (count.state == Count::Read) {
            addCount(&check.counts, symbol, count.value);
            if (count.used < countText.size())
                findings.add(Finding::CountTailIgnored, token.count + count.used,
                    countText.sliced(count.used), u"'%1' at character %2 is no part of a count"_s);
        } else {
            findings.add(Finding::CountUnreadable, token.count, countText,
                count.state == Count::NoNumber
                    ? u"the count '%1' at character %2 is not a number"_s
                    : u"the count '%1' at character %2 is out of range"_s);
        }
        if (!atomType(symbol))
            findings.add(Finding::SymbolIgnored, token.start, symbol,
                u"the symbol '%1' at character %2 is none of C, H, O, N, S, P, Na"_s);
    });
    findings.addDropped(view.size() + 1, Gap::Harmless);
    if (firstSymbol > 0)
        findings.add(Finding::LostBeforeSymbol, 0, view.first(firstSymbol),
            u"'%1' at character %2 stands before the first symbol"_s);

    check.findings = std::move(findings).sorted();
    QList<QString> failures;
    QList<QString> warnings;
    for (const Finding &finding : std::as_const(check.findings))
        (finding.kind == Finding::CountUnreadable ? failures : warnings).append(finding.message);
    if (firstSymbol == view.size())
        failures.append(u"the formula text '%1' holds no element symbol"_s.arg(quotable(formula)));

    if (failures.isEmpty())
        return check;
    Error error(ErrorCode::GeneralFailure, failures.join("; "_L1));
    error.addWarnings(warnings);
    return detail::stamped(at::formulaUnreadable, Q_FUNC_INFO, std::move(error));
}

} // namespace vex

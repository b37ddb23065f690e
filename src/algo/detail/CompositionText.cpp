#include "algo/detail/CompositionText.h"

#include "detail/ShownText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

using Element = PublishedIsotopes::Element;

/// Reads one text from its beginning to its end, or to the first fault.
class Reader
{
public:
    Reader(QStringView text, AtomCounts *counts)
        : m_text(text)
        , m_counts(*counts)
    {
    }

    bool read()
    {
        do {
            skipBlanks();
            if (!(peek() == u'[' ? readIsotope() : readElement()))
                return false;
            skipBlanks();
        } while (m_at < m_text.size());
        return true;
    }

    const TextFault &fault() const { return m_fault; }

private:
    QChar peek() const { return m_at < m_text.size() ? m_text[m_at] : QChar(); }
    bool isDigit() const { return peek() >= u'0' && peek() <= u'9'; }

    void skipBlanks()
    {
        while (peek() == u' ')
            ++m_at;
    }

    bool fail(qsizetype position, const QString &what)
    {
        m_fault = {position, what};
        return false;
    }

    /// Says that the next character, or the end, is not what can follow.
    bool failHere(QLatin1StringView expected)
    {
        if (m_at == m_text.size())
            return fail(m_at, u"ends where %1 must stand"_s.arg(expected));
        const bool isPair = peek().isHighSurrogate() && m_at + 1 < m_text.size();
        return fail(m_at,
            u"has %1 where %2 must stand"_s.arg(
                quotedHead(m_text.sliced(m_at, isPair ? 2 : 1)), expected));
    }

    bool readNumber(qint64 *number)
    {
        const qsizetype start = m_at;
        for (*number = 0; isDigit(); ++m_at)
            *number = std::min(*number * 10 + peek().digitValue(), kLargestCount + 1);
        if (m_text[start] == u'0')
            return fail(start, u"has a number that begins with 0"_s);
        if (*number > kLargestCount)
            return fail(start, u"has a number above %1"_s.arg(kLargestCount));
        return true;
    }

    const Element *readSymbol()
    {
        const qsizetype start = m_at;
        if (peek() < u'A' || peek() > u'Z') {
            failHere("an element"_L1);
            return nullptr;
        }
        for (++m_at; peek() >= u'a' && peek() <= u'z';)
            ++m_at;
        const QStringView symbol = m_text.sliced(start, m_at - start);
        const Element *element = PublishedIsotopes::find(symbol);
        if (!element)
            fail(start,
                kUnweighed.contains(symbol) && symbol.size() == 2
                    ? u"has the element '%1', which has no natural isotopes to weigh"_s.arg(symbol)
                    : u"has no element %1"_s.arg(quotedHead(symbol)));
        return element;
    }

    bool addCounted(AtomKind kind)
    {
        const qsizetype start = m_at;
        const bool isLoss = peek() == u'-';
        m_at += isLoss;
        qint64 count = 1;
        if (isLoss && !isDigit())
            return failHere("a number"_L1);
        if (isDigit() && !readNumber(&count))
            return false;
        qint64 &sum = m_counts[kind];
        sum += isLoss ? -count : count;
        if (qAbs(sum) > kLargestCount)
            return fail(start,
                u"has more than %1 atoms of %2"_s.arg(
                    QString::number(kLargestCount), kind.first->symbol));
        return true;
    }

    bool readElement()
    {
        const Element *element = readSymbol();
        return element && addCounted({element, 0});
    }

    /// "[13C]", "[13C6]", "[13C-6]"
    bool readIsotope()
    {
        const qsizetype numberAt = ++m_at;
        if (!isDigit())
            return failHere("a mass number"_L1);
        qint64 number = 0;
        if (!readNumber(&number))
            return false;
        const Element *element = readSymbol();
        if (!element)
            return false;
        if (!PublishedIsotopes::find(*element, static_cast<int>(number)))
            return fail(
                numberAt, u"has no isotope '%1%2'"_s.arg(QString::number(number), element->symbol));
        if (!addCounted({element, static_cast<int>(number)}))
            return false;
        if (peek() != u']')
            return failHere("']'"_L1);
        ++m_at;
        return true;
    }

    QStringView m_text;
    qsizetype m_at = 0; // of the next character
    AtomCounts &m_counts;
    TextFault m_fault;
};

} // namespace

std::optional<TextFault> readComposition(QStringView text, AtomCounts *counts)
{
    Reader reader(text, counts);
    return reader.read() ? std::nullopt : std::optional(reader.fault());
}

} // namespace vex::detail

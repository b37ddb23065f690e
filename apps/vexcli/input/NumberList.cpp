#include "input/NumberList.h"

#include "Failure.h"

#include <QString>

#include <charconv>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qsizetype kLongestWord = 100; // bytes; no number has so many digits
constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char character)
{
    return QByteArrayView(" \t\r\n").contains(character);
}

bool isMark(char character)
{
    return QByteArrayView(",[]").contains(character);
}

} // namespace

NumberListReader::NumberListReader(std::function<vex::Error(int number, qint64 position)> take)
    : m_take(std::move(take))
{
}

vex::Error NumberListReader::problem(const QString &text) const
{
    return failure(
        u"standard input: element %1 %2 (counted from 0)"_s.arg(QString::number(m_position), text));
}

vex::Error NumberListReader::add(QByteArrayView piece)
{
    for (const char character : piece) {
        if (!isBlank(character) && !isMark(character)) {
            m_word += character;
            if (m_word.size() > kLongestWord)
                return problem(u"is longer than a number can be"_s);
            continue;
        }
        if (auto error = takeWord(); error.hasError())
            return passedOn(std::move(error));
        if (auto error = takeMark(character); error.hasError())
            return passedOn(std::move(error));
    }
    return vex::ErrorCode::NoError;
}

vex::Error NumberListReader::end()
{
    if (auto error = takeWord(); error.hasError())
        return passedOn(std::move(error));
    if (m_place == Next)
        return problem(u"is missing: nothing stands behind the last comma"_s);
    if (m_isInBrackets && m_place != End)
        return failure(u"standard input: there is no ']' at the end"_s);
    return vex::ErrorCode::NoError;
}

vex::Error NumberListReader::takeMark(char mark)
{
    if (isBlank(mark))
        return vex::ErrorCode::NoError;
    if (mark == '[' && m_place == Start) {
        m_isInBrackets = true;
        m_place = First;
    } else if (mark == ']' && m_isInBrackets && (m_place == First || m_place == Behind)) {
        m_place = End;
    } else if (mark == ',' && m_place == Behind) {
        m_place = Next;
    } else {
        return problem(u"is missing: there is '%1' in its place"_s.arg(QLatin1Char(mark)));
    }
    return vex::ErrorCode::NoError;
}

vex::Error NumberListReader::takeWord()
{
    if (m_place == Start && m_word.startsWith(kByteOrderMark))
        m_word.remove(0, kByteOrderMark.size());
    if (m_word.isEmpty())
        return vex::ErrorCode::NoError;
    if (m_place == End)
        return failure(u"standard input: there is something behind ']'"_s);
    int number = 0;
    const auto [stop, code] = std::from_chars(m_word.cbegin(), m_word.cend(), number);
    if (stop != m_word.cend() || code == std::errc::invalid_argument)
        return problem(u"is not a whole number"_s);
    if (code == std::errc::result_out_of_range)
        return problem(u"is %1, beyond 32 bits"_s.arg(QLatin1StringView(m_word)));
    m_word.clear();
    m_place = Behind;
    return passedOn(m_take(number, m_position++));
}

} // namespace vexcli

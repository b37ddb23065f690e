#include "output/Text.h"

#include <QList>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// How many letters must be put in, left out, replaced or swapped with their neighbour to make one
/// text of the other.
qsizetype distanceBetween(const QString &a, const QString &b)
{
    QList<qsizetype> twoBefore;
    QList<qsizetype> before(b.size() + 1);
    std::iota(before.begin(), before.end(), qsizetype{0});
    for (qsizetype i = 1; i <= a.size(); ++i) {
        QList<qsizetype> row(b.size() + 1, i);
        for (qsizetype k = 1; k <= b.size(); ++k) {
            row[k] = std::min(
                {before[k] + 1, row[k - 1] + 1, before[k - 1] + (a[i - 1] == b[k - 1] ? 0 : 1)});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1])
                row[k] = std::min(row[k], twoBefore[k - 2] + 1);
        }
        twoBefore = std::exchange(before, row);
    }
    return before.last();
}

} // namespace

bool isSeen(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return QChar::isPrint(character) && category != QChar::Separator_Line
        && category != QChar::Separator_Paragraph;
}

QString shownText(const QString &text)
{
    QString shown;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair =
            text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t code =
            isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : char32_t{text[i].unicode()};
        if (isSeen(code))
            shown += text.sliced(i, isPair ? 2 : 1);
        else
            shown += u"<U+%1>"_s.arg(uint{code}, 4, 16, QLatin1Char('0')).toUpper();
        i += isPair ? 1 : 0;
    }
    return shown;
}

QString csvField(const QString &text)
{
    const bool mustQuote = std::any_of(text.begin(), text.end(), [](QChar character) {
        return character == u',' || character == u'"' || character == u'\n' || character == u'\r';
    });
    if (!mustQuote)
        return text;
    QString quoted = text;
    return u'"' + quoted.replace(u'"', "\"\""_L1) + u'"';
}

QString fixedNumber(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

QString exactNumber(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QByteArray exactBytes(double value)
{
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

QString massNumber(double mass)
{
    // Between these the digits can still be counted.
    const bool isShort = mass == 0.0 || (mass > 1e-6 && mass < 1e12);
    return isShort ? QString::number(mass, 'f', QLocale::FloatingPointShortest) : exactNumber(mass);
}

QString percentNumber(double share)
{
    return QString::number(100.0 * share, 'g', 6);
}

QString counted(qint64 count, const QString &what)
{
    return count == 1 ? "1 "_L1 + what : QString::number(count) + u' ' + what + u's';
}

QString similarWord(const QString &text, const QStringList &known)
{
    constexpr qsizetype kLongest = 30; // letters; longer texts are no slips of the pen
    QString nearest;
    qsizetype least = text.size() > kLongest ? 0 : 1 + std::min<qsizetype>(2, text.size() / 2);
    for (const QString &word : known) {
        const qsizetype distance = text.size() > kLongest ? 0 : distanceBetween(text, word);
        if (distance < least) {
            least = distance;
            nearest = word;
        }
    }
    return nearest;
}

} // namespace vexcli

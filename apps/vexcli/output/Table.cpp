#include "output/Table.h"

#include <QLocale>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vexcli {

Table::Table(const QStringList &titles)
    : m_rows({titles})
{
}

void Table::addRow(const QStringList &cells)
{
    m_rows.append(cells);
}

QByteArray Table::toText(int indent) const
{
    const qsizetype columns = m_rows.front().size();
    QList<qsizetype> widths(columns, 0);
    QList<bool> isNumeric(columns, true);
    for (qsizetype row = 0; row < m_rows.size(); ++row) {
        for (qsizetype column = 0; column < columns; ++column) {
            const QString &cell = m_rows[row][column];
            widths[column] = std::max(widths[column], cell.size());
            bool isNumber = false;
            cell.toDouble(&isNumber);
            if (row > 0 && !isNumber && !cell.isEmpty())
                isNumeric[column] = false;
        }
    }
    QString text;
    for (const QStringList &row : m_rows) {
        QString line(indent, u' ');
        for (qsizetype column = 0; column < columns; ++column) {
            const QString &cell = row[column];
            line += isNumeric[column] ? cell.rightJustified(widths[column])
                                      : cell.leftJustified(widths[column]);
            line += "  "_L1;
        }
        while (line.endsWith(u' '))
            line.chop(1);
        text += line + u'\n';
    }
    return text.toUtf8();
}

QByteArray peakTable(const QList<double> &shares, int best, double minimalShare)
{
    Table peaks({u"shift/Da"_s, u"share/%"_s, u"of highest/%"_s, QString()});
    for (int i = 0; i < shares.size(); ++i) {
        const double share = shares[i];
        if (best < 0 || share < minimalShare)
            continue;
        const double relative = share / shares[best];
        peaks.addRow({QString::number(i), fixedNumber(100.0 * share, 3),
            fixedNumber(100.0 * relative, 1), QString(qRound(relative * 40.0), u'#')});
    }
    return peaks.isEmpty() ? QByteArray() : peaks.toText(2);
}

QString reportLine(const QString &what, const QString &value)
{
    constexpr qsizetype kColumn = 20;
    return "  "_L1 + what.leftJustified(kColumn) + u' ' + value + u'\n';
}

QString fixedNumber(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

QString massNumber(double mass)
{
    // Between these the digits can still be counted.
    const bool isShort = mass == 0.0 || (mass > 1e-6 && mass < 1e12);
    return isShort ? QString::number(mass, 'f', QLocale::FloatingPointShortest) : exactNumber(mass);
}

QString peakCount(qsizetype count)
{
    return count == 1 ? u"1 peak"_s : u"%1 peaks"_s.arg(count);
}

QString exactNumber(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString shownText(const QString &text)
{
    QString shown;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair =
            text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t code =
            isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : char32_t{text[i].unicode()};
        const QChar::Category category = QChar::category(code);
        const bool isSeen = QChar::isPrint(code) && category != QChar::Separator_Line
            && category != QChar::Separator_Paragraph;
        if (isSeen)
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

} // namespace vexcli

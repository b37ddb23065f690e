#include "Table.h"

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

QString fixedNumber(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

QString exactNumber(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
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

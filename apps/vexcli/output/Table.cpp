#include "output/Table.h"

#include "output/Output.h"
#include "output/Progress.h"
#include "output/Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

QString line(const QStringList &cells, const QList<qsizetype> &widths, const QList<bool> &isNumeric)
{
    QString text;
    for (qsizetype column = 0; column < cells.size(); ++column)
        text += (isNumeric[column] ? cells[column].rightJustified(widths[column])
                                   : cells[column].leftJustified(widths[column]))
            + "  "_L1;
    while (text.endsWith(u' '))
        text.chop(1);
    return text + u'\n';
}

} // namespace

Table::Table(const QStringList &titles)
    : m_rows({titles})
{
}

void Table::addRow(const QStringList &cells)
{
    QStringList shown;
    for (const QString &cell : cells)
        shown.append(shownText(cell));
    m_rows.append(shown);
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
    for (const QStringList &row : m_rows)
        text += QString(indent, u' ') + line(row, widths, isNumeric);
    return text.toUtf8();
}

void writeLongTable(Output *output, const QStringList &titles, qsizetype count,
    const std::function<QStringList(qsizetype)> &rowAt)
{
    QList<qsizetype> widths;
    for (const QString &title : titles)
        widths.append(title.size());
    for (qsizetype row = 0; row < count && !isInterrupted(); ++row) {
        const QStringList cells = rowAt(row);
        for (qsizetype column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths[column], cells[column].size());
    }
    const QList<bool> isNumeric(titles.size(), true);
    output->write(line(titles, widths, isNumeric).toUtf8());
    Progress progress(u"writing"_s, count);
    for (qsizetype row = 0; row < count && !isInterrupted(); ++row) {
        output->write(line(rowAt(row), widths, isNumeric).toUtf8());
        progress.update(row);
    }
}

QString bar(double share)
{
    return QString(qRound(share * 40.0), u'#');
}

QByteArray peakTable(
    const QList<double> &shares, double highest, double minimalShare, const QString &name)
{
    Table peaks({u"shift/Da"_s, u"share/%"_s, u"of %1/%"_s.arg(name), QString()});
    for (int i = 0; i < shares.size(); ++i) {
        const double share = shares[i];
        if (!(highest > 0.0) || share < minimalShare)
            continue;
        const double relative = share / highest;
        peaks.addRow({QString::number(i), fixedNumber(100.0 * share, 3),
            fixedNumber(100.0 * relative, 1), bar(relative)});
    }
    return peaks.isEmpty() ? QByteArray() : peaks.toText(2);
}

QString reportLine(const QString &what, const QString &value)
{
    constexpr qsizetype kColumn = 20;
    return "  "_L1 + what.leftJustified(kColumn) + u' ' + shownText(value) + u'\n';
}

QString headLine(const QString &text)
{
    return shownText(text) + u'\n';
}

} // namespace vexcli

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace vexcli {

class Output;

/// A table of text with aligned columns: numbers to the right, everything else to the left. Cells
/// are shown in one line each, whatever they hold.
class Table
{
public:
    /// A table with these column titles.
    explicit Table(const QStringList &titles);

    /// Appends a row; as many texts as there are titles.
    void addRow(const QStringList &cells);

    /// True when the table has no row behind its titles.
    bool isEmpty() const { return m_rows.size() == 1; }

    /// The table in UTF-8, each line indented by @p indent blanks.
    QByteArray toText(int indent = 0) const;

private:
    QList<QStringList> m_rows; // the titles first
};

/// Writes a table of numbers that may be longer than memory.
///
/// @param titles  of the columns
/// @param count   of the rows
/// @param rowAt   the row of an index, asked for twice; its numbers have equally many decimals
void writeLongTable(Output *output, const QStringList &titles, qsizetype count,
    const std::function<QStringList(qsizetype)> &rowAt);

/// The peaks of a pattern that reach @p minimalShare, with bars; empty when there are none.
/// @param shares   of the whole signal, by nominal mass shift
/// @param highest  the share that the others are compared with; 0 when all are 0
/// @param name     what that one is called
QByteArray peakTable(const QList<double> &shares, double highest, double minimalShare,
    const QString &name = QStringLiteral("highest"));

/// A bar for a table: 40 signs for a share of 1.
QString bar(double share);

/// A line of a report on one thing: what it tells, and the value in a column of its own.
QString reportLine(const QString &what, const QString &value);

/// The line above a report.
QString headLine(const QString &text);

} // namespace vexcli

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace vexcli {

/// A table of text with aligned columns: numbers to the right, everything else to the left.
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

/// The peaks of a pattern that reach @p minimalShare, with bars; empty when there are none.
/// @param shares  of the whole signal, by nominal mass shift
/// @param best    index of the highest one; -1 when all are 0
QByteArray peakTable(const QList<double> &shares, int best, double minimalShare);

/// A line of a report on one molecule: what it tells, and the value in a column of its own.
QString reportLine(const QString &what, const QString &value);

/// @p value with @p decimals digits behind the point.
QString fixedNumber(double value, int decimals);

/// A mass: as exact, and without an exponent as long as that reads better.
QString massNumber(double mass);

/// "1 peak", "2 peaks"
QString peakCount(qsizetype count);

/// The shortest text that reads back as exactly @p value.
QString exactNumber(double value);

/// @p text for a single line: what cannot be seen, such as a line feed, as <U+000A>.
QString shownText(const QString &text);

/// @p text as a field of a CSV line, quoted only where it must be.
QString csvField(const QString &text);

} // namespace vexcli

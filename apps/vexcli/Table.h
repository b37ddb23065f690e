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

/// @p value with @p decimals digits behind the point.
QString fixedNumber(double value, int decimals);

/// The shortest text that reads back as exactly @p value.
QString exactNumber(double value);

/// @p text as a field of a CSV line, quoted only where it must be.
QString csvField(const QString &text);

} // namespace vexcli

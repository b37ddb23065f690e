#pragma once

#include <QByteArray>
#include <QString>

namespace vexcli {

/// True for a character that shows where it stands: neither control nor direction nor line end.
bool isSeen(char32_t character);

/// @p text for a single line of a terminal: what cannot be seen, such as a line feed, an escape or
/// a change of direction, as <U+000A>. Everything that comes from outside is shown through this.
QString shownText(const QString &text);

/// @p text as a field of a CSV line, quoted only where it must be, and otherwise as it is.
QString csvField(const QString &text);

/// @p value with @p decimals digits behind the point.
QString fixedNumber(double value, int decimals);

/// The shortest text that reads back as exactly @p value.
QString exactNumber(double value);

/// The same in ASCII, for long files.
QByteArray exactBytes(double value);

/// A mass or a count: as exact, and without an exponent as long as that reads better.
QString massNumber(double mass);

/// A part of a whole in percent, with the digits that it has.
QString percentNumber(double share);

/// "1 file", "2 files"
QString counted(qint64 count, const QString &what);

/// The word of @p known that @p text probably means; empty when there is none.
QString similarWord(const QString &text, const QStringList &known);

} // namespace vexcli

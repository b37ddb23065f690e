#pragma once

#include <QString>
#include <QStringView>

namespace vex::detail {

/// @p text for a single line: what cannot be seen, such as a line feed, an escape or a change of
/// direction, as <U+000A>.
QString shownText(const QString &text);

/// @p text in quotes, cut when nobody would read it to its end.
QString quotedHead(QStringView text);

} // namespace vex::detail

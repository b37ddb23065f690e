#pragma once

#include <QString>

namespace vex::detail {

/// @p text for a single line: what cannot be seen, such as a line feed, an escape or a change of
/// direction, as <U+000A>.
QString shownText(const QString &text);

} // namespace vex::detail

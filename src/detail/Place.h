#pragma once

#include <QStringList>

namespace vex::detail {

/// @p path in a form that leads to the same place when it has been cleaned: for the system ".." is
/// what lies above the folder that a link leads to, for QDir::cleanPath() what the text names.
///
/// The path as it is when it holds no "..", and is not "." alone or at its end.
QString resolved(const QString &path);

/// One text for all paths of a file or a folder, whether it exists yet or not.
QString identityOf(const QString &path);

/// The identities of all folders above @p path, links resolved; innermost first.
QStringList placesAbove(const QString &path);

/// True when @p path is @p folder or lies in it, or will do so once it exists.
bool isWithin(const QString &path, const QString &folder);

} // namespace vex::detail

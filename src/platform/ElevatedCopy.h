#pragma once

#include <QString>

#include <optional>

namespace vex::detail {

/// How the helper ended.
struct ElevatedCopy
{
    std::optional<quint32> exitCode; ///< none when it did not run, or was ended by force
    QString said; ///< why it failed, where the system lets that be known
};

/// The helper's options, in the form in which the system hands them over: %1 is the source, %2 the
/// destination.
QString elevatedCopyPattern();

/// Runs the helper with the rights of the administrator, and waits for its end.
/// @param parameters  elevatedCopyPattern() filled in
ElevatedCopy runElevatedCopy(const QString &parameters);

} // namespace vex::detail

#pragma once

#include <QString>

#include <vex/Error.h>

namespace vexcli {

/// Says @p text on standard error, and in the log file if there is one.
void warn(const QString &text);

/// Says why the program ends with an error, in the same places.
void sayError(const QString &text);

/// Lets messages of at least the severity through to standard error, and to the log file if there
/// is one. Each is one line, whatever it holds.
/// @param logFile   appended to; empty for none
/// @param severity  debug, info, warning or critical; empty for warning
vex::Error setUpMessages(const QString &logFile, const QString &severity);

} // namespace vexcli

#pragma once

#include <QStringList>

namespace vexcli {

/// Has a report written where the program crashes. To be called before anything that may crash, and
/// before there is a second thread.
///
/// @param arguments  of the program, before they are parsed: --disable-crash-handler turns all of
/// it
///                   off
void catchCrashes(const QStringList &arguments);

/// What a report shows of the command line: parameters that anybody may read.
void setReportedParameters(const QStringList &parameters);

} // namespace vexcli

#pragma once

#include <QString>
#include <QStringList>

#include <vex/Result.h>

namespace vexcli {

class CommandLine;

/// The files of --plot: a single one for everything, or, where the path holds {name}, one for each
/// of @p names. Empty without the option. A name becomes that of a file in the folder that the path
/// names, and in no other.
///
/// @param most  how many of @p names may share a picture
/// @par Errors
/// More than @p most, two of the same file, one that is read or written besides or cannot be
/// written
vex::Result<QStringList> plotFilesFor(
    const CommandLine &commandLine, const QStringList &names, qsizetype most);

} // namespace vexcli

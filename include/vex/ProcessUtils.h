#pragma once

#include <QList>
#include <QString>

#include <vex/Export.h>

class QProcess;

namespace vex {

/// Child processes, and arguments that hold licence keys.
class VEX_EXPORT ProcessUtils
{
public:
    /// Ends a child process with everything that it has started, and waits until that is done.
    ///
    /// On Linux all of them are stopped before the first is killed, so that none starts another
    /// meanwhile; found are those that are reached from @p process through parents that still run.
    /// On Windows the system's taskkill does it. docs/processes.md tells what is out of reach.
    ///
    /// The log tells what became of it: the debug messages "Terminate N" and which processes were
    /// ended, or the warning "Couldn't stop N". That is so as well when there is no process, when
    /// it has ended already, or when one of them could not be ended, such as one of another user.
    ///
    /// @param process  not touched: its state changes when it notices the end; may be null
    static void killProcessTree(QProcess *process);

    /// @p arguments for a log.
    ///
    /// Deliberate: an argument that contains "quorlsphere-license-key", in this case and anywhere,
    /// becomes "--quorlsphere-license-key=<license-key>" as a whole. Everything else passes as it
    /// is: a value that is an argument of its own, and the option "license-key". See
    /// docs/parameters.md.
    static QList<QString> secureSensitiveData(const QList<QString> &arguments);
};

} // namespace vex

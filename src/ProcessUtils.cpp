#include <vex/ProcessUtils.h>

#include "detail/Trace.h"
#include "platform/ProcessTree.h"

#include <vex/CommandLineKeys.h>

#include <QDebug>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Places of the messages of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/ProcessUtils"};
namespace at {
constexpr auto notStopped = kSource.line(40);
constexpr auto stopped = kSource.line(42);
constexpr auto stopping = kSource.line(43); // chosen here
} // namespace at

// Named as its messages tell it.
void KillProcessTree(qint64 pid) // NOLINT(readability-identifier-naming)
{
    detail::logAt(at::stopping, Q_FUNC_INFO).debug() << "Terminate" << pid;
    // 0 stands for a process that does not run; for the system it would be all of our own group
    const auto said = pid > 0 ? detail::endProcessTree(pid) : std::nullopt;
    if (said)
        detail::logAt(at::stopped, Q_FUNC_INFO).debug().noquote() << *said;
    else
        detail::logAt(at::notStopped, Q_FUNC_INFO).warning() << "Couldn't stop" << pid;
}

} // namespace

void ProcessUtils::killProcessTree(QProcess *process)
{
    KillProcessTree(process != nullptr ? process->processId() : 0);
}

QList<QString> ProcessUtils::secureSensitiveData(const QList<QString> &arguments)
{
    QList<QString> secured = arguments;
    for (QString &argument : secured) {
        if (argument.contains(kquorlsphere_license_key))
            argument = u"--%1=<%2>"_s.arg(kquorlsphere_license_key, klicense_key);
    }
    return secured;
}

} // namespace vex

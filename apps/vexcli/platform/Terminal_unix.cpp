#include "platform/Terminal.h"

#include "Failure.h"

#include <csignal>
#include <cstdlib>
#include <tuple>

#include <fcntl.h>
#if defined(__GLIBC__)
#    include <malloc.h>
#endif
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

void (*noteInterrupt)(int) = nullptr;

extern "C" void handleSignal(int signal)
{
    noteInterrupt(signal);
    std::signal(signal, SIG_DFL);
}

} // namespace

void prepareProcess()
{
#if defined(__GLIBC__)
    // a heap for each thread reserves more address space than a limit on it may leave
    mallopt(M_ARENA_MAX, 1);
#endif
}

void prepareStreams()
{
    // One that is closed gets a stand-in that fails: wrong way round for what the stream is for.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0)
            std::ignore = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

vex::Result<QStringList> commandArguments(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        if (!QByteArray(argv[i]).isValidUtf8())
            return usageFailure(u"argument %1 is no UTF-8 text: '%2'"_s.arg(
                QString::number(i), QString::fromUtf8(argv[i])));
        arguments.append(QString::fromUtf8(argv[i]));
    }
    return arguments;
}

bool isTerminal(std::FILE *stream)
{
    return isatty(fileno(stream)) == 1;
}

void onInterrupt(void (*note)(int))
{
    noteInterrupt = note;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (std::signal(signal, handleSignal) == SIG_IGN) // as nohup and a shell's & want it
            std::signal(signal, SIG_IGN);
    }
}

void endProcess(int exitCode)
{
    std::_Exit(exitCode);
}

} // namespace vexcli

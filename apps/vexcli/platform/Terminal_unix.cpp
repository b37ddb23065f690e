#include "platform/Terminal.h"

#include "Failure.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <tuple>

#include <fcntl.h>
#if defined(__GLIBC__)
#    include <malloc.h>
#endif
#include <poll.h>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

void (*noteInterrupt)(int) = nullptr;

termios shownInput; // of the terminal, to be put back
std::atomic<bool> isInputHidden = false;

/// May run in the handler of a signal.
void showInput()
{
    if (!isInputHidden.exchange(false))
        return;
    tcflush(STDIN_FILENO, TCIFLUSH); // a shell would take what is unread for a command
    tcsetattr(STDIN_FILENO, TCSANOW, &shownInput);
}

extern "C" void handleSignal(int signal)
{
    showInput();
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

HiddenInput::HiddenInput()
{
    if (tcgetattr(STDIN_FILENO, &shownInput) != 0)
        return;
    termios hidden = shownInput;
    hidden.c_lflag &= ~tcflag_t{ECHO | ECHONL};
    // those two would leave the terminal hidden behind; Ctrl-C does not
    hidden.c_cc[VQUIT] = hidden.c_cc[VSUSP] = _POSIX_VDISABLE;
    isInputHidden = true;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden); // succeeds when it changes anything
    termios now;
    const bool isHidden = tcgetattr(STDIN_FILENO, &now) == 0 && (now.c_lflag & ECHO) == 0;
    m_state = isHidden ? Hidden : Shown;
}

HiddenInput::~HiddenInput()
{
    showInput();
}

vex::Result<QByteArray> HiddenInput::readLine()
{
    QByteArray line;
    while (!line.endsWith('\n')) {
        char piece[4096];
        const ssize_t got = read(STDIN_FILENO, piece, sizeof piece);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return failure(u"cannot read standard input: %1"_s.arg(qt_error_string(errno)));
        if (got == 0) // Ctrl-D
            return line;
        line.append(piece, got);
    }
    pollfd more{STDIN_FILENO, POLLIN, 0};
    if (poll(&more, 1, 0) > 0)
        return failure(u"more than one line was typed; a file or a pipe can hold them"_s);
    return line.chopped(1);
}

void restoreTerminal()
{
    showInput();
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
    showInput();
    std::_Exit(exitCode);
}

} // namespace vexcli

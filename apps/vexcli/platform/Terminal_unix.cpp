#include "platform/Terminal.h"

#include <csignal>

#include <unistd.h>

namespace vexcli {

void prepareStreams() { }

bool isTerminal(std::FILE *stream)
{
    return isatty(fileno(stream)) == 1;
}

void onInterrupt(void (*note)(int))
{
    std::signal(SIGINT, note);
    std::signal(SIGTERM, note);
    if (std::signal(SIGHUP, note) == SIG_IGN) // as nohup wants it
        std::signal(SIGHUP, SIG_IGN);
}

} // namespace vexcli

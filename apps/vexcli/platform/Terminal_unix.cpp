#include "platform/Terminal.h"

#include <unistd.h>

namespace vexcli {

bool isTerminal(std::FILE *stream)
{
    return isatty(fileno(stream)) == 1;
}

} // namespace vexcli

#include "platform/Terminal.h"

#include <io.h>

namespace vexcli {

bool isTerminal(std::FILE *stream)
{
    return _isatty(_fileno(stream)) != 0;
}

} // namespace vexcli

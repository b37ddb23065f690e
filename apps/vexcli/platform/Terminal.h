#pragma once

#include <cstdio>

namespace vexcli {

/// True when @p stream goes to a terminal rather than a file or a pipe.
bool isTerminal(std::FILE *stream);

} // namespace vexcli

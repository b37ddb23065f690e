#pragma once

#include <cstdio>

namespace vexcli {

/// Makes the standard streams carry the same bytes on every system: UTF-8, lines end with LF. A
/// console shows them as text and understands escape sequences.
void prepareStreams();

/// True when @p stream goes to a terminal rather than a file or a pipe.
bool isTerminal(std::FILE *stream);

/// Has @p note called when the user or the system asks the program to end; it may run at any point,
/// also in a thread of its own, and must do no more than set a flag.
void onInterrupt(void (*note)(int));

} // namespace vexcli

#pragma once

#include <functional>

namespace vexcli {

/// Runs @p work in a thread, so that Ctrl-C is answered whatever it waits for.
///
/// @param work  owns what it uses: after Ctrl-C it may go on until the process ends
/// @return false after Ctrl-C; what the work left is not to be used then
bool runInBackground(const std::function<void()> &work);

} // namespace vexcli

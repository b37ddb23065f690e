#pragma once

#include <functional>

#include <vex/Error.h>

namespace vexcli {

/// What became of work in the background.
struct BackgroundResult
{
    vex::Error error = vex::ErrorCode::NoError; ///< of the work; not enough memory is one as well
    bool isAbandoned = false; ///< it did not end after Ctrl-C, and goes on until the process ends
};

/// Runs @p work in a thread, so that Ctrl-C is answered whatever it waits for.
///
/// @param work        owns what it uses: once abandoned it outlives the call
/// @param endsItself  it is not abandoned, however long it takes
BackgroundResult runInBackground(const std::function<vex::Error()> &work, bool endsItself = false);

} // namespace vexcli

#pragma once

#include <functional>

#include <vex/Error.h>

namespace vexcli {

/// Runs @p work while another thread waits for Ctrl-C, so that it is answered whatever the work
/// waits for.
///
/// @param leave  called in the other thread when the work has not ended soon after Ctrl-C; ends the
///               process. Without it the work goes on to its end, however long that takes.
/// @return the error of the work; not enough memory is one as well
vex::Error runInterruptibly(
    const std::function<vex::Error()> &work, const std::function<void()> &leave);

} // namespace vexcli

#pragma once

#include <chrono>
#include <cstddef>

#include <vex/ExceptionPointers.h>

namespace vex::detail {

/// What is called at a crash. Plain functions, set before there is one.
struct CrashCalls
{
    /// Tells of the crash.
    /// @return 1: the process ends; 0: further handlers run
    int (*filter)(EXCEPTION_POINTERS *pointers);
    /// The filter has crashed itself, or takes too long. Called once and in the filter's place,
    /// which goes on no more: it tells what it can.
    /// @return as that of the filter
    int (*rescue)(EXCEPTION_POINTERS *pointers);
};

/// Has @p calls called at a crash of any thread, in that thread. A second thread that crashes
/// meanwhile waits; a crash in the filter goes to the rescue, and one in that ends the process. The
/// exit status tells the crash itself.
void installCrashFilter(const CrashCalls &calls);

/// Puts back what was there, unless something else has taken the place of ours.
void restoreCrashFilter();

/// Makes room for a filter after a stack overflow of the calling thread.
void prepareThreadForCrash();

/// While the filter runs: leaves it so much time from now on. When that is over, the rescue
/// follows, and after that the end. 0 or less for no limit.
void limitCrashFilter(std::chrono::milliseconds limit);

/// The environment variable as a decimal integer; 0 when it is absent or none. Allocates nothing.
int numberFromEnvironment(const char *name);

/// Writes all of @p text, whatever the state of the process. Errors are nobody's concern any more.
void writeToStandardError(const char *text, std::size_t size);

} // namespace vex::detail

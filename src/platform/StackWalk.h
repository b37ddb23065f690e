#pragma once

#include "detail/Backtrace.h"

namespace vex::detail {

// The surer comes first. Nothing here allocates memory (on Windows, nothing of ours does).

/// Walks the stack of a crash.
/// @param pointers   where it was; null for the caller's own stack
/// @param backtrace  replaced: addresses and modules; as many as the walk comes to
void collectFrames(EXCEPTION_POINTERS *pointers, Backtrace *backtrace);

/// Adds symbols and places in the source, as far as they are known.
void nameFrames(Backtrace *backtrace);

} // namespace vex::detail

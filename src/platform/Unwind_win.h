#pragma once

struct _CONTEXT;

namespace vex::detail {

/// Goes on from a place in a function to where its caller continues. Allocates nothing.
/// @param context  replaced where there is a caller
/// @return whether there is one
bool unwindOnce(_CONTEXT *context);

} // namespace vex::detail

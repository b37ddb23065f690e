#pragma once

/// @file
/// vex::Result: a value or the error that says why there is none.

#include <vex_common_stable/Result.h>

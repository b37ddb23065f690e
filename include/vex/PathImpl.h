#pragma once

/// @file
/// vex::PathImpl: a path that says what it leads to.

#include <vex_common_stable/PathImpl.h>

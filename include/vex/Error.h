#pragma once

/// @file
/// vex::ErrorCode, vex::Warnings and vex::Error: failures as values.

#include <vex_common_stable/Error.h>
#include <vex_common_stable/ErrorCode.h>
#include <vex_common_stable/Warnings.h>

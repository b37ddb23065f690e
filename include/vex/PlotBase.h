#pragma once

/// @file
/// vex::PlotBase: a sampled signal.

#include <vex_common_stable/PlotBase.h>

#pragma once

#include <QVersionNumber>

#include <vex/Export.h>

namespace vex {

/// The version of the library that the process runs with, 6.0.0; <vex/Version.h> has the one it was
/// compiled with.
VEX_EXPORT QVersionNumber appInternalVersion();

} // namespace vex

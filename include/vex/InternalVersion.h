#pragma once

#include <QVersionNumber>

#include <vex/Export.h>

namespace vex {

/// The library's internal version, 6.0.0.
VEX_EXPORT QVersionNumber appInternalVersion();

} // namespace vex

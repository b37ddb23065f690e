#pragma once

#include <QString>

#include <vex/Export.h>

namespace vex {

// Names of the command-line options that the applications of the suite share, without dashes.

/// "license-key"
VEX_EXPORT extern const QString klicense_key;
/// "quorlsphere-license-key"
VEX_EXPORT extern const QString kquorlsphere_license_key;
/// "log"
VEX_EXPORT extern const QString klog;
/// "log-severity"
VEX_EXPORT extern const QString klog_severity;
/// "version"
VEX_EXPORT extern const QString kversion;
/// "create-support-package"
VEX_EXPORT extern const QString kcreate_support_package;
/// "disable-crash-handler"
VEX_EXPORT extern const QString kdisable_crash_handler;

} // namespace vex

#include <vex/CommandLineKeys.h>

using namespace Qt::StringLiterals;

namespace vex {

const QString klicense_key = u"license-key"_s;
const QString kquorlsphere_license_key = u"quorlsphere-license-key"_s;
const QString klog = u"log"_s;
const QString klog_severity = u"log-severity"_s;
const QString kversion = u"version"_s;
const QString kcreate_support_package = u"create-support-package"_s;
const QString kdisable_crash_handler = u"disable-crash-handler"_s;

} // namespace vex

#include <vex/InternalVersion.h>

namespace vex {

QVersionNumber appInternalVersion()
{
    static const QVersionNumber version(6, 0, 0);
    return version;
}

} // namespace vex

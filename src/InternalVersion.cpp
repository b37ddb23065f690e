#include <vex/InternalVersion.h>

#include <vex/Version.h>

namespace vex {

QVersionNumber appInternalVersion()
{
    static const QVersionNumber version(VEX_VERSION_MAJOR, VEX_VERSION_MINOR, VEX_VERSION_PATCH);
    return version;
}

} // namespace vex

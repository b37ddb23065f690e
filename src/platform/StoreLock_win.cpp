#include "platform/StoreLock.h"

namespace vex::detail {

bool isStoreLocked()
{
    return false; // opened with the user's session
}

} // namespace vex::detail

#include "detail/KeychainJobs.h"

#include <vex/Export.h>

extern "C" VEX_EXPORT void vexRunKeychainJob(
    const vex::detail::KeychainRequest &request, vex::detail::KeychainAnswer *answer);

void vexRunKeychainJob(
    const vex::detail::KeychainRequest &request, vex::detail::KeychainAnswer *answer)
{
    *answer = vex::detail::runKeychainJob(request);
}

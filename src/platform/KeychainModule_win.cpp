#include "platform/KeychainModule.h"

namespace vex::detail {

RunKeychainJob keychainModule(QString *)
{
    return [](const KeychainRequest &request, KeychainAnswer *answer) {
        *answer = runKeychainJob(request);
    };
}

} // namespace vex::detail

#pragma once

#include "detail/KeychainJobs.h"

namespace vex::detail {

/// What asks the credential store, loaded when it is first wanted. Null when it cannot be loaded.
///
/// @param reason  replaced by why not, in that case
RunKeychainJob keychainModule(QString *reason);

} // namespace vex::detail

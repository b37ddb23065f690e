#pragma once

namespace vex::detail {

/// True when the credential store is there and locked, so that it shows no entries.
bool isStoreLocked();

} // namespace vex::detail

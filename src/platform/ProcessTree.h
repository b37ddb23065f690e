#pragma once

#include <QString>

#include <optional>

namespace vex::detail {

/// Ends the child process @p id of this process, which is above 0, and everything below it.
/// @return what there is to tell about it; nothing when not all of them could be ended
std::optional<QString> endProcessTree(qint64 id);

} // namespace vex::detail

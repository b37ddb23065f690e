#pragma once

#include <QLatin1StringView>

namespace vex::test {

/// What QProcess says where it cannot start anything: under qemu-user. No Linux kernel refuses the
/// call for this reason.
inline constexpr QLatin1StringView kNoProcesses{"Resource error (fork failure): Invalid argument"};

} // namespace vex::test

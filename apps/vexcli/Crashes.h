#pragma once

#include <QLatin1StringView>

#include <span>

namespace vexcli {

/// A way to end the process that nobody wants.
struct Crash
{
    QLatin1StringView name;
    QLatin1StringView summary;
    /// Does it. Null where this system has no such crash, which the summary says.
    void (*run)();
    bool isInCommand = false; ///< in the thread of the command; else in the main one, at the end
};

std::span<const Crash> crashes();

} // namespace vexcli

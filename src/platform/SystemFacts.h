#pragma once

#include <QString>

#include <optional>

namespace vex::detail {

// Nothing, or an empty text, where the system does not tell.

/// The first processor, as its maker calls it.
QString processorName();

/// How many are running, whatever this process may use of them.
std::optional<int> logicalProcessors();

/// Bytes that programs fill.
struct Room
{
    std::optional<qint64> total;
    std::optional<qint64> free; ///< for the user of this process
};

Room memory();

/// Of a drive; waits for as long as the drive does.
Room driveRoom(const QString &drive);

/// The running program, with slashes.
QString programFile();

} // namespace vex::detail

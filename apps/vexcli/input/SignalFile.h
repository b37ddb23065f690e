#pragma once

#include <QString>

#include <vex/PlotBase.h>
#include <vex/Result.h>

#include "commands/CommandLine.h"

namespace vexcli {

/// Reads a signal: two columns, x and y, separated by commas, semicolons or tabs, with decimal
/// points. Blank lines, lines that begin with '#' and one line of titles are passed over. A bad
/// line is an error with its number; points that do not ascend are warned of. Takes 16 bytes a
/// point.
vex::Result<vex::PlotBase> readSignal(const QString &path);

/// Between which x a signal lies.
struct SignalRange
{
    double start = 0.0;
    double end = 0.0;
};

/// The range of a signal that has a point, in whatever order its points are.
SignalRange rangeOf(const vex::PlotBase &signal);

/// A unit of the x column.
struct TimeUnit
{
    QString symbol;
    double perMinute = 1.0;
};

/// Offers --x-unit.
void addTimeUnitOption(CommandLine *commandLine);
/// What --x-unit says.
vex::Result<TimeUnit> timeUnitFrom(const CommandLine &commandLine);

} // namespace vexcli

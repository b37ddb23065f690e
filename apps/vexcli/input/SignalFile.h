#pragma once

#include <QString>
#include <QStringList>

#include <vex/PlotBase.h>
#include <vex/Result.h>

namespace vexcli {

class CommandLine;

/// Between which x a signal lies.
struct SignalRange
{
    double start = 0.0;
    double end = 0.0;
};

/// The range of a signal that has a point, in whatever order its points are.
SignalRange rangeOf(const vex::PlotBase &signal);

/// A unit of the x column.
struct XUnit
{
    QString symbol; // empty when nothing tells
    double perMinute = 0.0; // 0 for what is no time, or not known

    /// How much of it the library takes for a minute: of what is no time, one.
    double scale() const { return perMinute > 0.0 ? perMinute : 1.0; }

    /// "time / min", "m/z" or just "x"
    QString axisTitle() const;
    /// @p number with the unit behind it.
    QString with(const QString &number) const;
};

/// Offers --x-unit.
/// @param units      that the command takes, such as "min|s"
/// @param otherwise  what counts where neither the option nor a title tells
void addXUnitOption(CommandLine *commandLine, const QString &units, const QString &otherwise);

/// A signal, and what its file says of it.
struct SignalFile
{
    vex::PlotBase signal;
    QString name; // of the file, for messages
    QString xTitle; // empty when the file has no titles
    QString yTitle;
};

/// The unit of the intensities of @p files: counts, or none where a title says that one is
/// relative.
QString intensityUnitOf(const QList<SignalFile> &files);

/// @p number with @p unit behind it, if there is one.
QString withUnit(const QString &number, const QString &unit);

/// Reads two columns, x and y, as the options of @p commandLine say; points that do not ascend are
/// warned of. Takes 16 bytes a point.
vex::Result<SignalFile> readSignal(const CommandLine &commandLine, const QString &path);

/// The unit that --x-unit gives, or else the titles of @p files; they must not contradict.
vex::Result<XUnit> xUnitOf(const CommandLine &commandLine, const QList<SignalFile> &files);

} // namespace vexcli

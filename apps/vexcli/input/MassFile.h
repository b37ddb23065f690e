#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <functional>

#include <vex/Error.h>
#include <vex/Result.h>

#include "input/Input.h"

namespace vexcli {

class CommandLine;

/// Reads the column of masses of --masses, finite numbers of at least 0, as the options of
/// @p commandLine say, and calls @p take with each as it comes.
/// @param beforeRead  called before each read, which may wait; may be empty
vex::Error forEachMass(const CommandLine &commandLine, BadRecords *bad,
    const std::function<vex::Error(double mass)> &take, const std::function<void()> &beforeRead);

/// All of them at once.
vex::Result<QList<double>> readMasses(const CommandLine &commandLine, BadRecords *bad);

/// Masses of one molecule as somebody published them, in daltons.
struct PublishedMasses
{
    double average = 0.0;
    double monoisotopic = 0.0;
};

/// Reads the columns name, average and monoisotopic mass; by name.
vex::Result<QHash<QString, PublishedMasses>> readPublishedMasses(const QString &path);

} // namespace vexcli

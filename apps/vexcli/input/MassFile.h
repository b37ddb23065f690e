#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <vex/Result.h>

#include "input/Input.h"

namespace vexcli {

class CommandLine;

/// Reads a column of masses, finite numbers of at least 0, as the options of @p commandLine say.
vex::Result<QList<double>> readMasses(
    const CommandLine &commandLine, const QString &path, BadRecords *bad);

/// Masses of one molecule as somebody published them, in daltons.
struct PublishedMasses
{
    double average = 0.0;
    double monoisotopic = 0.0;
};

/// Reads the columns name, average and monoisotopic mass; by name.
vex::Result<QHash<QString, PublishedMasses>> readPublishedMasses(const QString &path);

} // namespace vexcli

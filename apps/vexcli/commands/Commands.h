#pragma once

#include <QStringList>

#include <vex/Error.h>

namespace vexcli {

// Each command gets the arguments behind its name.

/// vex apex ...
vex::Error runApex(const QStringList &arguments);
/// vex checkpath PATH...
vex::Error runCheckPath(const QStringList &arguments);
/// vex compare ...
vex::Error runCompare(const QStringList &arguments);
/// vex distribution ...
vex::Error runDistribution(const QStringList &arguments);
/// vex filetype NAME...
vex::Error runFileType(const QStringList &arguments);
/// vex formula TEXT...
vex::Error runFormula(const QStringList &arguments);
/// vex mass ...
vex::Error runMass(const QStringList &arguments);
/// vex move SOURCE DESTINATION
vex::Error runMove(const QStringList &arguments);
/// vex pattern ...
vex::Error runPattern(const QStringList &arguments);

} // namespace vexcli

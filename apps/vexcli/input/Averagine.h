#pragma once

#include <QString>

#include <vex/AveragineIsotopeModel.h>
#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vexcli {

class CommandLine;

/// A composition and the model that is set up with it.
struct Averagine
{
    QString name;
    vex::MolecularFormula formula;
    vex::AveragineIsotopeModel model;
};

/// Adds --formula and --averagine to @p commandLine.
void addAveragineOptions(CommandLine *commandLine);

/// The composition that the options ask for, by default modern averagine.
vex::Result<Averagine> averagineFrom(const CommandLine &commandLine);

} // namespace vexcli

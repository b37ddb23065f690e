#pragma once

#include <QString>

#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vexcli {

class CommandLine;

/// What molecules are made of; only the proportions matter.
struct Composition
{
    QString name; // for titles and tables
    vex::MolecularFormula formula;
};

/// Averagine as it is mostly used: Senko, Beu and McLafferty, J. Am. Soc. Mass Spectrom. 6 (1995)
/// 229.
Composition modernAveragine();

/// Adds --formula and --averagine to @p commandLine.
void addCompositionOptions(CommandLine *commandLine);

/// True when an option asks for a composition.
bool isCompositionGiven(const CommandLine &commandLine);

/// The composition that the options ask for, by default modern averagine. It has a positive mass.
vex::Result<Composition> compositionFrom(const CommandLine &commandLine);

} // namespace vexcli

#pragma once

#include <QStringList>

#include <vex/Error.h>

namespace vexcli {

class CommandLine;
class Results;

/// Adds the options of patterns of counted atoms: of the molecules, the ions, and what is shown.
void addMolecularPatternOptions(CommandLine *commandLine);

/// Those options, but for that of the file of sequences.
QStringList molecularPatternOptions();

/// Exact patterns of molecules whose atoms are counted.
/// @param minimalShare  of a peak in a table
vex::Error predictMolecularPatterns(
    const CommandLine &commandLine, double minimalShare, Results *results);

} // namespace vexcli

#pragma once

#include <vex/Error.h>

namespace vexcli {

class CommandLine;
class Results;

/// Patterns of masses, or of the sequences of --fasta, from average compositions.
/// @param minimalShare  of a peak in a table
vex::Error predictAveragePatterns(
    const CommandLine &commandLine, double minimalShare, Results *results);

} // namespace vexcli

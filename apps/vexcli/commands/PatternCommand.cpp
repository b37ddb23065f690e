#include "commands/Command.h"

#include "Failure.h"
#include "commands/AveragePatterns.h"
#include "commands/CommandLine.h"
#include "commands/MolecularPatterns.h"
#include "commands/PatternModel.h"
#include "input/Columns.h"
#include "output/Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kUsualShare = 0.001; // lowest in a table

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Predicts isotope patterns of molecules, of protein sequences, and of masses alone."_s,
        {u"vex pattern --molecule C8H10N4O2"_s,
            u"vex pattern --fasta proteins.fasta --charge 8-12 --plot '{name}.svg'"_s,
            u"vex pattern --sequence 'EM[Oxidation]EVEES[UNIMOD:21]PEK' --adduct Na"_s,
            u"vex pattern --fasta insulin.fasta --join insulin --disulfides 3 --charge 5"_s,
            u"vex pattern --molecule C6H12O6 --molecule C6H14O6:0.3 --charge 1 --resolution 20000 "
            "-o profile.csv"_s,
            u"vex pattern 1000"_s, u"vex pattern --masses list.csv --column mass -o peaks.csv"_s},
        u"The pattern of a molecule or a sequence is exact: its atoms are counted, with the "
        "published isotopes of all elements. A peak stands for one nominal mass; its m/z is the "
        "mean of the isotopologues that fall together there, without the electrons that the ion "
        "lost. With --averagine, --formula or --model a sequence's pattern is that of an average "
        "model. A mass alone tells no atoms: its pattern is that of modern averagine, or of the "
        "composition given.\n"
        "A share is a part of the signal of its own molecule in its own charge state; how the "
        "charge states compare is not predicted. The shift counts from the monoisotopic peak, "
        "which "
        "holds the most abundant isotope of each element. Where a weight is given, the molecules "
        "are a mixture, and the weights are amounts of substance, such as moles.\n"
        "Residues of a FASTA file are capitals; a few small letters among capitals are refused, "
        "since they mark a modification. U and O are counted with their own atoms.\n"
        "The classic model holds 100 peaks, which is all of the signal up to about 100 kDa. With a "
        "protein's own composition (--model classic) its peaks are right to 3 % of the highest "
        "one, "
        "those of --model list to 1 %."_s);
    commandLine->addPositional(u"M"_s, u"Average masses in Da."_s, u"[M...]"_s);
    addMolecularPatternOptions(commandLine);
    commandLine->addRepeatableOption({u"mass"_s}, u"Average mass in Da, as M."_s, u"M"_s);
    commandLine->addInputOption(u"masses"_s, u"Average masses in Da, one in a line."_s);
    addColumnsOptions(commandLine, u"that with the masses"_s);
    commandLine->addFlag(
        u"keep-going"_s, u"Leaves bad records out and reports each; the exit code is 1 then."_s);
    addModelOptions(commandLine);
    commandLine->addOption({u"min-share"_s},
        u"Lowest share of a peak in the table, in percent (default %1)."_s.arg(
            percentNumber(kUsualShare)),
        u"PERCENT"_s);
    commandLine->addOutputOption(
        u"Writes all peaks of each pattern to FILE as CSV, besides the table; with --json the JSON "
        "goes to FILE, and nothing is printed."_s);
    commandLine->addStreamOptions();
    commandLine->addPlotOption(
        u"Draws the patterns into FILE (.svg or .png); with {name} in it, one file for each."_s);
}

bool isOneSet(const CommandLine &commandLine, const QStringList &options)
{
    return std::any_of(options.begin(), options.end(),
        [&commandLine](const QString &option) { return commandLine.isSet(option); });
}

/// The first of @p options that is set, for a message.
QString firstSet(const CommandLine &commandLine, const QStringList &options)
{
    const auto found = std::find_if(options.begin(), options.end(),
        [&commandLine](const QString &option) { return commandLine.isSet(option); });
    return found == options.end() ? QString() : *found;
}

/// Fails when the options do not go together.
/// @param isCounted  the pattern is that of counted atoms
vex::Error checkOptions(const CommandLine &commandLine, bool isCounted)
{
    const bool areMasses = commandLine.isSet(u"mass"_s) || !commandLine.positional().isEmpty();
    const bool areMolecules = isOneSet(commandLine, {u"molecule"_s, u"sequence"_s, u"fasta"_s});
    if (int(areMasses) + int(areMolecules) + int(commandLine.isSet(u"masses"_s)) != 1)
        return usageFailure(commandLine.withHint(
            u"give masses, or --masses FILE, or --molecule, --sequence and --fasta"_s));
    for (const QString &option : {u"published"_s, u"only"_s}) {
        if (commandLine.isSet(option) && !commandLine.isSet(u"fasta"_s)
            && (option == "only"_L1 || !isCounted))
            return usageFailure(u"--%1 goes with --fasta"_s.arg(option));
    }
    for (const QString &option : {u"column"_s, u"decimal"_s}) {
        if (commandLine.isSet(option) && !commandLine.isSet(u"masses"_s))
            return usageFailure(u"--%1 goes with --masses"_s.arg(option));
    }
    const QString counting = firstSet(commandLine, molecularPatternOptions());
    const QString averaging = firstSet(commandLine, averageModelOptions());
    if (counting.isEmpty() || isCounted)
        return vex::ErrorCode::NoError;
    return averaging.isEmpty()
        ? usageFailure(u"--%1 goes with --molecule, --sequence and --fasta: a mass alone does not "
                       "tell what is in a molecule"_s.arg(counting))
        : usageFailure(
            u"--%1 asks for an average model, which has no --%2"_s.arg(averaging, counting));
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    const bool isAverage = isOneSet(commandLine, averageModelOptions());
    const bool isCounted =
        isOneSet(commandLine, {u"molecule"_s, u"sequence"_s, u"fasta"_s}) && !isAverage;
    if (auto error = checkOptions(commandLine, isCounted); error.hasError())
        return passedOn(std::move(error));
    vex::Result<double> minimalShare = kUsualShare;
    if (commandLine.isSet(u"min-share"_s))
        minimalShare = shareFromPercent(commandLine.value(u"min-share"_s), u"--min-share"_s);
    if (minimalShare.hasError())
        return passedOn(std::move(minimalShare).error());
    return passedOn(isCounted ? predictMolecularPatterns(commandLine, minimalShare.value(), results)
                              : predictAveragePatterns(commandLine, minimalShare.value(), results));
}

} // namespace

const Command kPatternCommand{
    "pattern"_L1, "isotope patterns of molecules, sequences and masses"_L1, declare, run, false};

} // namespace vexcli

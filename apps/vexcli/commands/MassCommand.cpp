#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "input/Columns.h"
#include "input/Composition.h"
#include "input/MassFile.h"
#include "output/Json.h"
#include "output/Output.h"
#include "output/Progress.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/AveragineIsotopeModel.h>

#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

struct Conversion
{
    double average;
    double monoisotopic;
};

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Converts between the average and the monoisotopic mass of molecules of an average composition."_s,
        {u"vex mass --average 16951.3"_s, u"vex mass --mono 1000 2000 3000"_s,
            u"vex mass --masses list.txt -o converted.csv"_s},
        u"A real protein has a composition of its own: up to 20 kDa the monoisotopic mass is right "
        "to 0.5 Da in 9 of 10 proteins. vex pattern --fasta gives both masses of a sequence exactly."_s);
    addCompositionOptions(commandLine);
    commandLine->addPositional(u"M"_s, u"More masses of the same kind, in Da."_s, u"[M...]"_s);
    commandLine->addRepeatableOption(
        {u"average"_s}, u"Average mass to convert, in Da; more may follow."_s, u"M"_s);
    commandLine->addRepeatableOption(
        {u"mono"_s}, u"Monoisotopic mass to convert, in Da; more may follow."_s, u"M"_s);
    commandLine->addInputOption(u"masses"_s, u"Converts the masses in FILE, one in a line."_s);
    commandLine->addOption(
        {u"from"_s}, u"What FILE holds: average (default) or mono."_s, u"average|mono"_s);
    addColumnsOptions(commandLine, u"that with the masses"_s);
    commandLine->addFlag(
        u"keep-going"_s, u"Leaves bad records out and reports each; the exit code is 1 then."_s);
    commandLine->addOutputOption(
        u"Writes CSV to FILE instead of printing a table; with --json, JSON."_s);
}

vex::Error checkOptions(const CommandLine &commandLine)
{
    int given = 0;
    for (const QString &name : {u"average"_s, u"mono"_s, u"masses"_s})
        given += commandLine.isSet(name) ? 1 : 0;
    if (given == 0 && !commandLine.positional().isEmpty())
        return usageFailure(commandLine.withHint(
            u"say what %1 is: --average or --mono"_s.arg(commandLine.positional().constFirst())));
    if (given != 1)
        return usageFailure(commandLine.withHint(u"give one of --average, --mono and --masses"_s));
    const QString from = commandLine.value(u"from"_s);
    if (!commandLine.isSet(u"masses"_s)) {
        for (const QString &option : {u"from"_s, u"column"_s, u"decimal"_s}) {
            if (commandLine.isSet(option))
                return usageFailure(u"--%1 goes with --masses"_s.arg(option));
        }
        return vex::ErrorCode::NoError;
    }
    if (commandLine.isSet(u"from"_s) && from != "average"_L1 && from != "mono"_L1)
        return usageFailure(u"--from '%1' is neither average nor mono"_s.arg(from));
    return passedOn(commandLine.requireNoPositional());
}

vex::Result<QList<double>> massesFrom(const CommandLine &commandLine, BadRecords *bad)
{
    if (commandLine.isSet(u"masses"_s))
        return passedOn(readMasses(commandLine, bad));
    QList<double> masses;
    for (const QString &text : commandLine.values(u"average"_s) + commandLine.values(u"mono"_s)
            + commandLine.positional()) {
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return passedOn(std::move(mass).error());
        masses.append(mass.value());
    }
    return masses;
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    if (auto error = checkOptions(commandLine); error.hasError())
        return passedOn(std::move(error));
    auto composition = compositionFrom(commandLine);
    if (composition.hasError())
        return passedOn(std::move(composition).error());
    BadRecords bad(commandLine.isSet(u"keep-going"_s));
    const auto masses = massesFrom(commandLine, &bad);
    if (masses.hasError())
        return passedOn(masses.error());

    vex::AveragineIsotopeModel model;
    std::ignore = model.init(composition.value().formula); // never an error
    const bool isFromMono =
        commandLine.isSet(u"mono"_s) || commandLine.value(u"from"_s) == "mono"_L1;
    const auto conversionAt = [&](qsizetype i) {
        const double mass = masses.value()[i];
        return isFromMono ? Conversion{model.getAverageFromMonoMass(mass), mass}
                          : Conversion{mass, model.getMonoFromAverageMer(mass)};
    };
    Output *const output = results->file() ? results->file() : results->standard();
    const qsizetype count = masses.value().size();
    const QString &name = composition.value().name;
    if (commandLine.isJson()) {
        JsonArrayWriter json(output);
        for (qsizetype i = 0; i < count && !isInterrupted(); ++i) {
            const auto [average, monoisotopic] = conversionAt(i);
            json.add({{u"averageMassDa"_s, average}, {u"monoisotopicMassDa"_s, monoisotopic},
                {u"composition"_s, name}});
        }
        json.end();
    } else if (results->file()) {
        output->write("average_Da,monoisotopic_Da\n");
        for (qsizetype i = 0; i < count && !isInterrupted(); ++i) {
            const auto [average, monoisotopic] = conversionAt(i);
            output->write(
                (exactNumber(average) + u',' + exactNumber(monoisotopic) + u'\n').toLatin1());
        }
    } else {
        output->write(headLine(u"molecules of the composition "_s + name).toUtf8());
        writeLongTable(output, {u"average/Da"_s, u"monoisotopic/Da"_s, u"difference/Da"_s}, count,
            [&](qsizetype i) -> QStringList {
                const auto [average, monoisotopic] = conversionAt(i);
                return {fixedNumber(average, 4), fixedNumber(monoisotopic, 4),
                    fixedNumber(average - monoisotopic, 4)};
            });
    }
    results->setVerdict(bad.verdict());
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kMassCommand{
    "mass"_L1, "average to monoisotopic mass and back"_L1, declare, run, false};

} // namespace vexcli

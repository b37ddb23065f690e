#include "commands/Commands.h"

#include "input/Averagine.h"
#include "commands/CommandLine.h"
#include "Failure.h"
#include "input/NumberFile.h"
#include "output/Output.h"
#include "output/Progress.h"
#include "output/Table.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

struct Conversion
{
    double average;
    double monoisotopic;
};

QByteArray asTable(const QList<Conversion> &conversions)
{
    Table table({u"average/Da"_s, u"monoisotopic/Da"_s, u"difference/Da"_s});
    for (const Conversion &masses : conversions)
        table.addRow({fixedNumber(masses.average, 4), fixedNumber(masses.monoisotopic, 4),
            fixedNumber(masses.average - masses.monoisotopic, 4)});
    return table.toText();
}

QByteArray asCsv(const QList<Conversion> &conversions)
{
    QByteArray text = "average_Da,monoisotopic_Da\n";
    for (const Conversion &masses : conversions)
        text += exactNumber(masses.average).toUtf8() + ','
            + exactNumber(masses.monoisotopic).toUtf8() + '\n';
    return text;
}

QByteArray asJson(const QString &averagine, const QList<Conversion> &conversions)
{
    QJsonArray array;
    for (const Conversion &masses : conversions)
        array.append(QJsonObject{
            {u"averageMass"_s, masses.average}, {u"monoisotopicMass"_s, masses.monoisotopic}});
    return QJsonDocument(QJsonObject{{u"averagine"_s, averagine}, {u"masses"_s, array}}).toJson();
}

vex::Result<QList<double>> massesFrom(const CommandLine &commandLine)
{
    if (commandLine.isSet(u"masses"_s))
        return passedOn(readMasses(commandLine.value(u"masses"_s)));
    const QString option = commandLine.isSet(u"mono"_s) ? u"mono"_s : u"average"_s;
    QList<double> masses;
    for (const QString &text : commandLine.values(option)) {
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return passedOn(std::move(mass).error());
        masses.append(mass.value());
    }
    return masses;
}

} // namespace

vex::Error runMass(const QStringList &arguments)
{
    CommandLine commandLine(u"mass"_s,
        u"Converts between the average and the monoisotopic mass of molecules of an average "
        "composition."_s);
    addAveragineOptions(&commandLine);
    commandLine.addOption(
        {u"average"_s}, u"Average mass to convert, in Da; may be repeated."_s, u"M"_s);
    commandLine.addOption(
        {u"mono"_s}, u"Monoisotopic mass to convert, in Da; may be repeated."_s, u"M"_s);
    commandLine.addOption({u"masses"_s}, u"Converts the masses of FILE, one a line."_s, u"FILE"_s);
    commandLine.addOption(
        {u"from"_s}, u"What FILE holds: average (default) or mono."_s, u"average|mono"_s);
    commandLine.addOption(
        {u"o"_s, u"output"_s}, u"Writes CSV (or JSON with --json) to FILE."_s, u"FILE"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    if (auto error = commandLine.requireOneOf({u"average"_s, u"mono"_s, u"masses"_s});
        error.hasError())
        return error;
    const QString from = commandLine.value(u"from"_s);
    if (commandLine.isSet(u"from"_s)
        && (!commandLine.isSet(u"masses"_s) || (from != "average"_L1 && from != "mono"_L1)))
        return usageFailure(u"--from goes with --masses and is average or mono"_s);
    if (!commandLine.positional().isEmpty())
        return usageFailure(
            u"unexpected argument '%1'"_s.arg(commandLine.positional().constFirst()));

    auto averagine = averagineFrom(commandLine);
    if (averagine.hasError())
        return passedOn(std::move(averagine).error());
    auto masses = massesFrom(commandLine);
    if (masses.hasError())
        return passedOn(std::move(masses).error());

    const vex::AveragineIsotopeModel &model = averagine.value().model;
    const bool isFromMono = commandLine.isSet(u"mono"_s) || from == "mono"_L1;
    QList<Conversion> conversions;
    conversions.reserve(masses.value().size());
    for (const double mass : masses.value()) {
        conversions.append(isFromMono ? Conversion{model.getAverageFromMonoMass(mass), mass}
                                      : Conversion{mass, model.getMonoFromAverageMer(mass)});
    }

    if (auto error =
            requireOtherFiles({commandLine.value(u"masses"_s), commandLine.value(u"averagine"_s)},
                {commandLine.value(u"output"_s)});
        error.hasError())
        return passedOn(std::move(error));
    auto output = Output::open(commandLine.value(u"output"_s));
    if (output.hasError())
        return passedOn(std::move(output).error());
    if (commandLine.isSet(u"json"_s))
        output.value()->write(asJson(averagine.value().name, conversions));
    else if (commandLine.isSet(u"output"_s))
        output.value()->write(asCsv(conversions));
    else
        output.value()->write(asTable(conversions));
    if (isInterrupted())
        return failure(u"interrupted, nothing was written"_s);
    return passedOn(output.value()->commit());
}

} // namespace vexcli

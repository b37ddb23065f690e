#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Json.h"
#include "output/Output.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/Modifications.h>

#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Modification = vex::Modifications::Modification;

/// "K, first residue", "first residue M"
QString sitesOf(const Modification &modification)
{
    const auto end = [](QLatin1StringView which, QLatin1StringView residues) {
        return residues == "*"_L1 ? which + " residue"_L1 : which + ' '_L1 + residues;
    };
    QStringList sites;
    if (!modification.residues.isEmpty())
        sites.append(modification.residues);
    if (!modification.nTerminus.isEmpty())
        sites.append(end("first"_L1, modification.nTerminus));
    if (!modification.cTerminus.isEmpty())
        sites.append(end("last"_L1, modification.cTerminus));
    return sites.join(", "_L1);
}

QJsonObject asJson(const Modification &modification)
{
    const vex::DeltaComposition delta = modification.delta();
    return {{u"name"_s, QString(modification.name)}, {u"unimod"_s, modification.unimodNumber},
        {u"composition"_s, delta.text()}, {u"averageMassDa"_s, delta.averageMass()},
        {u"monoisotopicMassDa"_s, delta.monoisotopicMass()},
        {u"residues"_s, QString(modification.residues)},
        {u"firstResidues"_s, QString(modification.nTerminus)},
        {u"lastResidues"_s, QString(modification.cTerminus)}};
}

/// By name, or by number with "UNIMOD:" in front or without.
const Modification *findModification(const QString &text)
{
    bool isNumber = false;
    const QString number = text.startsWith("UNIMOD:"_L1, Qt::CaseInsensitive) ? text.mid(7) : text;
    const int value = number.toInt(&isNumber);
    return isNumber ? vex::Modifications::find(value) : vex::Modifications::find(text);
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Shows the modifications that vex knows by name, with composition, masses and sites."_s,
        {u"vex modifications"_s, u"vex modifications Oxidation UNIMOD:21"_s},
        u"Names, numbers, compositions and sites are those of Unimod. A sequence takes them in "
        "brackets, M[Oxidation] or S[UNIMOD:21], and vex pattern --modify by themselves. All "
        "others are given by their atoms, [Formula:C2H2O], or by their mass alone, [+15.9949].\n"
        "Sites are letters of residues that carry the modification anywhere, and those that carry "
        "it as the first or the last of a chain. Elsewhere it is counted as well, with a warning."_s);
    commandLine->addPositional(u"NAME"_s, u"Names or numbers; all without one."_s, u"[NAME...]"_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    QList<const Modification *> shown;
    QStringList names;
    for (const Modification &modification : vex::Modifications::all()) {
        names.append(modification.name);
        if (commandLine.positional().isEmpty())
            shown.append(&modification);
    }
    for (const QString &text : commandLine.positional()) {
        const Modification *found = findModification(text);
        if (!found) {
            const QString similar = similarWord(text, names);
            return failure(u"no modification '%1'%2"_s.arg(
                text, similar.isEmpty() ? QString() : u", perhaps %1 is meant"_s.arg(similar)));
        }
        shown.append(found);
    }
    if (commandLine.isJson()) {
        JsonArrayWriter json(results->standard());
        for (const Modification *modification : std::as_const(shown))
            json.add(asJson(*modification));
        json.end();
        return vex::ErrorCode::NoError;
    }
    Table table({u"name"_s, u"Unimod"_s, u"composition"_s, u"average/Da"_s, u"monoisotopic/Da"_s,
        u"sites"_s});
    for (const Modification *modification : std::as_const(shown)) {
        const vex::DeltaComposition delta = modification->delta();
        table.addRow({modification->name, QString::number(modification->unimodNumber), delta.text(),
            QString::asprintf("%+.4f", delta.averageMass()),
            QString::asprintf("%+.4f", delta.monoisotopicMass()), sitesOf(*modification)});
    }
    results->print(table.toText());
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kModificationsCommand{"modifications"_L1,
    "the modifications of sequences that are known by name"_L1, declare, run, false};

} // namespace vexcli

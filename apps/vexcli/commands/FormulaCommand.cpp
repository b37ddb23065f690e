#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Output.h"
#include "output/Table.h"

#include <vex/FormulaParser.h>
#include <vex/MolecularMass.h>

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

struct Reading
{
    QString text;
    vex::FormulaParser::Check check;
    double averageMass;
    double monoisotopicMass;
};

QString kindName(vex::FormulaParser::Finding::Kind kind)
{
    using Finding = vex::FormulaParser::Finding;
    switch (kind) {
    case Finding::CharacterDropped:
        return u"dropped"_s;
    case Finding::DigitsJoined:
        return u"digits joined"_s;
    case Finding::LostBeforeSymbol:
        return u"lost"_s;
    case Finding::CountTailIgnored:
        return u"tail ignored"_s;
    case Finding::SymbolIgnored:
        return u"symbol ignored"_s;
    case Finding::CountUnreadable:
        return u"unreadable"_s;
    case Finding::CountChanged:
        return u"count changed"_s;
    }
    return {};
}

QByteArray asTable(const Reading &reading)
{
    Table counts({u"element"_s, u"count"_s});
    for (auto entry = reading.check.counts.cbegin(); entry != reading.check.counts.cend(); ++entry)
        counts.addRow({entry.key(), exactNumber(entry.value())});
    QByteArray text = reading.text.toUtf8() + '\n' + counts.toText(2);
    text += u"  average mass %1 Da, monoisotopic mass %2 Da\n"_s
                .arg(fixedNumber(reading.averageMass, 4), fixedNumber(reading.monoisotopicMass, 4))
                .toUtf8();
    for (const auto &finding : reading.check.findings)
        text += "  note: " + finding.message.toUtf8() + '\n';
    return text;
}

QJsonObject asJson(const Reading &reading)
{
    QJsonObject counts;
    for (auto entry = reading.check.counts.cbegin(); entry != reading.check.counts.cend(); ++entry)
        counts.insert(entry.key(), entry.value());
    QJsonArray findings;
    for (const auto &finding : reading.check.findings) {
        findings.append(
            QJsonObject{{u"kind"_s, kindName(finding.kind)}, {u"position"_s, finding.position},
                {u"text"_s, finding.text}, {u"message"_s, finding.message}});
    }
    return {{u"formula"_s, reading.text}, {u"counts"_s, counts}, {u"findings"_s, findings},
        {u"averageMass"_s, reading.averageMass}, {u"monoisotopicMass"_s, reading.monoisotopicMass}};
}

} // namespace

vex::Error runFormula(const QStringList &arguments)
{
    CommandLine commandLine(u"formula"_s,
        u"Shows how formula texts are read: the count of each element, and what the tolerant "
        u"grammar "
        "dropped or ignored. Masses count the elements C, H, O, N, S, P and Na. Positions in JSON "
        "count from 0, those in messages from 1."_s);
    commandLine.addPositional(u"TEXT"_s, u"Formula text, such as C6H12O6."_s, u"TEXT..."_s);
    commandLine.addOption({u"o"_s, u"output"_s}, u"Writes to FILE."_s, u"FILE"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    if (commandLine.positional().isEmpty())
        return usageFailure(u"no formula text given (see vex formula --help)"_s);

    QList<Reading> readings;
    for (const QString &text : commandLine.positional()) {
        auto check = vex::FormulaParser::checkFormula(text);
        if (check.hasError())
            return passedOn(std::move(check).error());
        QHash<vex::MolecularFormula::AtomType, double> counts;
        std::ignore = vex::FormulaParser::molecularFormulaHashFromString(text, &counts); // checked
        vex::MolecularFormula formula;
        formula.setMolecularFormula(counts);
        readings.append({text, std::move(check).value(), vex::MolecularMass::average(formula),
            vex::MolecularMass::monoisotopic(formula)});
    }

    auto output = Output::open(commandLine.value(u"output"_s));
    if (output.hasError())
        return passedOn(std::move(output).error());
    if (commandLine.isSet(u"json"_s)) {
        QJsonArray array;
        for (const Reading &reading : readings)
            array.append(asJson(reading));
        output.value()->write(QJsonDocument(array).toJson());
    } else {
        for (const Reading &reading : readings)
            output.value()->write(asTable(reading));
    }
    return passedOn(output.value()->commit());
}

} // namespace vexcli

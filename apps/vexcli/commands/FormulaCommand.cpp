#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Json.h"
#include "output/Output.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/FormulaParser.h>
#include <vex/MolecularMass.h>

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Finding = vex::FormulaParser::Finding;

/// A text and what was read of it.
struct Reading
{
    QString text;
    QString problem; // why it cannot be read at all; empty when it can
    vex::FormulaParser::Check check;
    QStringList leftOut; // symbols without a known mass, each once
    double averageMass = 0.0; // daltons, of all but what is left out
    double monoisotopicMass = 0.0;

    /// True when a place makes the counts doubtful.
    bool isDoubtful() const
    {
        return std::any_of(
            check.findings.begin(), check.findings.end(), [](const Finding &finding) {
                const bool isCharge = std::all_of(finding.text.begin(), finding.text.end(),
                    [](QChar character) { return character == u'+' || character == u'-'; });
                return finding.kind == Finding::DigitsJoined
                    || finding.kind == Finding::CountChanged
                    || finding.kind == Finding::LostBeforeSymbol
                    || (finding.kind == Finding::CountTailIgnored && !isCharge);
            });
    }
    /// True when the masses are those of the formula that was written.
    bool isWhole() const { return problem.isEmpty() && leftOut.isEmpty() && !isDoubtful(); }
};

Reading read(const QString &text)
{
    Reading reading{text, {}, {}, {}, 0.0, 0.0};
    auto check = vex::FormulaParser::checkFormula(text);
    if (check.hasError()) {
        reading.problem = check.error().message();
        return reading;
    }
    reading.check = std::move(check).value();
    for (const Finding &finding : std::as_const(reading.check.findings)) {
        if (finding.kind == Finding::SymbolIgnored && !reading.leftOut.contains(finding.text))
            reading.leftOut.append(finding.text);
    }
    QHash<vex::MolecularFormula::AtomType, double> counts;
    std::ignore = vex::FormulaParser::molecularFormulaHashFromString(text, &counts); // checked
    vex::MolecularFormula formula;
    formula.setMolecularFormula(counts);
    reading.averageMass = vex::MolecularMass::average(formula);
    reading.monoisotopicMass = vex::MolecularMass::monoisotopic(formula);
    return reading;
}

QString kindName(Finding::Kind kind)
{
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
    QString text = headLine(reading.text);
    if (!reading.problem.isEmpty())
        return (text + reportLine(u"not readable"_s, reading.problem)).toUtf8();
    Table counts({u"element"_s, u"count"_s});
    for (auto entry = reading.check.counts.cbegin(); entry != reading.check.counts.cend(); ++entry)
        counts.addRow({entry.key(), massNumber(entry.value())});
    const QByteArray table = text.toUtf8() + counts.toText(2);
    const QString rest =
        reading.leftOut.isEmpty() ? QString() : " without "_L1 + reading.leftOut.join(", "_L1);
    text.clear();
    if (reading.isDoubtful())
        text += reportLine(u"masses"_s, u"none, the counts are not clear"_s);
    else if (reading.check.counts.size() == reading.leftOut.size())
        text += reportLine(u"masses"_s, u"none, no element has a known mass"_s);
    else
        text += reportLine(rest.isEmpty() ? u"average mass"_s : u"partial average"_s,
                    fixedNumber(reading.averageMass, 4) + " Da"_L1 + rest)
            + reportLine(rest.isEmpty() ? u"monoisotopic mass"_s : u"partial monoisotopic"_s,
                fixedNumber(reading.monoisotopicMass, 4) + " Da"_L1 + rest);
    for (const Finding &finding : reading.check.findings)
        text += reportLine(u"note"_s, finding.message);
    return table + text.toUtf8();
}

QJsonObject asJson(const Reading &reading)
{
    QJsonObject object{{u"formula"_s, reading.text}, {u"isWhole"_s, reading.isWhole()}};
    if (!reading.problem.isEmpty()) {
        object.insert(u"error"_s, reading.problem);
        return object;
    }
    QJsonObject counts;
    for (auto entry = reading.check.counts.cbegin(); entry != reading.check.counts.cend(); ++entry)
        counts.insert(entry.key(), entry.value());
    QJsonArray findings;
    for (const Finding &finding : reading.check.findings)
        findings.append(
            QJsonObject{{u"kind"_s, kindName(finding.kind)}, {u"position"_s, finding.position},
                {u"text"_s, finding.text}, {u"message"_s, finding.message}});
    object.insert(u"counts"_s, counts);
    object.insert(u"findings"_s, findings);
    object.insert(u"leftOut"_s, QJsonArray::fromStringList(reading.leftOut));
    // a mass only where it is that of the whole; that of a part has keys of its own
    const bool isPart = !reading.leftOut.isEmpty() && !reading.isDoubtful();
    const auto given = [](bool isGiven, double mass) {
        return isGiven ? QJsonValue(mass) : QJsonValue();
    };
    object.insert(u"averageMassDa"_s, given(reading.isWhole(), reading.averageMass));
    object.insert(u"monoisotopicMassDa"_s, given(reading.isWhole(), reading.monoisotopicMass));
    object.insert(u"partAverageMassDa"_s, given(isPart, reading.averageMass));
    object.insert(u"partMonoisotopicMassDa"_s, given(isPart, reading.monoisotopicMass));
    return object;
}

void writeCsv(const QList<Reading> &readings, Output *output)
{
    output->write("formula,element,count\n");
    for (const Reading &reading : readings) {
        const auto &counts = reading.check.counts;
        for (auto entry = counts.cbegin(); entry != counts.cend(); ++entry)
            output->write((csvField(reading.text) + u',' + csvField(entry.key()) + u','
                + exactNumber(entry.value()) + u'\n')
                              .toUtf8());
    }
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Shows how formulas are read: the count of each element, the masses, and what the reading leaves out."_s,
        {u"vex formula C6H12O6"_s, u"vex formula --json C8H10N4O2 C6H5Cl"_s},
        u"Masses are known of C, H, O, N, S, P and Na. Where a formula holds other elements, the "
        "mass is called that of a part. There are no groups: C(H3)2 is not understood as two CH3, "
        "and a formula whose counts are not clear gets no mass. The exit code is 1 when a formula "
        "has no mass or that of a part only.\n"
        "Positions count from 1 in messages, from 0 in JSON."_s);
    commandLine->addPositional(u"TEXT"_s, u"Formula, such as C6H12O6."_s, u"TEXT..."_s);
    commandLine->addOutputOption(
        u"Writes the counts to FILE as CSV instead of printing tables; with --json, JSON."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    if (commandLine.positional().isEmpty())
        return usageFailure(commandLine.withHint(u"no formula given"_s));
    QList<Reading> readings;
    for (const QString &text : commandLine.positional())
        readings.append(read(text));
    if (commandLine.isJson()) {
        JsonArrayWriter json(results->file() ? results->file() : results->standard());
        for (const Reading &reading : std::as_const(readings))
            json.add(asJson(reading));
        json.end();
    } else if (results->file()) {
        writeCsv(readings, results->file());
    } else {
        for (const Reading &reading : std::as_const(readings))
            results->print(asTable(reading));
    }
    const auto notWhole = std::count_if(readings.begin(), readings.end(),
        [](const Reading &reading) { return !reading.isWhole(); });
    if (notWhole > 0)
        results->setVerdict(failure(u"%1 of %2 without a mass of the whole"_s.arg(
            QString::number(notWhole), counted(readings.size(), u"formula"_s))));
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kFormulaCommand{"formula"_L1,
    "how formulas are read, their masses, and what is left out"_L1, declare, run, false};

} // namespace vexcli

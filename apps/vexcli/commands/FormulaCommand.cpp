#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Json.h"
#include "output/Output.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/ChemicalFormula.h>
#include <vex/FormulaParser.h>
#include <vex/MolecularMass.h>

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <optional>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Finding = vex::FormulaParser::Finding;

/// A text and what was read of it, strictly and, as models take a composition, tolerantly.
struct Reading
{
    QString text;
    std::optional<vex::ChemicalFormula> strict;
    QString refusal; // why it cannot be read strictly; empty when it can
    // the tolerant reading
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
    /// True when the tolerant reading's masses are those of the formula that was written.
    bool isWhole() const
    {
        return strict && !isDisputed() && problem.isEmpty() && leftOut.isEmpty() && !isDoubtful();
    }
    /// Atoms by label of the strict reading.
    QMap<QString, double> strictCounts() const
    {
        QMap<QString, double> counts;
        for (const auto &atoms : strict->atoms())
            counts.insert(atoms.label(), atoms.count);
        return counts;
    }
    /// True when the tolerant reading has other atoms than the strict one, or fails and has none.
    bool isDisputed() const { return strict && strictCounts() != check.counts; }
};

Reading read(const QString &text)
{
    Reading reading;
    reading.text = text;
    if (auto formula = vex::ChemicalFormula::read(text); formula.hasValue())
        reading.strict = std::move(formula).value();
    else
        reading.refusal = formula.error().message();
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

QByteArray countTable(const QMap<QString, double> &counts)
{
    Table table({u"element"_s, u"count"_s});
    for (auto entry = counts.cbegin(); entry != counts.cend(); ++entry)
        table.addRow({entry.key(), massNumber(entry.value())});
    return table.toText(2);
}

QString massLines(const QString &average, double averageMass, const QString &monoisotopic,
    double monoisotopicMass, const QString &rest)
{
    return reportLine(average, fixedNumber(averageMass, 4) + " Da"_L1 + rest)
        + reportLine(monoisotopic, fixedNumber(monoisotopicMass, 4) + " Da"_L1 + rest);
}

/// "+1", "-2"
QString chargeText(int charge)
{
    return (charge > 0 ? u"+"_s : QString()) + QString::number(charge);
}

/// Counts and masses of the strict reading. Where the models' table suffices, the masses are
/// theirs.
QByteArray asStrictTable(const Reading &reading)
{
    const vex::ChemicalFormula &formula = *reading.strict;
    QString text;
    if (formula.charge() != 0)
        text += reportLine(u"charge"_s, chargeText(formula.charge()));
    const bool isOfModels = reading.isWhole() && formula.charge() == 0;
    text += massLines(u"average mass"_s, isOfModels ? reading.averageMass : formula.averageMass(),
        u"monoisotopic mass"_s, isOfModels ? reading.monoisotopicMass : formula.monoisotopicMass(),
        {});
    if (!isOfModels)
        text += reportLine(u"masses from"_s, u"published isotopes"_s);
    if (reading.isDisputed()) {
        QStringList others;
        const auto &counts = reading.check.counts;
        for (auto entry = counts.cbegin(); entry != counts.cend(); ++entry)
            others.append(entry.key() + u' ' + massNumber(entry.value()));
        text += reportLine(u"note"_s,
            reading.problem.isEmpty()
                ? u"the tolerant reading has other atoms: "_s + others.join(", "_L1)
                : u"the tolerant reading fails: "_s + reading.problem);
    }
    return countTable(reading.strictCounts()) + text.toUtf8();
}

QByteArray asTable(const Reading &reading)
{
    QString text = headLine(reading.text);
    if (reading.strict)
        return text.toUtf8() + asStrictTable(reading);
    const QString refusal = reportLine(u"not a formula"_s, reading.refusal);
    if (!reading.problem.isEmpty())
        return (text + refusal + reportLine(u"not readable"_s, reading.problem)).toUtf8();
    text +=
        refusal + reportLine(u"tolerant reading"_s, u"what --formula of other commands takes"_s);
    const QByteArray table = text.toUtf8() + countTable(reading.check.counts);
    const QString rest =
        reading.leftOut.isEmpty() ? QString() : " without "_L1 + reading.leftOut.join(", "_L1);
    text.clear();
    if (reading.isDoubtful())
        text += reportLine(u"masses"_s, u"none, the counts are not clear"_s);
    else if (reading.check.counts.size() == reading.leftOut.size())
        text += reportLine(u"masses"_s, u"none, no element has a known mass"_s);
    else
        text += massLines(rest.isEmpty() ? u"average mass"_s : u"partial average"_s,
            reading.averageMass,
            rest.isEmpty() ? u"monoisotopic mass"_s : u"partial monoisotopic"_s,
            reading.monoisotopicMass, rest);
    for (const Finding &finding : reading.check.findings)
        text += reportLine(u"note"_s, finding.message);
    return table + text.toUtf8();
}

/// The strict reading; null where it refuses.
QJsonValue strictJson(const Reading &reading)
{
    if (!reading.strict)
        return QJsonValue();
    QJsonArray atoms;
    for (const auto &kind : reading.strict->atoms())
        atoms.append(QJsonObject{{u"element"_s, QString(kind.element->symbol)},
            {u"massNumber"_s, kind.massNumber == 0 ? QJsonValue() : QJsonValue(kind.massNumber)},
            {u"count"_s, kind.count}});
    return QJsonObject{{u"hill"_s, reading.strict->hillText()}, {u"atoms"_s, atoms},
        {u"charge"_s, reading.strict->charge()},
        {u"averageMassDa"_s, reading.strict->averageMass()},
        {u"monoisotopicMassDa"_s, reading.strict->monoisotopicMass()},
        {u"isDisputed"_s, reading.isDisputed()}};
}

QJsonObject asJson(const Reading &reading)
{
    QJsonObject object{{u"formula"_s, reading.text}, {u"isWhole"_s, reading.isWhole()},
        {u"strict"_s, strictJson(reading)},
        {u"refusal"_s, reading.strict ? QJsonValue() : QJsonValue(reading.refusal)}};
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
        const auto counts = reading.strict ? reading.strictCounts() : QMap<QString, double>();
        for (auto entry = counts.cbegin(); entry != counts.cend(); ++entry)
            output->write((csvField(reading.text) + u',' + csvField(entry.key()) + u','
                + exactNumber(entry.value()) + u'\n')
                              .toUtf8());
    }
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Shows how formulas are read: the count of each element, the masses, and what is wrong with them."_s,
        {u"vex formula C6H12O6"_s, u"vex formula '[Co(NH3)6]Cl3' CuSO4.5H2O '[13C]6H12O6' SO4^2-"_s,
            u"vex formula --json C8H10N4O2 C6H5Cl"_s},
        u"All elements with natural isotopes, groups, single isotopes such as [13C] and D, water "
        "behind a point, and a charge at the end are understood. The mass of an ion is without the "
        "electrons that it lost. What is not wholly understood is refused, with the column where "
        "it goes wrong. Below stands what the tolerant reading makes of it, which --formula of "
        "other commands uses: it drops what it does not know, it knows no groups, and only the "
        "masses of C, H, O, N, S, P and Na. A note says where it reads other atoms.\n"
        "The monoisotopic mass is that of the most abundant isotope of each element. The exit code "
        "is 1 when a formula is refused.\n"
        "Columns and positions count from 1 in messages, positions from 0 in JSON."_s);
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
    const auto refused = std::count_if(
        readings.begin(), readings.end(), [](const Reading &reading) { return !reading.strict; });
    if (refused > 0)
        results->setVerdict(failure(u"%1 of %2 refused"_s.arg(
            QString::number(refused), counted(readings.size(), u"formula"_s))));
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kFormulaCommand{"formula"_L1,
    "how formulas are read, their masses, and what is left out"_L1, declare, run, false};

} // namespace vexcli

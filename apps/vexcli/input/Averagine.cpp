#include "input/Averagine.h"

#include "commands/CommandLine.h"
#include "Failure.h"

#include <vex/FormulaParser.h>
#include <vex/MolecularFormula.h>

#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using AtomType = vex::MolecularFormula::AtomType;
using Counts = QHash<AtomType, double>;

constexpr qint64 kLargestAveragineFile = 1 << 20; // bytes; a composition is a few lines

/// Modern averagine: Senko, Beu and McLafferty, J. Am. Soc. Mass Spectrom. 6 (1995) 229.
Counts modernAveragine()
{
    return {{AtomType::C, 4.9384}, {AtomType::H, 7.7583}, {AtomType::N, 1.3577},
        {AtomType::O, 1.4773}, {AtomType::S, 0.0417}};
}

/// @p text with equally many decimals in every count and no decimal point.
QString withoutDecimalPoints(const QString &text)
{
    static const QRegularExpression count(u"([A-Z][a-z]*)\\s*(\\d*)(?:[.,](\\d*))?"_s);
    qsizetype decimals = 0;
    for (auto matches = count.globalMatch(text); matches.hasNext();)
        decimals = std::max(decimals, matches.next().capturedLength(3));
    QString result;
    for (auto matches = count.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const bool isBare = match.captured(2).isEmpty() && match.captured(3).isEmpty();
        QString digits =
            (isBare ? u"1"_s : match.captured(2)) + match.captured(3).leftJustified(decimals, u'0');
        while (digits.size() > 1 && digits.startsWith(u'0'))
            digits.remove(0, 1);
        result += match.captured(1) + digits;
    }
    return result;
}

/// The counts of @p text; what the reading leaves out stands in the warnings.
vex::Result<Counts> countsFromText(const QString &text)
{
    const auto check = vex::FormulaParser::checkFormula(text);
    if (check.hasError())
        return passedOn(failure(u"the formula cannot be used: %1"_s.arg(check.error().message())));
    using Finding = vex::FormulaParser::Finding;
    QStringList warnings;
    for (const Finding &finding : check.value().findings) {
        if (finding.kind == Finding::DigitsJoined
            && (finding.text == "."_L1 || finding.text == ","_L1))
            return usageFailure(
                u"the formula '%1' has decimals, which formula texts cannot hold: "
                "write equally many decimals everywhere and leave the point out "
                "(%2), or use --averagine FILE.json"_s.arg(text, withoutDecimalPoints(text)));
        if (finding.kind == Finding::DigitsJoined)
            return usageFailure(u"the formula '%1' is not clear: %2"_s.arg(text, finding.message));
        if (!(finding.kind == Finding::CharacterDropped && finding.text.front().isSpace()))
            warnings.append(u"formula: "_s + finding.message);
    }
    Counts counts;
    std::ignore = vex::FormulaParser::molecularFormulaHashFromString(text, &counts); // checked
    vex::Result<Counts> result(counts);
    result.addWarnings(warnings);
    return result;
}

/// Line of the byte at @p offset, counted from 1.
qsizetype lineAt(const QByteArray &text, qsizetype offset)
{
    return text.first(std::clamp<qsizetype>(offset, 0, text.size())).count('\n') + 1;
}

vex::Result<Counts> countsFromFile(const QString &path, QString *name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(u"cannot read %1: %2 (--averagine takes senko or a JSON file)"_s.arg(
            path, file.errorString()));
    const QByteArray text = file.read(kLargestAveragineFile + 1);
    if (file.error() != QFileDevice::NoError)
        return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
    if (text.size() > kLargestAveragineFile)
        return failure(u"%1 is too large for a composition"_s.arg(path));
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(text, &problem);
    if (problem.error != QJsonParseError::NoError)
        return failure(u"%1, line %2: %3"_s.arg(
            path, QString::number(lineAt(text, problem.offset)), problem.errorString()));
    const QJsonValue atoms = document.object().value("atoms"_L1);
    if (!atoms.isObject())
        return failure(
            uR"(%1: no object "atoms" as in {"name": "mine", "atoms": {"C": 4.9, "H": 7.8}})"_s.arg(
                path));
    static const QHash<QString, AtomType> types{{u"C"_s, AtomType::C}, {u"H"_s, AtomType::H},
        {u"O"_s, AtomType::O}, {u"N"_s, AtomType::N}, {u"S"_s, AtomType::S}, {u"P"_s, AtomType::P},
        {u"Na"_s, AtomType::Na}};
    Counts counts;
    const QJsonObject object = atoms.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const auto type = types.constFind(entry.key());
        if (type == types.constEnd())
            return failure(u"%1: '%2' is none of C, H, O, N, S, P, Na"_s.arg(path, entry.key()));
        const double count = entry.value().toDouble(std::nan(""));
        if (!(count >= 0.0) || !std::isfinite(count))
            return failure(
                u"%1: the count of %2 is not a number of at least 0"_s.arg(path, entry.key()));
        counts.insert(*type, count);
    }
    *name = document.object().value("name"_L1).toString(path);
    return counts;
}

} // namespace

void addAveragineOptions(CommandLine *commandLine)
{
    commandLine->addOption({u"formula"_s},
        u"Composition as formula text, such as C49384H77583N13577O14773S417; only the "
        "proportions matter. Counts have no decimal point: give all of them equally many decimals "
        "and leave the point out."_s,
        u"AVERAGINE"_s);
    commandLine->addOption({u"averagine"_s},
        uR"(Composition by name (senko, the default: C4.9384 H7.7583 N1.3577 O1.4773 S0.0417) or from a )"
        uR"(JSON file: {"name": "mine", "atoms": {"C": 4.9384, "H": 7.7583}}.)"_s,
        u"senko|FILE.json"_s);
}

vex::Result<Averagine> averagineFrom(const CommandLine &commandLine)
{
    if (commandLine.isSet(u"formula"_s) && commandLine.isSet(u"averagine"_s))
        return usageFailure(u"--formula and --averagine exclude each other"_s);
    QString name = u"averagine (Senko 1995)"_s;
    vex::Result<Counts> counts = modernAveragine();
    if (commandLine.isSet(u"formula"_s)) {
        name = commandLine.value(u"formula"_s);
        counts = countsFromText(name);
    } else if (const QString source = commandLine.value(u"averagine"_s);
               commandLine.isSet(u"averagine"_s) && source != "senko"_L1) {
        counts = countsFromFile(source, &name);
    }
    if (counts.hasError())
        return passedOn(std::move(counts).error());

    vex::MolecularFormula formula;
    formula.setMolecularFormula(counts.value());
    if (std::any_of(counts.value().cbegin(), counts.value().cend(),
            [](double count) { return !(count >= 0.0); }))
        return failure(u"the composition %1 holds a negative count"_s.arg(name));
    Averagine averagine{name, formula, {}};
    std::ignore = averagine.model.init(formula); // never an error
    const double merMass = averagine.model.merMass();
    if (!(merMass > 0.0) || !std::isfinite(merMass))
        return failure(u"the composition %1 has no positive finite mass"_s.arg(name));
    for (const QString &warning : counts.warnings())
        qWarning("%s", qUtf8Printable(warning));
    return averagine;
}

} // namespace vexcli

#include "input/Composition.h"

#include "commands/CommandLine.h"
#include "input/Input.h"
#include "output/Messages.h"
#include "Failure.h"

#include <vex/AveragineIsotopeModel.h>
#include <vex/FormulaParser.h>

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

const QString kModernAveragine = u"averagine (Senko 1995)"_s;
constexpr qint64 kLargestFile = 1 << 20; // bytes; a composition is a few lines

Counts countsOfModernAveragine()
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

/// The counts of @p text; what the reading leaves out is warned of.
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
        if (finding.kind != Finding::CharacterDropped) // something would be left out or changed
            return usageFailure(u"the formula '%1' is not clear: %2"_s.arg(text, finding.message));
        if (!finding.text.front().isSpace())
            warnings.append(u"formula: "_s + finding.message);
    }
    for (const QString &warning : std::as_const(warnings))
        warn(warning);
    Counts counts;
    std::ignore = vex::FormulaParser::molecularFormulaHashFromString(text, &counts); // checked
    return counts;
}

/// Line of the byte at @p offset, counted from 1.
qsizetype lineAt(const QByteArray &text, qsizetype offset)
{
    return text.first(std::clamp<qsizetype>(offset, 0, text.size())).count('\n') + 1;
}

vex::Result<QByteArray> contentOf(Input *input)
{
    QByteArray text(kLargestFile + 1, Qt::Uninitialized);
    qint64 size = 0;
    for (;;) {
        auto got = input->read(text.data() + size, text.size() - size);
        if (got.hasError())
            return passedOn(std::move(got).error());
        size += got.value();
        if (size > kLargestFile)
            return failure(u"%1 is too large for a composition"_s.arg(input->name()));
        if (got.value() == 0)
            return text.first(size);
    }
}

vex::Result<Counts> countsFromFile(const QString &path, QString *name)
{
    auto input = Input::open(path);
    if (input.hasError())
        return failure(
            u"%1 (--averagine takes senko or a JSON file)"_s.arg(input.error().message()));
    auto content = contentOf(input.value().get());
    if (content.hasError())
        return passedOn(std::move(content).error());
    const QByteArray text = content.value();
    const QString file = input.value()->name();
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(text, &problem);
    if (problem.error != QJsonParseError::NoError)
        return failure(u"%1, line %2: %3"_s.arg(
            file, QString::number(lineAt(text, problem.offset)), problem.errorString()));
    const QJsonValue atoms = document.object().value("atoms"_L1);
    if (!atoms.isObject())
        return failure(
            uR"(%1: no object "atoms" as in {"name": "mine", "atoms": {"C": 4.9, "H": 7.8}})"_s.arg(
                file));
    static const QHash<QString, AtomType> types{{u"C"_s, AtomType::C}, {u"H"_s, AtomType::H},
        {u"O"_s, AtomType::O}, {u"N"_s, AtomType::N}, {u"S"_s, AtomType::S}, {u"P"_s, AtomType::P},
        {u"Na"_s, AtomType::Na}};
    Counts counts;
    const QJsonObject object = atoms.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const auto type = types.constFind(entry.key());
        if (type == types.constEnd())
            return failure(u"%1: '%2' is none of C, H, O, N, S, P, Na"_s.arg(file, entry.key()));
        const double count = entry.value().toDouble(std::nan(""));
        if (!(count >= 0.0) || !std::isfinite(count))
            return failure(
                u"%1: the count of %2 is not a number of at least 0"_s.arg(file, entry.key()));
        counts.insert(*type, count);
    }
    *name = document.object().value("name"_L1).toString(file);
    return counts;
}

} // namespace

Composition modernAveragine()
{
    Composition composition{kModernAveragine, {}};
    composition.formula.setMolecularFormula(countsOfModernAveragine());
    return composition;
}

void addCompositionOptions(CommandLine *commandLine)
{
    commandLine->addOption({u"formula"_s},
        u"Composition as a formula, such as C49384H77583N13577O14773S417; only the proportions "
        "matter. A formula holds no decimal point: give all counts equally many decimals and leave "
        "the point out."_s,
        u"FORMULA"_s);
    commandLine->addInputOption(u"averagine"_s,
        u"Average composition: senko (C4.9384 H7.7583 N1.3577 O1.4773 S0.0417), or one of your own "
        "from a JSON file, {\"name\": \"mine\", \"atoms\": {\"C\": 4.9384, \"H\": 7.7583}}."_s,
        u"senko|FILE"_s);
}

bool isCompositionGiven(const CommandLine &commandLine)
{
    return commandLine.isSet(u"formula"_s) || commandLine.isSet(u"averagine"_s);
}

vex::Result<Composition> compositionFrom(const CommandLine &commandLine)
{
    if (commandLine.isSet(u"formula"_s) && commandLine.isSet(u"averagine"_s))
        return usageFailure(u"--formula and --averagine exclude each other"_s);
    QString name = kModernAveragine;
    vex::Result<Counts> counts = countsOfModernAveragine();
    if (commandLine.isSet(u"formula"_s)) {
        name = commandLine.value(u"formula"_s);
        counts = countsFromText(name);
    } else if (const QString source = commandLine.value(u"averagine"_s);
               commandLine.isSet(u"averagine"_s) && source != "senko"_L1) {
        counts = countsFromFile(source, &name);
    }
    if (counts.hasError())
        return passedOn(std::move(counts).error());

    Composition composition{name, {}};
    composition.formula.setMolecularFormula(counts.value());
    if (std::any_of(counts.value().cbegin(), counts.value().cend(),
            [](double count) { return !(count >= 0.0); }))
        return failure(u"the composition %1 holds a negative count"_s.arg(name));
    vex::AveragineIsotopeModel model;
    std::ignore = model.init(composition.formula); // never an error
    if (!(model.merMass() > 0.0) || !std::isfinite(model.merMass()))
        return failure(u"the composition %1 has no positive finite mass"_s.arg(name));
    return composition;
}

} // namespace vexcli

#include "input/Molecules.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Messages.h"
#include "output/Text.h"

#include <vex/ModifiedSequence.h>

#include <QSet>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kMostDisulfides = 1e6;
constexpr double kLeastWeight = 1e-12; // what is less would not be seen
constexpr double kLargestWeight = 1e12;

using Tag = vex::ModifiedSequence::Tag;

/// "C8H10N4O2:0.3" without its weight, which is read into @p molecule.
vex::Result<QString> withoutWeight(const QString &text, const QString &option, Molecule *molecule)
{
    const qsizetype colon = text.lastIndexOf(u':');
    if (colon < 0 || colon < text.lastIndexOf(u']')) // a bracket may hold one
        return text;
    const QString what = u"the weight of --%1 %2"_s.arg(option, text);
    auto weight = nonNegativeNumber(text.mid(colon + 1), what);
    if (weight.hasError())
        return passedOn(std::move(weight).error());
    if (!(weight.value() >= kLeastWeight && weight.value() <= kLargestWeight))
        return usageFailure(u"%1 is not from %2 to %3"_s.arg(
            what, exactNumber(kLeastWeight), exactNumber(kLargestWeight)));
    molecule->weight = weight.value();
    molecule->isWeighted = true;
    return text.first(colon);
}

vex::Result<Molecule> moleculeOf(const QString &text)
{
    Molecule molecule;
    auto formula = withoutWeight(text, u"molecule"_s, &molecule);
    if (formula.hasError())
        return passedOn(std::move(formula).error());
    auto read = vex::ChemicalFormula::read(formula.value());
    if (read.hasError())
        return failure(u"--molecule %1"_s.arg(read.error().message()));
    molecule.name = formula.value();
    molecule.formula = std::move(read).value();
    return molecule;
}

vex::Result<Molecule> chainOf(const QString &text)
{
    Molecule molecule;
    auto sequence = withoutWeight(text, u"sequence"_s, &molecule);
    if (sequence.hasError())
        return passedOn(std::move(sequence).error());
    auto read = vex::ModifiedSequence::read(sequence.value());
    if (read.hasError())
        return failure(u"--sequence %1"_s.arg(read.error().message()));
    for (const QString &warning : read.warnings())
        warn(u"--sequence %1: %2"_s.arg(sequence.value(), warning));
    molecule.name = sequence.value();
    molecule.formula = read.value().formula();
    molecule.massShift = read.value().massShiftDa();
    molecule.hasMassShift = read.value().hasMassShift();
    molecule.residues = read.value().residues();
    molecule.residueCount = molecule.residues.size();
    molecule.cysteineCount = molecule.residues.count(u'C');
    return molecule;
}

/// Appends the sequences of --fasta.
vex::Error addProteins(const CommandLine &commandLine, BadRecords *bad, QList<Molecule> *molecules)
{
    auto proteins = readProteins(commandLine, bad);
    if (proteins.hasError())
        return passedOn(std::move(proteins).error());
    OddResidueWarnings warnings;
    for (const Protein &protein : std::as_const(proteins).value()) {
        auto formula = exactFormulaOf(protein);
        if (formula.hasError()) {
            if (auto error = bad->leaveOut(
                    failure(u"%1: %2"_s.arg(protein.name, formula.error().message())));
                error.hasError())
                return passedOn(std::move(error));
            continue;
        }
        Molecule molecule;
        molecule.name = protein.name;
        molecule.formula = std::move(formula).value();
        molecule.residueCount = protein.length;
        molecule.cysteineCount = protein.placesOf('C');
        molecule.residues = protein.kinds();
        molecule.odd = oddResiduesOf(protein, true);
        warnings.add(molecule.name, molecule.odd);
        molecules->append(molecule);
    }
    warnings.finish("B, X or Z"_L1);
    return vex::ErrorCode::NoError;
}

/// All @p molecules as one.
vex::Result<Molecule> joined(const QList<Molecule> &molecules, const QString &name)
{
    if (name.isEmpty())
        return usageFailure(u"--join needs a name for the molecule"_s);
    Molecule whole;
    whole.name = name;
    for (const Molecule &part : molecules) {
        if (part.isWeighted)
            return usageFailure(
                u"--join makes one molecule of all, which have no weights (%1)"_s.arg(part.name));
        auto sum = whole.formula.plus(part.formula);
        if (sum.hasError())
            return failure(u"--join %1: %2"_s.arg(name, sum.error().message()));
        whole.formula = std::move(sum).value();
        whole.massShift += part.massShift;
        whole.hasMassShift = whole.hasMassShift || part.hasMassShift;
        whole.residueCount += part.residueCount;
        whole.cysteineCount += part.cysteineCount;
        whole.residues += part.residues;
        for (const OddResidue &odd : part.odd) {
            const auto same = std::find_if(whole.odd.begin(), whole.odd.end(),
                [&odd](const OddResidue &each) { return each.code == odd.code; });
            if (same == whole.odd.end())
                whole.odd.append(odd);
            else
                same->count += odd.count;
        }
    }
    return whole;
}

/// Takes two hydrogens away for each bridge.
vex::Error addDisulfides(int count, Molecule *molecule)
{
    static const auto hydrogens = vex::DeltaComposition::read(u"H2").value();
    if (molecule->residueCount > 0 && molecule->cysteineCount < 2 * qint64(count))
        return failure(u"%1 need %2 cysteines, and %3 has %4"_s.arg(counted(count, u"disulfide"_s),
            QString::number(2 * qint64(count)), molecule->name,
            QString::number(molecule->cysteineCount)));
    auto formula = molecule->formula.plus(hydrogens, -count);
    if (formula.hasError())
        return failure(u"--disulfides: %1: %2"_s.arg(molecule->name, formula.error().message()));
    molecule->formula = std::move(formula).value();
    return vex::ErrorCode::NoError;
}

vex::Error modify(const QString &text, const Tag &tag, Molecule *molecule)
{
    if (tag.isMass) {
        molecule->massShift += tag.massDa;
        molecule->hasMassShift = true;
        return vex::ErrorCode::NoError;
    }
    if (tag.known && molecule->residueCount > 0 && !tag.known->fits(molecule->residues))
        warn(u"%1: no residue is known to carry %2"_s.arg(molecule->name, tag.known->name));
    auto formula = molecule->formula.plus(tag.delta);
    if (formula.hasError())
        return failure(
            u"--modify %1: %2: %3"_s.arg(text, molecule->name, formula.error().message()));
    molecule->formula = std::move(formula).value();
    return vex::ErrorCode::NoError;
}

/// What --disulfides and --modify do to every molecule.
vex::Error change(const CommandLine &commandLine, QList<Molecule> *molecules)
{
    if (commandLine.isSet(u"disulfides"_s)) {
        auto count =
            wholeNumber(commandLine.value(u"disulfides"_s), u"--disulfides"_s, 0, kMostDisulfides);
        if (count.hasError())
            return passedOn(std::move(count).error());
        for (Molecule &molecule : *molecules) {
            if (auto error = addDisulfides(static_cast<int>(count.value()), &molecule);
                error.hasError())
                return passedOn(std::move(error));
        }
    }
    for (const QString &text : commandLine.values(u"modify"_s)) {
        auto tag = Tag::read(text);
        if (tag.hasError())
            return failure(u"--modify %1"_s.arg(tag.error().message()));
        for (Molecule &molecule : *molecules) {
            if (auto error = modify(text, tag.value(), &molecule); error.hasError())
                return passedOn(std::move(error));
        }
    }
    return vex::ErrorCode::NoError;
}

} // namespace

void addMoleculeOptions(CommandLine *commandLine)
{
    commandLine->addRepeatableOption({u"molecule"_s},
        u"A molecule by its formula, such as C8H10N4O2, with a weight behind a colon in a "
        "mixture: C8H10N4O2:0.3. See vex formula."_s,
        u"FORMULA"_s);
    commandLine->addRepeatableOption({u"sequence"_s},
        u"A peptide or protein in ProForma notation, such as EM[Oxidation]EVEES[UNIMOD:21]PEK, "
        u"also "
        "with a weight. See vex modifications."_s,
        u"SEQUENCE"_s);
    commandLine->addInputOption(u"fasta"_s, u"Protein sequences."_s);
    commandLine->addRepeatableOption({u"only"_s},
        u"Takes the sequence of this name from the FASTA file, and leaves the others."_s,
        u"NAME"_s);
    commandLine->addOption({u"join"_s},
        u"Makes one molecule of all, under this name: chains, cofactors."_s, u"NAME"_s);
    commandLine->addOption(
        {u"disulfides"_s}, u"Disulfide bridges in each molecule; each costs two H."_s, u"N"_s);
    commandLine->addRepeatableOption({u"modify"_s},
        u"Modifies each molecule once more, at no particular place: Oxidation, UNIMOD:21, "
        "+15.9949, Formula:C2H2O."_s,
        u"MODIFICATION"_s);
}

QStringList moleculeOptions()
{
    return {u"molecule"_s, u"sequence"_s, u"join"_s, u"disulfides"_s, u"modify"_s};
}

vex::Result<QList<Protein>> readProteins(const CommandLine &commandLine, BadRecords *bad)
{
    auto proteins = readFasta(commandLine.value(u"fasta"_s), bad);
    const QStringList names = commandLine.values(u"only"_s);
    if (proteins.hasError() || names.isEmpty())
        return passedOn(std::move(proteins));
    QSet<QString> missing(names.begin(), names.end());
    QList<Protein> wanted;
    for (const Protein &protein : std::as_const(proteins).value()) {
        if (!names.contains(protein.name))
            continue;
        wanted.append(protein);
        missing.remove(protein.name);
    }
    for (const QString &name : names) {
        if (missing.contains(name))
            return failure(u"--only %1: %2 has no such sequence"_s.arg(
                name, inputName(commandLine.value(u"fasta"_s))));
    }
    return wanted;
}

vex::Result<QList<Molecule>> readMolecules(const CommandLine &commandLine, BadRecords *bad)
{
    QList<Molecule> molecules;
    for (const auto &[option, read] :
        {std::pair(u"molecule"_s, &moleculeOf), {u"sequence"_s, &chainOf}}) {
        for (const QString &text : commandLine.values(option)) {
            auto molecule = read(text);
            if (molecule.hasError())
                return passedOn(std::move(molecule).error());
            molecules.append(std::move(molecule).value());
        }
    }
    if (commandLine.isSet(u"fasta"_s)) {
        if (auto error = addProteins(commandLine, bad, &molecules); error.hasError())
            return passedOn(std::move(error));
    }
    if (commandLine.isSet(u"join"_s)) {
        auto whole = joined(molecules, commandLine.value(u"join"_s));
        if (whole.hasError())
            return passedOn(std::move(whole).error());
        molecules = {std::move(whole).value()};
    }
    if (auto error = change(commandLine, &molecules); error.hasError())
        return passedOn(std::move(error));
    for (const Molecule &molecule : std::as_const(molecules)) {
        if (!(molecule.monoisotopicMass() > 0.0))
            return failure(u"%1: the modifications leave a mass of %2 Da"_s.arg(
                molecule.name, fixedNumber(molecule.monoisotopicMass(), 4)));
    }
    return molecules;
}

} // namespace vexcli

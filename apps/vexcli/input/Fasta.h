#pragma once

#include <QHash>
#include <QJsonArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

#include <vex/ChemicalFormula.h>
#include <vex/MolecularFormula.h>
#include <vex/Result.h>

#include "input/Input.h"

namespace vexcli {

/// Residues that stand for more than one composition, or whose atoms the table does not hold.
struct OddResidue
{
    char code = 0; // as a capital
    qint64 count = 0; // places in the sequence
    QString text; // what is the matter with its mass and pattern
    std::optional<double> missingAverageMass; // daltons, of all places; none where it is not known
    std::optional<double> missingMonoisotopicMass;
};

/// What JSON tells of them.
QJsonArray jsonOf(const QList<OddResidue> &residues);

/// Warns of odd residues: of the first sequences one by one, of the others together.
class OddResidueWarnings
{
public:
    void add(const QString &name, const QList<OddResidue> &residues);
    /// Says how many others there were. @param codes  such as "B, X or Z"
    void finish(QLatin1StringView codes) const;

private:
    qsizetype m_count = 0; // sequences with odd residues
};

/// One record of a FASTA file, summed up.
struct Protein
{
    QString name; // first word behind '>'
    qint64 length = 0; // residues
    std::array<qint64, 5> atoms{}; // C, H, N, O, S; residues and one water
    std::array<qint64, 26> places{}; // by letter
    QChar first; // residue
    QChar last;

    qint64 placesOf(char residue) const { return places[std::size_t(residue - 'A')]; }
    /// A short chain of the same kinds of residues, between the same ends.
    QString kinds() const;
};

/// All atoms of a protein, selenium included. Fails when it has too many.
vex::Result<vex::ChemicalFormula> exactFormulaOf(const Protein &protein);

/// The composition of a protein for average models: without selenium.
vex::MolecularFormula formulaOf(const Protein &protein);

/// Atom counts by type; what formulaOf() is made of.
QHash<vex::MolecularFormula::AtomType, double> countsOf(const Protein &protein);

/// The composition as text, such as C378H629N105O118S; elements with a count of 0 are left out.
QString formulaText(const Protein &protein);

/// What a reader must know of the residues that are not what they seem.
/// @param isSeleniumCounted  as by exactFormulaOf(): U is no odd residue then
QList<OddResidue> oddResiduesOf(const Protein &protein, bool isSeleniumCounted);

/// Reads @p path and sums the residues of every record by the library's table.
///
/// A sequence is written in capitals, or all in small letters, or in capitals with masked stretches
/// of small letters; fewer than four small letters among capitals are somebody's modification, and
/// an error. Any character that is no residue is an error with line and column. Memory grows with
/// the number of records, not with their length.
vex::Result<QList<Protein>> readFasta(const QString &path, BadRecords *bad);

} // namespace vexcli

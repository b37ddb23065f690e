#pragma once

#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

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

/// One record of a FASTA file, summed up.
struct Protein
{
    QString name; // first word behind '>'
    qint64 length = 0; // residues
    std::array<qint64, 5> atoms{}; // C, H, N, O, S; residues and one water
    QMap<char, qint64> odd; // places of B, U, X and Z
};

/// The composition of a protein.
vex::MolecularFormula formulaOf(const Protein &protein);

/// Atom counts by type; what formulaOf() is made of.
QHash<vex::MolecularFormula::AtomType, double> countsOf(const Protein &protein);

/// The composition as text, such as C378H629N105O118S; elements with a count of 0 are left out.
QString formulaText(const Protein &protein);

/// What a reader must know of the residues that are not what they seem.
QList<OddResidue> oddResiduesOf(const Protein &protein);

/// Reads @p path and sums the residues of every record by the library's table.
///
/// A sequence is written in capitals, or all in small letters, or in capitals with masked stretches
/// of small letters; fewer than four small letters among capitals are somebody's modification, and
/// an error. Any character that is no residue is an error with line and column. Memory grows with
/// the number of records, not with their length.
vex::Result<QList<Protein>> readFasta(const QString &path, BadRecords *bad);

} // namespace vexcli

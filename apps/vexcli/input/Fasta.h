#pragma once

#include <QList>
#include <QString>

#include <array>

#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vexcli {

/// One record of a FASTA file, summed up.
struct Protein
{
    QString name; // first word behind '>'
    qint64 length = 0; // residues
    std::array<qint64, 5> atoms{}; // C, H, N, O, S; residues and one water
};

/// The composition of a protein.
vex::MolecularFormula formulaOf(const Protein &protein);

/// The composition as text, such as C378H629N105O118S; elements with a count of 0 are left out.
QString formulaText(const Protein &protein);

/// Reads @p path and sums the residues of every record by the library's table.
///
/// Lower-case letters count as their capitals. B, Z, X and U are taken as the table has them and
/// named in a warning of the result. Any other character is an error with line and column. Memory
/// grows with the number of records, not with their length.
vex::Result<QList<Protein>> readFasta(const QString &path);

} // namespace vexcli

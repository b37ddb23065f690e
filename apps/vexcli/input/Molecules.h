#pragma once

#include <QList>
#include <QString>

#include <vex/ChemicalFormula.h>
#include <vex/Result.h>

#include "input/Fasta.h"

namespace vexcli {

class CommandLine;

/// A molecule whose atoms are counted.
struct Molecule
{
    QString name;
    vex::ChemicalFormula formula; // with the charge that it was written with
    double massShift = 0.0; // daltons, of modifications that are known by their mass alone
    bool hasMassShift = false;
    double weight = 1.0; // amount of substance in a mixture, of any unit
    bool isWeighted = false; // the weight was given
    qint64 residueCount = 0; // 0 for what is no sequence
    qint64 cysteineCount = 0;
    QString residues; // each kind of them, between the first and the last
    QList<OddResidue> odd;

    double averageMass() const { return formula.averageMass() + massShift; }
    double monoisotopicMass() const { return formula.monoisotopicMass() + massShift; }
};

/// Adds --molecule, --sequence and what changes them.
void addMoleculeOptions(CommandLine *commandLine);

/// The options that go with counted atoms only.
QStringList moleculeOptions();

/// The molecules of --molecule, --sequence and --fasta, in this order, as --join, --disulfides and
/// --modify make them. What is odd about them is warned of.
vex::Result<QList<Molecule>> readMolecules(const CommandLine &commandLine, BadRecords *bad);

/// The records of --fasta that --only asks for, or all.
vex::Result<QList<Protein>> readProteins(const CommandLine &commandLine, BadRecords *bad);

} // namespace vexcli

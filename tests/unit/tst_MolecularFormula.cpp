#include "Patterns.h"

#include <vex/MolecularMass.h>
#include <vex/ResidueCompositions.h>

#include <QTest>

#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;
using namespace vex;
using test::Counts;
using test::formulaOf;
using enum MolecularFormula::AtomType;

namespace {

Counts countsOf(const MolecularFormula &formula)
{
    Counts counts{{Reserved, 99.0}};
    formula.molecularFormula(&counts);
    return counts;
}

} // namespace

class TestMolecularFormula : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void setKeepsTheOthers()
    {
        MolecularFormula formula;
        Counts expected{{C, 0}, {H, 0}, {O, 0}, {N, 0}, {S, 0}, {P, 0}, {Na, 0}, {Reserved, 0}};
        QCOMPARE(countsOf(formula), expected);
        formula.setMolecularFormula({{C, 5.0}, {H, 1.0}});
        formula.setMolecularFormula({{H, 2.0}});
        expected[C] = 5.0;
        expected[H] = 2.0;
        QCOMPARE(countsOf(formula), expected);
        formula.clear();
        QCOMPARE(countsOf(formula), Counts());
        formula.setMolecularFormula({{Na, 0.5}});
        QCOMPARE(countsOf(formula), (Counts{{Na, 0.5}}));
    }

    void fractionsReplaceWhatTheHashHeld()
    {
        MolecularFormula formula = formulaOf({{C, 1.0}, {H, 3.0}});
        Counts fractions{{static_cast<MolecularFormula::AtomType>(17), 1.0}};
        QVERIFY(!formula.normalizedMolecularFormula(&fractions).hasError());
        QCOMPARE(fractions,
            (Counts{{C, 0.25}, {H, 0.75}, {O, 0}, {N, 0}, {S, 0}, {P, 0}, {Na, 0}, {Reserved, 0}}));
        MolecularFormula cleared;
        cleared.clear();
        for (MolecularFormula none : {MolecularFormula(), cleared}) {
            QVERIFY(!none.normalizedMolecularFormula(&fractions).hasError());
            QCOMPARE(fractions.size(), MolecularFormula::kAtomTypeCount);
            for (const double fraction : std::as_const(fractions))
                QVERIFY(std::isnan(fraction));
        }
    }

    void masses()
    {
        // Summed by hand: atomic mass evaluation of 2003, standard atomic weights of 2007.
        const std::tuple<Counts, double, double> published[] = {
            {Counts{{H, 2}, {O, 1}}, 18.0105647, 18.01528},
            {Counts{{C, 6}, {H, 12}, {O, 6}}, 180.0633881, 180.15588},
            {Counts{{Na, 2}, {H, 1}, {P, 1}, {O, 4}}, 141.9407841, 141.95884},
            {Counts{{C, 257}, {H, 383}, {N, 65}, {O, 77}, {S, 6}}, 5803.6376504, 5807.57022}};
        for (const auto &[counts, monoisotopic, average] : published) {
            const MolecularFormula formula = formulaOf(counts);
            const double atoms = std::accumulate(counts.cbegin(), counts.cend(), 0.0);
            double sum = 1.0; // is added to
            std::ignore = MolecularFormula().sumOfValuesInMolecularFormulaMap(counts, &sum);
            QCOMPARE(sum, 1.0 + atoms);
            // The table has seven decimals and differs from the published masses by up to 5e-7.
            QVERIFY(std::fabs(MolecularMass::monoisotopic(formula) - monoisotopic) <= 5e-7 * atoms);
            // The atomic weights have four decimals; natural variation moves the last one.
            QVERIFY(std::fabs(MolecularMass::average(formula) - average) <= 1e-4 * atoms);
        }
    }

    void residues()
    {
        // Published monoisotopic residue masses, five decimals.
        const QString published = uR"(
G:57.02146 A:71.03711 S:87.03203 P:97.05276 V:99.06841 T:101.04768 C:103.00919 L:113.08406
I:113.08406 N:114.04293 B:114.04293 D:115.02694 Q:128.05858 Z:128.05858 K:128.09496 E:129.04259
M:131.04049 H:137.05891 F:147.06841 R:156.10111 Y:163.06333 W:186.07931 1:18.01056 2:1.00783 3:12.0
)"_s.simplified();
        for (const QString &row : published.split(u' ')) {
            const auto *const atoms = ResidueCompositions::find(row.first(1).toStdString());
            QVERIFY2(atoms, qPrintable(row));
            const auto &[c, h, n, o, s] = *atoms;
            const MolecularFormula residue = formulaOf({{C, c}, {H, h}, {N, n}, {O, o}, {S, s}});
            const double mass = row.sliced(2).toDouble();
            QVERIFY2(
                std::fabs(MolecularMass::monoisotopic(residue) - mass) < 1.5e-5, qPrintable(row));
        }
        using Atoms = ResidueCompositions::AtomCounts;
        QCOMPARE(*ResidueCompositions::find("U"), (Atoms{3, 5, 1, 1, 0})); // no selenium
        QCOMPARE(*ResidueCompositions::find("X"), (Atoms{6, 10, 1, 1, 0}));
        for (const char *unknown : {"", "g", "J", "GA", " G", "4"})
            QVERIFY2(!ResidueCompositions::find(unknown), unknown);
    }
};

QTEST_APPLESS_MAIN(TestMolecularFormula)
#include "tst_MolecularFormula.moc"

#include "ErrorTrace.h"

#include <QTest>

#include <vex/ModifiedSequence.h>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace vex;
using test::ErrorReport;
using test::reportOf;

namespace {

ChemicalFormula formulaOf(const QString &text)
{
    return ChemicalFormula::read(text).value();
}

/// Rows of texts with what is said of them: of what is refused the message behind the text, of all
/// else @p shownOf it and its warnings.
template <typename Value, typename Shown>
void compareRows(QString rows, Shown shownOf)
{
    rows.replace("UNKNOWN"_L1,
        "which is none of the 50 modifications that are known; give its atoms as [Formula:C2H2O] "
        "or its mass as [+42.0106]"_L1);
    for (const QString &row : rows.sliced(1).chopped(1).split(u'\n')) {
        const QString text = row.section(u" | "_s, 0, 0);
        const auto result = Value::read(text);
        const QString shown = result.hasError()
            ? result.error().message()
            : (QStringList{shownOf(result.value())} + result.warnings()).join(u"; ");
        const bool isQuoted = result.hasError() && !text.isEmpty();
        QCOMPARE(shown, (isQuoted ? u"'%1' "_s.arg(text) : QString()) + row.section(u" | "_s, 1));
    }
}

} // namespace

class TestModifiedSequence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Residue masses as mass spectrometrists know them, for sequences that nothing else checks.
    void masses()
    {
        const std::pair<QString, double> table[] = {{u"ACDEFGHIKLMNPQRSTVWY"_s, 2394.12490},
            {u"GJ"_s, 188.11609}, {u"EM[Oxidation]EVEES[UNIMOD:21]PEK"_s, 1301.47341},
            {u"[Acetyl]-PEPTIDE"_s, 841.37052}, {u"U"_s, 168.96419}, {u"O"_s, 255.15830},
            {u"RPPGFSPFR"_s, 1059.56139}, {u"YGGFM-[Amidated]"_s, 572.24169}};
        for (const auto &[text, monoisotopic] : table) {
            const double mass = ModifiedSequence::read(text).value().formula().monoisotopicMass();
            QVERIFY2(std::fabs(mass - monoisotopic) < 2e-5, qPrintable(text));
        }
    }

    /// The masses that Unimod gives beside its compositions.
    void modifications()
    {
        const QStringList published = uR"(
1:42.010565 2:-0.984016 3:226.077598 4:57.021464 5:43.005814 6:58.005479 7:0.984016 21:79.966331
23:-18.010565 24:71.037114 26:39.994915 27:-18.010565 28:-17.026549 30:21.981943 34:14.01565
35:15.994915 36:28.0313 37:42.04695 39:45.987721 40:79.956815 41:162.052824 43:203.079373
44:204.187801 45:210.198366 46:229.014009 47:238.229666 48:272.250401 55:305.068156 58:56.026215
64:100.016044 108:125.047679 121:114.042927 122:27.994915 129:125.896648 188:6.020129 193:4.008491
214:144.102063 259:8.014199 267:10.008269 312:119.004099 345:47.984744 354:44.985078 374:-1.007825
385:-17.026549 390:616.177295 425:31.989829 530:37.955882 737:229.162932 747:86.000394
2016:304.207146
)"_s.simplified()
                                          .split(u' ');
        qsizetype i = 0;
        for (const Modifications::Modification &each : Modifications::all()) {
            const int number = published[i].section(u':', 0, 0).toInt();
            const double mass = published[i++].section(u':', 1).toDouble();
            QCOMPARE(each.unimodNumber, number);
            QVERIFY2(
                std::fabs(each.delta().monoisotopicMass() - mass) < 4e-6, qPrintable(each.name));
            QCOMPARE(Modifications::find(each.name.toString().toUpper()), &each);
            QCOMPARE(Modifications::find(number), &each);
        }
        QCOMPARE(i, 50);
        QVERIFY(!Modifications::find(u"Oxidatio") && !Modifications::find(0));
    }

    void sequences()
    {
        const auto shown = [](const ModifiedSequence &read) {
            const QString shift = u' ' + QString::number(read.massShiftDa(), 'g', 12);
            return read.residues() + u' ' + read.formula().hillText()
                + (read.hasMassShift() ? shift : QString());
        };
        compareRows<ModifiedSequence>(uR"(
M[oxidation][U:Methyl]K[UNIMOD:1] | MK C14H27N3O5S
[Acetyl][Formula:[13C2]C-2 O]-G-[Amidated] | G C2[13C]2H8N2O3
[TMT6plex]-K[+15.9949]A[u:-1.5][obs:+.25] | KA C17[13C]4H39N4[15N]O5 14.7449
RX[+367.0537]W[+0] | RXW C17H24N6O3 367.0537
A[Oxidation] | A C3H7NO3; A is not known to carry Oxidation (column 2)
G[Oxidation]G[Oxidation]-[Methyl] | GG C5H10N2O5; G is not known to carry Oxidation (column 2)
Q[Gln->pyro-Glu]Q[Gln->pyro-Glu] | QQ C10H12N2O5; Q is not known to carry Gln->pyro-Glu (column 18)
[Glu->pyro-Glu]-Q | Q C5H8N2O2; the N-terminus of Q is not known to carry Glu->pyro-Glu (column 1)
Q-[Phospho] | Q C5H11N2O6P; the C-terminus of Q is not known to carry Phospho (column 3)
G[Amidated][Oxidation] | G C2H6N2O2
 | the sequence is empty (column 1)
[Acetyl]- | has no residue (column 10)
[Acetyl]G | has no '-' behind the modification of the N-terminus (column 9)
[Phospho]?GS | has a modification at a place that is not known, which is not read (column 10)
G- | has no modification of the C-terminus behind '-' (column 3)
G-[Methyl]G | has 'G' where the sequence must end (column 11)
AB | has 'B', which stands for D or N; write which of them (column 2)
AX | has 'X' without its mass, which stands behind it, as X[+113.08] (column 2)
X[Oxidation] | gives 'X' no mass, as X[+113.08] has it (column 2)
A A | has a blank (column 2)
A* | has '*', which is no residue (column 2)
A𝐀 | has '𝐀', which is no residue (column 2)
AK/2 | has a charge, which is not read (column 3)
AK//A | has a second chain, which is not read (column 3)
<[Methyl]@K>AK | has a modification of the whole molecule, which is not read (column 1)
M[Oxidation | has no ']' for its '[' (column 2)
M[] | names no modification (column 3)
M[Oxydation] | has 'Oxydation', UNKNOWN (column 3)
M[UNIMOD:34567] | has '34567', UNKNOWN (column 10)
M[UNIMOD:Methyl] | has 'Methyl' where a number of Unimod must stand (column 10)
M[15.9949] | has '15.9949'; a mass has a sign, as [+15.9949] (column 3)
M[+1e3] | has '+1e3', which is no mass in daltons, as +15.9949 (column 3)
M[Obs:] | has '', which is no mass in daltons, as +15.9949 (column 7)
M[Obs:15] | has '15', which is no mass in daltons, as +15.9949 (column 7)
M[-2000000000] | has a mass of '-2000000000', which is too large (column 3)
M[MOD:00719] | has 'MOD:', and only names and numbers of Unimod are read (column 3)
C[Dehydro#XL1] | has a cross-link or a group, which is not read (column 10)
M[+1|Methyl] | has '|', and one modification is read from a bracket (column 5)
M[Formula:C2Hx] | has no element 'Hx' (column 13)
G[Formula:H-6] | is no molecule: there is not enough H, 6 of 5 would be taken away (column 1)
)"_s,
            shown);
        QCOMPARE(ModifiedSequence::read(u"Aox").error().message(),
            u"'Aox' has 'o'; residues are capitals, and a modification stands in brackets behind "
            "its residue, as M[Oxidation] (column 2)"_s);
        QCOMPARE(reportOf(ModifiedSequence::read(u"A A").error()).trace,
            QStringList{u"src/algo/ModifiedSequence:1"_s});
        const QString huge(1'000'000, u'G');
        QCOMPARE(shown(ModifiedSequence::read(huge).value()),
            huge + u" C2000000H3000002N1000000O1000001"_s);
        QCOMPARE(ModifiedSequence::read(huge.repeated(4)).error().message().section(u": "_s, 1),
            u"the number of H would be beyond 10000000 (column 1)"_s);
    }

    void compositions()
    {
        compareRows<DeltaComposition>(uR"(
C2H2O | C2H2O
 H-1 N-1O  | H-1N-1O
[13C6]C-6[2H] | C-6[13C6][2H]
[13C-2]H2H-3C0 | has a number that begins with 0 (column 14)
CC-1
 | the composition ends where an element must stand (column 1)
C- | ends where a number must stand (column 3)
c | has 'c' where an element must stand (column 1)
Tc | has the element 'Tc', which has no natural isotopes to weigh (column 1)
[C13] | has 'C' where a mass number must stand (column 2)
[15C] | has no isotope '15C' (column 2)
[13C6 | ends where ']' must stand (column 6)
H10000001 | has a number above 10000000 (column 2)
H9999999H2 | has more than 10000000 atoms of H (column 10)
)"_s,
            [](const DeltaComposition &read) { return read.text(); });

        const DeltaComposition sodium = DeltaComposition::read(u"Na", 1).value();
        QVERIFY(std::fabs(sodium.monoisotopicMass() - 22.98922070) < 1e-7);
        DeltaComposition sum = formulaOf(u"SO4^2-"_s);
        QVERIFY(!sum.add(sodium, 3).hasError());
        QCOMPARE(sum.text() + QString::number(sum.charge()), u"Na3O4S1"_s);
        QCOMPARE(reportOf(sum.add(sodium, -10'000'004)),
            (ErrorReport{GeneralFailure, u"the number of Na would be beyond 10000000"_s,
                {u"src/algo/DeltaComposition:2"_s}}));
        QCOMPARE(sum.text() + QString::number(sum.charge()), u"Na3O4S1"_s);
    }

    void sums()
    {
        const std::tuple<QString, QString, int, int, QString> table[] = {
            {u"C6H12O6"_s, u"Na"_s, 1, 2, u"C6H12Na2O6^2+"_s},
            {u"C6H12O6"_s, u"H-1"_s, -1, 1, u"C6H11O6^-"_s},
            {u"C6H11O6^-"_s, u"H"_s, 1, 1, u"C6H12O6"_s},
            {u"H2O"_s, u"H2O"_s, 0, -1, u"no atom would be left"_s},
            {u"CH4"_s, u"H-3"_s, 0, 2, u"there is not enough H, 6 of 4 would be taken away"_s},
            {u"CH4"_s, u"[2H-1]"_s, 0, 1,
                u"there is not enough [2H], 1 of 0 would be taken away"_s},
            {u"H9999999"_s, u"H2"_s, 0, 1, u"there would be more than 10000000 atoms of H"_s},
            {u"H^+"_s, u"H"_s, 2, 1, u"a charge of 3 would be beyond the electrons"_s}};
        for (const auto &[formula, delta, charge, times, expected] : table) {
            const auto result =
                formulaOf(formula).plus(DeltaComposition::read(delta, charge).value(), times);
            QCOMPARE(
                result.hasError() ? result.error().message() : result.value().hillText(), expected);
        }
        QCOMPARE(formulaOf(u"C2H3[13C]Br"_s).nominalMass(), 119); // 24 + 3 + 13 + 79
        QCOMPARE(formulaOf(u"SnSe"_s).nominalMass(), 200); // 120 + 80
        const auto fits = [](QStringView name, QStringView chain = u"GKN") {
            return Modifications::find(name)->fits(chain);
        };
        QVERIFY(fits(u"Myristoyl") && fits(u"Acetyl") && fits(u"Amidated") && fits(u"Phospho"));
        QVERIFY(fits(u"Dehydrated") && !fits(u"Dehydrated", u"NKG") && !fits(u"Acetyl", u""));
        QVERIFY(!fits(u"Iodo") && !fits(u"Gln->pyro-Glu"));
    }
};

QTEST_APPLESS_MAIN(TestModifiedSequence)
#include "tst_ModifiedSequence.moc"

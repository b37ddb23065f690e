#include <vex/ChemicalFormula.h>

#include "ErrorTrace.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;

class TestChemicalFormula : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    /// Each text in Hill order with its charge, which must read back as the same.
    void texts()
    {
        const QString table = uR"(
C6H12O6=C6H12O6 HOCH2CH2OH=C2H6O2 HBr=BrH CHBrClI=CHBrClI C1H10000000=CH10000000 Co2CO2=CCo2O2
Ca3(PO4)2=Ca3O8P2 [Co(NH3)6]Cl3=Cl3CoH18N6 {[(CH3)2CH]2N}3=C18H42N3 ((((H))2)3)4=H24
CuSO4.5H2O=CuH10O9S CuSO4.5D2O=Cu[2H]10O9S Na2CO3*10H2O=CH20Na2O13 3CaO·Al2O3=Al2Ca3O6
C6H6.HCl=C6H7Cl AlCl3.6H2O.2H2O=AlCl3H16O8 FeO(OH).2H2O=FeH5O4 C2*3C2=C8 [13C]6H12O6=[13C]6H12O6
[13C]C5H6=C5[13C]H6 D2O=[2H]2O [2H]=[2H] HT[14C]N=[14C]H[3H]N [[13C]H3]2[12C]=[12C][13C]2H6
[235U]F6=F6[235U] Na+=Na^+ Ca++=Ca^2+ Cl-=Cl^- Fe^3+=Fe^3+ SO4(2-)=O4S^2- SO4^2-=O4S^2- SO4--=O4S^2-
SO4(--)=O4S^2- [SO4]2-=O4S^2- [Co(NH3)6]3+=CoH18N6^3+ [SO4]2^-=O8S2^- NH4+=H4N^+ NO3-=NO3^-
Al(OH)4-=AlH4O4^- Hg2++=Hg2^2+ C60^-=C60^- C10H16^12+=C10H16^12+ SO4^2−=O4S^2- [2H]+=[2H]^+ H(+)=H^+
CuSO4.5H2O^-=CuH10O9S^- H₂O=H2O SO₄²⁻=O4S^2- NH₄⁺=H4N^+ C₁₀H₂₀=C10H20 Hg₂²⁺=Hg2^2+ Na₂+=Na2^+
SO₄2-=O4S^2- CuSO₄.5H₂O=CuH10O9S CuSO4.5H₂O=CuH10O9S CuSO4.5D₂O=Cu[2H]10O9S
)"_s.simplified();
        for (const QString &row : table.split(u' ')) {
            const QString text = row.section(u'=', 0, 0);
            const QString hill = row.section(u'=', 1);
            const auto result = ChemicalFormula::read(text);
            QVERIFY2(
                result.hasValue(), qPrintable(result.hasError() ? result.error().message() : text));
            QCOMPARE(result.value().hillText(), hill);
            QCOMPARE(ChemicalFormula::read(hill).valueOr({}).hillText(), hill);
            const QString charge = hill.section(u'^', 1);
            const int size = std::max(1, charge.chopped(!charge.isEmpty()).toInt());
            QCOMPARE(result.value().charge(),
                charge.isEmpty()            ? 0
                    : charge.endsWith(u'+') ? size
                                            : -size);
        }
    }

    /// § stands for a blank that does not break; the C of "Сl" is a Cyrillic one.
    void refusals()
    {
        const auto rows = uR"(
 | the formula is empty (1)
C6H12Xy | has no element 'Xy' (6)
NACL | has no element 'A', perhaps Na is meant (2)
MGO | has no element 'M', perhaps Mg is meant (1)
Nacl | has no element 'Nacl' (1)
C2h6 | has 'h' where an element begins, with a capital letter (3)
KTcO4 | has the element 'Tc', which has no natural isotopes to weigh (2)
Сl | has 'С' where it cannot stand (1)
C6 H12 | has a blank (3)
C§ | has a blank (2)
C%1 | has '%' where it cannot stand (2)
C𝒞 | has '𝒞' where it cannot stand (2)
C<U+0000>H | has '<U+0000>' where it cannot stand (2)
C<U+000A> | has a blank (2)
C₂3 | ends too early (4)
C3₂ | has '₂' where it cannot stand (3)
C² | ends too early (3)
C([H]2 | has no ')' for its '(' (2)
CH3) | has ')' without its beginning (4)
(CH3] | has ']' where ')' must close the group of column 1 (5)
C() | has an empty group (2)
(H+)2 | has '+' where it cannot stand (3)
(2H) | has '(' where it cannot stand (1)
C0 | has the number 0 (2)
C012 | has a number with a leading zero (2)
C10000001 | has a number above 10000000 (2)
(C5000H)2001 | has more than 10000000 atoms of C (9)
C*10000000C | has more than 10000000 atoms of C (3)
2H2O | begins with a number, which belongs behind a group (1)
C. | ends too early (3)
.C | has '.' where it cannot stand (1)
C1.5H3 | has a point between digits, write '*' if it joins two parts (3)
CuSO4.5H2O2 | has a point between digits, write '*' if it joins two parts (6)
[15C] | has no isotope '15C', of C there are 12, 13, 14 (2)
[13C6] | has '6' where ']' must close the isotope (5)
[13C | has no ']' for its '[' (1)
[13 | ends too early (4)
[2D] | has a mass number in front of an isotope (3)
SO42- | does not tell a count from a charge, write SO4^2- or SO42^- (3)
Ca2+ | does not tell a count from a charge, write Ca^2+ or Ca2^+ (3)
(SO4)2- | does not tell a count from a charge, write (SO4)^2- or (SO4)2^- (6)
K[PtCl6]2- | does not tell a count from a charge, write K[PtCl6]^2- or K[PtCl6]2^- (9)
[13C]2- | does not tell a count from a charge, write [13C]^2- or [13C]2^- (6)
H2O*Ca2− | does not tell a count from a charge, write H2O*Ca^2- or H2O*Ca2^- (7)
Ca2+3 | goes on behind its charge (5)
Na+- | goes on behind its charge (4)
Ca^ | ends too early (4)
Ca(2) | has ')' where it cannot stand (5)
Ca(2+ | ends too early (6)
Ca^2++ | goes on behind its charge (6)
+ | has '+' where it cannot stand (1)
Na^⁺ | has '⁺' where it cannot stand (4)
H^2+ | has a charge beyond its electrons (2)
)"_s.replace(u'§', u'\u00A0');
        for (const QString &row : rows.sliced(1).chopped(1).split(u'\n')) {
            const QString shown = row.section(u" | "_s, 0, 0);
            const QString text = QString(shown)
                                     .replace(u"<U+0000>"_s, QString(QChar()))
                                     .replace(u"<U+000A>"_s, u"\n"_s);
            QString message = row.section(u" | "_s, 1);
            message.replace(message.lastIndexOf(u'('), 1, u"(column "_s);
            if (!text.isEmpty())
                message.prepend(u"'%1' "_s.arg(shown));
            const auto result = ChemicalFormula::read(text);
            QVERIFY2(result.hasError(), qPrintable(text));
            QCOMPARE(test::reportOf(result.error()),
                (ErrorReport{GeneralFailure, message, {u"src/algo/ChemicalFormula:1"_s}}));
        }
        QCOMPARE(ChemicalFormula::read(QString(41, u'C') + u'%').error().message(),
            u'\'' + QString(40, u'C') + u"…' has '%' where it cannot stand (column 42)"_s);
    }

    /// Sums of published masses made with exact fractions. The three proteins are those of
    /// docs/constants.md.
    void masses()
    {
        const QString table = uR"(
NH4+:18.0338256:18.0379176 H+:1.0072765:1.0073922 CuSO4.5H2O:248.9341502:249.6848787
SO4^2-:95.9528268:96.0635043 [13C]6H12O6:186.0835171:186.1118476 D2O:20.0231182:20.0276085
Hg2++:403.9401900:401.1837039 [14C]T4:26.0674391:26.0674391
C257H383N65O77S6:5803.6376502:5807.5790465 C2934H4615N781O897S39:66389.8625088:66432.3738331
C6470H10012N1726O2013S42:145440.2400686:145530.0570039
)"_s.simplified();
        for (const QString &row : table.split(u' ')) {
            const QStringList cells = row.split(u':');
            const ChemicalFormula formula = ChemicalFormula::read(cells[0]).valueOr({});
            const double monoisotopic = formula.monoisotopicMass();
            QVERIFY2(std::fabs(monoisotopic - cells[1].toDouble()) < 2e-7, qPrintable(row));
            QVERIFY2(
                std::fabs(formula.averageMass() - cells[2].toDouble()) < 2e-7, qPrintable(row));
        }
    }

    /// Whatever the text: one line with a column in it, or a formula that reads back.
    void randomTexts()
    {
        const QList<QStringView> pieces{u"C", u"H", u"O", u"Na", u"Xy", u"D", u"[13C]", u"[", u"]",
            u"(", u")", u"{", u"}", u"+", u"-", u"^", u".", u"*", u"2", u"0", u"13", u"99999999",
            u"₂", u"²", u"⁻", u"·", u" ", u"%1", u"\xD835", u"\n", QStringView(u"\0", 1)};
        const QRegularExpression line(u"^.+ \\(column ([0-9]+)\\)$"_s);
        QRandomGenerator random(20240612);
        int good = 0;
        for (int round = 0; round < 20000; ++round) {
            QString text;
            for (quint32 length = random.bounded(9U); length > 0; --length)
                text += pieces[random.bounded(pieces.size())];
            const auto result = ChemicalFormula::read(text);
            if (result.hasValue()) {
                const QString hill = result.value().hillText();
                QCOMPARE(ChemicalFormula::read(hill).valueOr({}).hillText(), hill);
                ++good;
                continue;
            }
            const auto match = line.match(result.error().message());
            const int column = match.captured(1).toInt();
            QVERIFY2(
                column >= 1 && column <= text.size() + 1, qPrintable(result.error().message()));
        }
        QVERIFY2(good > 500, qPrintable(QString::number(good)));
    }

    void hugeTexts()
    {
        constexpr qsizetype kSize = 1'000'000;
        const auto hillOf = [](const QString &text) {
            return ChemicalFormula::read(text).valueOr({}).hillText();
        };
        const auto refusal = [](const QString &text) {
            const auto result = ChemicalFormula::read(text);
            return result.hasError() ? result.error().message().section(u"…' "_s, 1) : u"none"_s;
        };
        const auto nested = [](int depth) {
            return QString(depth, u'(') + u'H' + QString(depth, u')');
        };
        QCOMPARE(hillOf(nested(100)), u"H"_s);
        QCOMPARE(refusal(nested(101)), u"has groups more than 100 deep (column 101)"_s);
        QCOMPARE(
            refusal(u'C' + QString(10 * kSize, u'9')), u"has a number above 10000000 (column 2)"_s);
        QCOMPARE(refusal(u"HC"_s + QString(kSize, u'9') + u'+').section(u',', 0, 0),
            u"does not tell a count from a charge"_s);
        QCOMPARE(hillOf(u"(HO)4"_s.repeated(kSize / 4)), u"H1000000O1000000"_s);
    }
};

QTEST_APPLESS_MAIN(TestChemicalFormula)
#include "tst_ChemicalFormula.moc"

#include <vex/ChemicalFormula.h>

#include "ErrorTrace.h"

#include <QMap>
#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;

namespace {

using Counts = QMap<QString, qint64>;

/// The counts by label; empty for what is refused.
Counts countsOf(const QString &text)
{
    Counts counts;
    const ChemicalFormula formula = ChemicalFormula::read(text).valueOr({});
    for (const auto &atoms : formula.atoms())
        counts.insert(atoms.label(), atoms.count);
    return counts;
}

/// Writes a random formula with groups, and adds its atoms @p factor times to @p counts.
QString written(QRandomGenerator *random, int depth, qint64 factor, Counts *counts)
{
    static const QStringList symbols{
        u"C"_s, u"H"_s, u"O"_s, u"N"_s, u"Co"_s, u"S"_s, u"Sn"_s, u"[13C]"_s, u"[2H]"_s};
    static const QStringList brackets{u"()"_s, u"[]"_s, u"{}"_s};
    QString text;
    for (quint32 units = 1 + random->bounded(3U); units > 0; --units) {
        const int count = random->bounded(3) == 0 ? 1 : 1 + random->bounded(20);
        const QString suffix = count > 1 ? QString::number(count) : QString();
        if (depth > 0 && random->bounded(3) == 0) {
            const QString &pair = brackets[random->bounded(3)];
            const QString inner = written(random, depth - 1, factor * count, counts);
            // an isotope first would not do behind '['
            text += pair[0] + u'O' + inner + pair[1] + suffix;
            (*counts)[u"O"_s] += factor * count;
        } else {
            const QString &symbol = symbols[random->bounded(symbols.size())];
            text += symbol + suffix;
            (*counts)[symbol] += factor * count;
        }
    }
    return text;
}

} // namespace

class TestChemicalFormula : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    /// Each text in Hill order with its charge, which must read back as the same.
    void texts()
    {
        const std::pair<QString, QString> table[] = {{u"C6H12O6"_s, u"C6H12O6"_s},
            {u"HOCH2CH2OH"_s, u"C2H6O2"_s}, {u"HBr"_s, u"BrH"_s}, {u"CHBrClI"_s, u"CHBrClI"_s},
            {u"C1H10000000"_s, u"CH10000000"_s}, {u"Co2CO2"_s, u"CCo2O2"_s},
            // groups
            {u"Ca3(PO4)2"_s, u"Ca3O8P2"_s}, {u"[Co(NH3)6]Cl3"_s, u"Cl3CoH18N6"_s},
            {u"{[(CH3)2CH]2N}3"_s, u"C18H42N3"_s}, {u"((((H))2)3)4"_s, u"H24"_s},
            // parts
            {u"CuSO4.5H2O"_s, u"CuH10O9S"_s}, {u"CuSO4.5D2O"_s, u"Cu[2H]10O9S"_s},
            {u"Na2CO3*10H2O"_s, u"CH20Na2O13"_s}, {u"3CaO\u00B7Al2O3"_s, u"Al2Ca3O6"_s},
            {u"C6H6.HCl"_s, u"C6H7Cl"_s}, {u"AlCl3.6H2O.2H2O"_s, u"AlCl3H16O8"_s},
            {u"FeO(OH).2H2O"_s, u"FeH5O4"_s}, {u"C2*3C2"_s, u"C8"_s},
            // isotopes
            {u"[13C]6H12O6"_s, u"[13C]6H12O6"_s}, {u"[13C]C5H6"_s, u"C5[13C]H6"_s},
            {u"D2O"_s, u"[2H]2O"_s}, {u"[2H]"_s, u"[2H]"_s}, {u"HT[14C]N"_s, u"[14C]H[3H]N"_s},
            {u"[[13C]H3]2[12C]"_s, u"[12C][13C]2H6"_s}, {u"[235U]F6"_s, u"F6[235U]"_s},
            // charges
            {u"Na+"_s, u"Na^+"_s}, {u"Ca++"_s, u"Ca^2+"_s}, {u"Cl-"_s, u"Cl^-"_s},
            {u"Fe^3+"_s, u"Fe^3+"_s}, {u"SO4(2-)"_s, u"O4S^2-"_s}, {u"SO4^2-"_s, u"O4S^2-"_s},
            {u"SO4--"_s, u"O4S^2-"_s}, {u"SO4(--)"_s, u"O4S^2-"_s}, {u"[SO4]2-"_s, u"O4S^2-"_s},
            {u"[Co(NH3)6]3+"_s, u"CoH18N6^3+"_s}, {u"[SO4]2^-"_s, u"O8S2^-"_s},
            {u"NH4+"_s, u"H4N^+"_s}, {u"NO3-"_s, u"NO3^-"_s}, {u"Al(OH)4-"_s, u"AlH4O4^-"_s},
            {u"Hg2++"_s, u"Hg2^2+"_s}, {u"C60^-"_s, u"C60^-"_s}, {u"C10H16^12+"_s, u"C10H16^12+"_s},
            {u"SO4^2\u2212"_s, u"O4S^2-"_s}, {u"[2H]+"_s, u"[2H]^+"_s}, {u"H(+)"_s, u"H^+"_s},
            {u"CuSO4.5H2O^-"_s, u"CuH10O9S^-"_s},
            // digits of Unicode
            {u"H₂O"_s, u"H2O"_s}, {u"SO₄²⁻"_s, u"O4S^2-"_s}, {u"NH₄⁺"_s, u"H4N^+"_s},
            {u"C₁₀H₂₀"_s, u"C10H20"_s}, {u"Hg₂²⁺"_s, u"Hg2^2+"_s}, {u"Na₂+"_s, u"Na2^+"_s},
            {u"SO₄2-"_s, u"O4S^2-"_s}, {u"CuSO₄.5H₂O"_s, u"CuH10O9S"_s},
            {u"CuSO4.5H₂O"_s, u"CuH10O9S"_s}, {u"CuSO4.5D₂O"_s, u"Cu[2H]10O9S"_s}};
        for (const auto &[text, hill] : table) {
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

    void refusals()
    {
        const std::pair<QString, QString> table[] = {{u""_s, u"the formula is empty (1)"_s},
            // elements
            {u"C6H12Xy"_s, u"has no element 'Xy' (6)"_s},
            {u"NACL"_s, u"has no element 'A', perhaps Na is meant (2)"_s},
            {u"MGO"_s, u"has no element 'M', perhaps Mg is meant (1)"_s},
            {u"QX"_s, u"has no element 'Q' (1)"_s},
            {u"Hydrogen"_s, u"has no element 'Hydrogen' (1)"_s},
            {u"HNa+cl"_s, u"goes on behind its charge (5)"_s},
            {u"Nacl"_s, u"has no element 'Nacl' (1)"_s},
            {u"cl"_s, u"has 'c' where an element begins, with a capital letter (1)"_s},
            {u"C2h6"_s, u"has 'h' where an element begins, with a capital letter (3)"_s},
            {u"KTcO4"_s, u"has the element 'Tc', which has no natural isotopes to weigh (2)"_s},
            {u"Сl"_s, u"has 'С' where it cannot stand (1)"_s}, // Cyrillic
            // what is no part of a formula
            {u"C6 H12"_s, u"has a blank (3)"_s}, {u"C\u00A0"_s, u"has a blank (2)"_s},
            {u"C%1"_s, u"has '%' where it cannot stand (2)"_s},
            {u"C\U0001D49E"_s, u"has '\U0001D49E' where it cannot stand (2)"_s},
            {u"C\0H"_s, u"has '<U+0000>' where it cannot stand (2)"_s},
            {u"C\n"_s, u"has a blank (2)"_s}, {u"C₂3"_s, u"ends too early (4)"_s},
            {u"C3₂"_s, u"has '₂' where it cannot stand (3)"_s}, {u"C²"_s, u"ends too early (3)"_s},
            // groups
            {u"(CH3"_s, u"has no ')' for its '(' (1)"_s},
            {u"C([H]2"_s, u"has no ')' for its '(' (2)"_s},
            {u"CH3)"_s, u"has ')' without its beginning (4)"_s},
            {u"(CH3]"_s, u"has ']' where ')' must close the group of column 1 (5)"_s},
            {u"C()"_s, u"has an empty group (2)"_s}, {u"[]2"_s, u"has an empty group (1)"_s},
            {u"(H.O)2"_s, u"has '.' where it cannot stand (3)"_s},
            {u"(H+)2"_s, u"has '+' where it cannot stand (3)"_s},
            {u"(2H)"_s, u"has '(' where it cannot stand (1)"_s},
            // numbers
            {u"C0"_s, u"has the number 0 (2)"_s},
            {u"C012"_s, u"has a number with a leading zero (2)"_s},
            {u"C10000001"_s, u"has a number above 10000000 (2)"_s},
            {u"(C5000H)2001"_s, u"has more than 10000000 atoms of C (9)"_s},
            {u"C10000000HC"_s, u"has more than 10000000 atoms of C (12)"_s},
            {u"C*10000000C"_s, u"has more than 10000000 atoms of C (3)"_s},
            {u"2H2O"_s, u"begins with a number, which belongs behind a group (1)"_s},
            // parts
            {u"C."_s, u"ends too early (3)"_s}, {u".C"_s, u"has '.' where it cannot stand (1)"_s},
            {u"C**H"_s, u"has '*' where it cannot stand (3)"_s},
            {u"C*5"_s, u"ends too early (4)"_s},
            {u"C*05H"_s, u"has a number with a leading zero (3)"_s},
            {u"C1.5H3"_s, u"has a point between digits, write '*' if it joins two parts (3)"_s},
            {u"CuSO4.5H2O2"_s,
                u"has a point between digits, write '*' if it joins two parts (6)"_s},
            // isotopes
            {u"[15C]"_s, u"has no isotope '15C', of C there are 12, 13, 14 (2)"_s},
            {u"[13C6]"_s, u"has '6' where ']' must close the isotope (5)"_s},
            {u"[13C"_s, u"has no ']' for its '[' (1)"_s}, {u"[13"_s, u"ends too early (4)"_s},
            {u"[013C]"_s, u"has a number with a leading zero (2)"_s},
            {u"[2D]"_s, u"has a mass number in front of an isotope (3)"_s},
            {u"[13Xy]"_s, u"has no element 'Xy' (4)"_s},
            // charges
            {u"SO42-"_s, u"does not tell a count from a charge, write SO4^2- or SO42^- (3)"_s},
            {u"Ca2+"_s, u"does not tell a count from a charge, write Ca^2+ or Ca2^+ (3)"_s},
            {u"(SO4)2-"_s,
                u"does not tell a count from a charge, write (SO4)^2- or (SO4)2^- (6)"_s},
            {u"K[PtCl6]2-"_s,
                u"does not tell a count from a charge, write K[PtCl6]^2- or K[PtCl6]2^- (9)"_s},
            {u"[13C]2-"_s,
                u"does not tell a count from a charge, write [13C]^2- or [13C]2^- (6)"_s},
            {u"H2O*Ca2\u2212"_s,
                u"does not tell a count from a charge, write H2O*Ca^2- or H2O*Ca2^- (7)"_s},
            {u"Ca2+3"_s, u"goes on behind its charge (5)"_s},
            {u"Ca+2"_s, u"goes on behind its charge (4)"_s},
            {u"Na+-"_s, u"goes on behind its charge (4)"_s},
            {u"Na+Cl-"_s, u"goes on behind its charge (4)"_s}, {u"Ca^"_s, u"ends too early (4)"_s},
            {u"Ca^2"_s, u"ends too early (5)"_s}, {u"Ca^0+"_s, u"has the number 0 (4)"_s},
            {u"Ca(2)"_s, u"has ')' where it cannot stand (5)"_s},
            {u"Ca(2+"_s, u"ends too early (6)"_s},
            {u"Ca^2++"_s, u"goes on behind its charge (6)"_s},
            {u"+"_s, u"has '+' where it cannot stand (1)"_s},
            {u"Na^⁺"_s, u"has '⁺' where it cannot stand (4)"_s},
            {u"H^2+"_s, u"has a charge beyond its electrons (2)"_s},
            // long texts are cut
            {QString(41, u'C') + u'%',
                u'\'' + QString(40, u'C') + u"…' has '%' where it cannot stand (42)"_s}};
        for (const auto &[text, expected] : table) {
            const auto result = ChemicalFormula::read(text);
            QVERIFY2(result.hasError(), qPrintable(text));
            QString message = expected;
            message.replace(message.lastIndexOf(u'('), 1, u"(column "_s);
            if (!text.isEmpty() && text.size() <= 40)
                message.prepend(u"'%1' "_s.arg(QString(text)
                                                   .replace(QChar(), u"<U+0000>"_s)
                                                   .replace(u'\n', u"<U+000A>"_s)
                                                   .replace(u'\u00A0', u"\u00A0"_s)));
            QCOMPARE(test::reportOf(result.error()),
                (ErrorReport{GeneralFailure, message, {u"src/algo/ChemicalFormula:1"_s}}));
        }
    }

    /// Sums of published masses made with exact fractions. The three proteins are those of
    /// docs/constants.md.
    void masses()
    {
        struct Row
        {
            QString text;
            double monoisotopic;
            double average;
        };
        const Row table[] = {{u"C6H12O6"_s, 180.0633881, 180.1561340},
            {u"C8H10N4O2"_s, 194.0803756, 194.1909174}, {u"NH4+"_s, 18.0338256, 18.0379176},
            {u"H+"_s, 1.0072765, 1.0073922}, {u"CHCl3"_s, 117.9143831, 119.3774894},
            {u"CuSO4.5H2O"_s, 248.9341502, 249.6848787}, {u"SO4^2-"_s, 95.9528268, 96.0635043},
            {u"[13C]6H12O6"_s, 186.0835171, 186.1118476}, {u"D2O"_s, 20.0231182, 20.0276085},
            {u"Fe(C5H5)2"_s, 186.0131859, 186.0319101}, {u"C5H11NO2Se"_s, 196.9955004, 196.1182220},
            {u"Hg2++"_s, 403.9401900, 401.1837039}, {u"[14C]T4"_s, 26.0674391, 26.0674391},
            {u"C257H383N65O77S6"_s, 5803.6376502, 5807.5790465},
            {u"C2934H4615N781O897S39"_s, 66389.8625088, 66432.3738331},
            {u"C6470H10012N1726O2013S42"_s, 145440.2400686, 145530.0570039}};
        for (const auto &[text, monoisotopic, average] : table) {
            const ChemicalFormula formula = ChemicalFormula::read(text).valueOr({});
            QVERIFY2(std::fabs(formula.monoisotopicMass() - monoisotopic) < 2e-7, qPrintable(text));
            QVERIFY2(std::fabs(formula.averageMass() - average) < 2e-7, qPrintable(text));
        }
    }

    void randomGroups()
    {
        QRandomGenerator random(20240611);
        for (int round = 0; round < 3000; ++round) {
            Counts expected;
            const QString text = written(&random, 3, 1, &expected);
            QVERIFY2(countsOf(text) == expected, qPrintable(text));
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
        const auto refusal = [](const QString &text) {
            const auto result = ChemicalFormula::read(text);
            return result.hasError() ? result.error().message().section(u"…' "_s, 1) : u"none"_s;
        };
        const auto nested = [](int depth) {
            return QString(depth, u'(') + u'H' + QString(depth, u')');
        };
        QCOMPARE(countsOf(nested(100)), (Counts{{u"H"_s, 1}}));
        QCOMPARE(refusal(nested(101)), u"has groups more than 100 deep (column 101)"_s);
        QCOMPARE(refusal(QString(kSize, u'(')), u"has groups more than 100 deep (column 101)"_s);
        QCOMPARE(
            refusal(u'C' + QString(10 * kSize, u'9')), u"has a number above 10000000 (column 2)"_s);
        QCOMPARE(refusal(u"HC"_s + QString(kSize, u'9') + u'+').section(u',', 0, 0),
            u"does not tell a count from a charge"_s);
        QCOMPARE(refusal(QString(kSize, u'a')).left(9), u"has 'a' w"_s);
        QCOMPARE(countsOf(QString(kSize, u'H')), (Counts{{u"H"_s, kSize}}));
        QCOMPARE(
            countsOf(u"(HO)4"_s.repeated(kSize / 4)), (Counts{{u"H"_s, kSize}, {u"O"_s, kSize}}));
        QCOMPARE(refusal(u'H' + QString(kSize, u'+')),
            u"has a charge beyond its electrons (column 2)"_s);
    }
};

QTEST_APPLESS_MAIN(TestChemicalFormula)
#include "tst_ChemicalFormula.moc"

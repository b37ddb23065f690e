#include <vex/FormulaParser.h>

#include "ErrorTrace.h"
#include "PlainAveragine.h"

#include <QRandomGenerator>
#include <QTest>

#include <cerrno>
#include <cmath>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;

namespace {

using Finding = FormulaParser::Finding;
using AtomCounts = QHash<MolecularFormula::AtomType, double>;

const QStringList kSymbols{u"C"_s, u"H"_s, u"O"_s, u"N"_s, u"S"_s, u"P"_s, u"Na"_s};
const QString kNoNumber = u"invalid stod argument"_s;
const QString kOutOfRange = u"stod argument out of range"_s;

/// "C=6 H=12" of what @p parse returns, equal for equal symbols and bits of the counts; or the
/// text of the exception that leaves it.
template <typename Parse>
QString outcomeOf(Parse parse)
{
    QStringList entries;
    try {
        for (const auto &[symbol, count] : parse().asKeyValueRange()) {
            const auto number =
                QString::number(std::fabs(count), 'g', QLocale::FloatingPointShortest);
            entries.append(symbol + (std::signbit(count) ? u"=-"_s : u"="_s) + number);
        }
    } catch (const std::logic_error &exception) {
        return QString::fromUtf8(exception.what());
    }
    return entries.join(u' ');
}

/// What in the answer of checkFormula() does not fit @p outcome; empty when all does.
QString flawOfCheck(const QString &formula, const QString &outcome)
{
    const auto result = FormulaParser::checkFormula(formula);
    if (result.hasError()) {
        const bool isRefused = outcome.isEmpty() || outcome == kNoNumber || outcome == kOutOfRange;
        return isRefused ? QString() : u"fails"_s;
    }
    qsizetype last = 0;
    for (const Finding &finding : result.value().findings) {
        if (finding.position < last || formula[finding.position] != finding.text.front())
            return finding.message;
        last = finding.position;
    }
    const auto found = outcomeOf([&] { return result.value().counts; });
    return found == outcome ? QString() : u"counts: "_s + found;
}

/// What differs from the written-out grammar; the list is filled from the same counts as the hash.
QString flawOf(const QString &formula)
{
    const QString outcome = outcomeOf([&] { return plain::parseChemicalFormula(formula); });
    errno = ERANGE; // of an earlier failure: no matter, and kept
    const QString parsed = outcomeOf([&] { return FormulaParser::parseChemicalFormula(formula); });
    const bool errnoIsKept = errno == ERANGE;
    const QString viaHash = outcomeOf([&] {
        AtomCounts hash;
        std::ignore = FormulaParser::molecularFormulaHashFromString(formula, &hash);
        QMap<QString, double> counts = plain::parseChemicalFormula(formula);
        for (int type = 0; type < kSymbols.size(); ++type) {
            if (counts.contains(kSymbols[type]))
                counts[kSymbols[type]] = hash.value(MolecularFormula::AtomType(type));
        }
        return counts;
    });
    if (!errnoIsKept || parsed != outcome || viaHash != outcome)
        return parsed + u" | "_s + viaHash;
    return flawOfCheck(formula, outcome);
}

} // namespace

class TestFormulaParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    void grammar()
    {
        // no groups, no decimal point, and what stands before the first symbol is lost
        const std::pair<QString, QString> table[] = {{u"NA2"_s, u"A=2 N=1"_s},
            {u"H3H-5"_s, u"H=-2"_s}, {u" c6 H2"_s, u"H=2"_s}, {u"C(H3)2"_s, u"C=1 H=32"_s},
            {u"C1.5H3"_s, u"C=15 H=3"_s}, {u"C-1O-0N2-3"_s, u"C=-1 N=2 O=-0"_s},
            {u"C1e3H0xae"_s, u"C=1000 H=174"_s}, {u"C-infH+nanOinf"_s, u"C=-inf H=nan Oinf=1"_s},
            {u"ÉéΩǅ2C"_s, u"C=1 Éé=1 Ωǅ=2"_s}, {u"C\0\xD835"_s + u"3"_s, u"C=3"_s},
            // the first unreadable count decides, also that of an unknown symbol
            {u"H2Xy-"_s, kNoNumber}, {u"C1e-999"_s, kOutOfRange}, {u"C1e999H-"_s, kOutOfRange}};
        for (const auto &[text, expected] : table) {
            QCOMPARE(outcomeOf([&, &t = text] { return FormulaParser::parseChemicalFormula(t); }),
                expected);
        }
    }

    void randomTexts()
    {
        const QList<QStringView> pieces{u"C", u"H", u"O", u"N", u"Na", u"S", u"P", u"Cl", u"X",
            u"a", u"e", u"x", u"p", u"inf", u"nan", u"-", u"+", u".", u" ", u"(", u"%1", u"0",
            u"0x", u"1", u"7", u"42", u"e9", u"e-32", u"99999999", u"\u0663", u"²", u"É", u"ß",
            u"ǅ", u"\xD835", u"\xDC9E", u"½", QStringView(u"\0", 1), u"\u00A0"};
        QRandomGenerator random(20240611);
        for (int round = 0; round < 20000; ++round) {
            QString formula;
            for (quint32 length = random.bounded(14U); length > 0; --length)
                formula += pieces[random.bounded(pieces.size())];
            const QString flaw = flawOf(formula);
            QVERIFY2(flaw.isEmpty(), formula.toUtf8().toPercentEncoding() + ": " + flaw.toUtf8());
        }
    }

    void frontEndsFillWhatTheyAreGiven()
    {
        using enum MolecularFormula::AtomType;
        AtomCounts hash{{C, 5.0}, {S, 4.0}, {Reserved, 3.0}};
        QList<double> list{9.0};

        ErrorReport noHash{GeneralFailure, {}, {u"src/algo/ErrorUtils:82"_s}};
        ErrorReport noList = noHash;
        noHash.trace.append(u"src/algo/AveragineIsotopeModel:454"_s);
        noList.trace.append(u"src/algo/AveragineIsotopeModel:423"_s);
        for (const QString &text : {u""_s, u"123"_s, u"é(c)"_s}) {
            Error error = FormulaParser::molecularFormulaHashFromString(text, &hash);
            QCOMPARE(test::reportOf(error), noHash);
            error = FormulaParser::molecularFormulaParser(text, &list);
            QCOMPARE(test::reportOf(error), noList);
        }
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
            std::ignore = FormulaParser::molecularFormulaParser(u"H2C-"_s, &list));
        QVERIFY_THROWS_EXCEPTION(std::out_of_range,
            std::ignore = FormulaParser::molecularFormulaHashFromString(u"H2C1e999"_s, &hash));
        QCOMPARE(hash, (AtomCounts{{C, 5.0}, {S, 4.0}, {Reserved, 3.0}}));
        QCOMPARE(list, QList{9.0});

        const QString text = u"NaC2Xy7H3O-4N5P6"_s;
        QVERIFY(!FormulaParser::molecularFormulaHashFromString(text, &hash).hasError());
        QVERIFY(!FormulaParser::molecularFormulaParser(text, &list).hasError());
        QCOMPARE(hash,
            (AtomCounts{{C, 2}, {H, 3}, {O, -4}, {N, 5}, {S, 0}, {P, 6}, {Na, 1}, {Reserved, 3}}));
        QCOMPARE(list, (QList{9.0, 2.0, 3.0, -4.0, 5.0, 0.0, 6.0, 1.0}));
    }

    void ranges()
    {
        const QPointF untouched(-7.0, -7.0);
        const std::pair<QStringView, QPointF> expected[] = {{u"x [ 10 ,\t20\n] y", {10.0, 20.0}},
            {u"[,]", {0.0, 0.0}}, {u"[a,1] [[7,] [3,4]", {7.0, 0.0}}, {u"[20,10]", {20.0, 10.0}},
            {u"10-20", untouched}, {u"[1.5, 2]", untouched}, {u"[-1, 2]", untouched},
            {u"[1 0, 2]", untouched}, {u"[\u0661,\u0662]", untouched}};
        for (const auto &[text, numbers] : expected) {
            QPointF range = untouched;
            const auto error =
                FormulaParser::rangeParser(text.toString(), &range.rx(), &range.ry());
            QVERIFY2(!error.hasError() && range == numbers, qPrintable(text.toString()));
        }
    }

    /// The error of a formula, if any, and its findings in order.
    void findings()
    {
        const auto table = QString::fromUtf8(R"(
C6H12O6Na-1 | none
Ca (O) | none | the symbol 'Ca' at character 1 is none of C, H, O, N, S, P, Na | ' ' at character 3 is dropped | '(' at character 4 is dropped | ')' at character 6 is dropped
C.5 x | none | '.' at character 2 is dropped, so the number behind it counts for the symbol before it | ' ' at character 4 is dropped | 'x' at character 5 is no part of a count
H½2² | none | '½' at character 2 is dropped, so its number is lost | '²' at character 4 is dropped, so its number is lost
C1½2 | none | '½' at character 3 is dropped, the digits around it run together
C(H3)2 | none | '(' at character 2 is dropped | ')' at character 5 is dropped, the digits around it run together
C2§%2 | none | U+00a0 at character 3 is dropped, the digits around it run together | '%' at character 4 is dropped, the digits around it run together
(c62Xy | none | '(' at character 1 is dropped | 'c62' at character 2 stands before the first symbol | the symbol 'Xy' at character 5 is none of C, H, O, N, S, P, Na
C1e+N 2-3 | none | 'e+' at character 3 is no part of a count | ' ' at character 6 is dropped, so the number behind it counts for the symbol before it | '-3' at character 8 is no part of a count
N%a1§e5 𝟙 | none | '%' at character 2 is dropped, so the letters around it make one symbol | U+00a0 at character 5 is dropped, so the characters around it make one number | ' ' at character 8 is dropped | '𝟙' at character 9 is dropped, so its number is lost
%1 | the formula text '%1' holds no element symbol | '%' at character 1 is dropped | '1' at character 2 stands before the first symbol
C-H 1e999Xy- | the count '-' at character 2 is not a number; the count '1e999' at character 5 is out of range; the count '-' at character 12 is not a number | ' ' at character 4 is dropped, so the number behind it counts for the symbol before it | the symbol 'Xy' at character 10 is none of C, H, O, N, S, P, Na
LONG | the formula text 'CUT' holds no element symbol | 'CUT' at character 1 stands before the first symbol
)")
                               .trimmed()
                               .replace(u'§', u'\u00A0')
                               .replace("LONG"_L1, QString(50, u'c'))
                               .replace("CUT"_L1, QString(40, u'c') + u'…');
        for (const QString &line : table.split(u'\n')) {
            const QStringList cells = line.split(u" | "_s);
            const Result<FormulaParser::Check> result = FormulaParser::checkFormula(cells[0]);
            QStringList found{result.hasError() ? result.error().message() : u"none"_s};
            if (result.hasError())
                QCOMPARE(test::reportOf(result.error()),
                    (ErrorReport{
                        GeneralFailure, found[0], {u"src/algo/AveragineIsotopeModel:456"_s}}));
            const FormulaParser::Check check = result.valueOr({});
            for (const Finding &finding : check.findings) {
                const char *const phrases[] = {"dropped", "run together", "before the first",
                    "no part", "none of", "not a number", "dropped, so"};
                found.append(finding.message);
                QVERIFY(finding.message.contains(QLatin1StringView(phrases[finding.kind])));
            }
            QCOMPARE(found + result.warnings(), cells.sliced(1));
        }
    }
};

QTEST_APPLESS_MAIN(TestFormulaParser)
#include "tst_FormulaParser.moc"

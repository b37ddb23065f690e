#include <vex/ProteinMassConverter.h>

#include "Numbers.h"
#include "PlainAveragine.h"

#include <QTest>

#include <cmath>
#include <stdexcept>

using namespace Qt::StringLiterals;
using Converter = vex::ProteinMassConverter;

class TestProteinMassConverter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    void conversion()
    {
        const std::pair<QString, bool> formulas[] = {{u"C49384 H77583 N13577 O14773 S417"_s, true},
            {u"C40H80NO8P"_s, true}, {u"NaP"_s, true}, {u"C6H12O-1"_s, true},
            {u"C6Xy2H12"_s, true}, // nothing known of its composition:
            {u""_s, false}, {u"123c"_s, false}, {u"Xy2Cl"_s, false}, {u"C2C-2"_s, false}};
        for (const auto &[formula, known] : formulas) {
            for (const double mass : {0.0, 1.0, 18.015, 5807.6, 66430.3, 1.48e5, 1e300, -300.0}) {
                const double mono = Converter::averageMassToMono(mass, formula);
                QVERIFY(vex::test::sameBits(mono, plain::averageMassToMono(mass, formula)));
                const double average = Converter::monoMassToAverage(known ? mono : mass, formula);
                // A handful of operations there and back, each off by half an epsilon at most.
                QVERIFY(std::fabs(average - (known ? mass : 0.0)) <= 4e-15 * std::fabs(mass));
                QVERIFY(known || (mono == 0.0 && average == 0.0));
            }
        }
        QVERIFY_THROWS_EXCEPTION(
            std::invalid_argument, Converter::averageMassToMono(1.0, u"H2C-"_s));
        QVERIFY_THROWS_EXCEPTION(
            std::out_of_range, Converter::monoMassToAverage(1.0, u"XC1e999"_s));
    }
};

QTEST_APPLESS_MAIN(TestProteinMassConverter)
#include "tst_ProteinMassConverter.moc"

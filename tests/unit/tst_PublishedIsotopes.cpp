#include <vex/PublishedIsotopes.h>

#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace vex;

class TestPublishedIsotopes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Against the standard atomic weights of 2021 (Prohaska et al., Pure and Applied Chemistry 94
    /// (2022) 573): value and uncertainty, or the ends of an interval.
    void averagesAreStandardAtomicWeights()
    {
        const QString table = uR"(
H:1.00784-1.00811 He:4.002602:0.000002 Li:6.938-6.997 Be:9.0121831:0.0000005 B:10.806-10.821
C:12.0096-12.0116 N:14.00643-14.00728 O:15.99903-15.99977 F:18.998403162:0.000000005
Ne:20.1797:0.0006 Na:22.98976928:0.00000002 Mg:24.304-24.307 Al:26.9815384:0.0000003
Si:28.084-28.086 P:30.973761998:0.000000005 S:32.059-32.076 Cl:35.446-35.457 Ar:39.792-39.963
K:39.0983:0.0001 Ca:40.078:0.004 Sc:44.955907:0.000004 Ti:47.867:0.001 V:50.9415:0.0001
Cr:51.9961:0.0006 Mn:54.938043:0.000002 Fe:55.845:0.002 Co:58.933194:0.000003 Ni:58.6934:0.0004
Cu:63.546:0.003 Zn:65.38:0.02 Ga:69.723:0.001 Ge:72.630:0.008 As:74.921595:0.000006
Se:78.971:0.008 Br:79.901-79.907 Kr:83.798:0.002 Rb:85.4678:0.0003 Sr:87.62:0.01
Y:88.905838:0.000002 Zr:91.224:0.002 Nb:92.90637:0.00001 Mo:95.95:0.01 Ru:101.07:0.02
Rh:102.90549:0.00002 Pd:106.42:0.01 Ag:107.8682:0.0002 Cd:112.414:0.004 In:114.818:0.001
Sn:118.710:0.007 Sb:121.760:0.001 Te:127.60:0.03 I:126.90447:0.00003 Xe:131.293:0.006
Cs:132.90545196:0.00000006 Ba:137.327:0.007 La:138.90547:0.00007 Ce:140.116:0.001
Pr:140.90766:0.00001 Nd:144.242:0.003 Sm:150.36:0.02 Eu:151.964:0.001 Gd:157.25:0.03
Tb:158.925354:0.000007 Dy:162.500:0.001 Ho:164.930329:0.000005 Er:167.259:0.003
Tm:168.934219:0.000005 Yb:173.045:0.010 Lu:174.9668:0.0001 Hf:178.486:0.006
Ta:180.94788:0.00002 W:183.84:0.01 Re:186.207:0.001 Os:190.23:0.03 Ir:192.217:0.002
Pt:195.084:0.009 Au:196.966570:0.000004 Hg:200.592:0.003 Tl:204.382-204.385 Pb:206.14-207.94
Bi:208.98040:0.00001 Th:232.0377:0.0004 Pa:231.03588:0.00001 U:238.02891:0.00003
)"_s.simplified();
        const QStringList rows = table.split(u' ');
        QCOMPARE(rows.size(), qsizetype(PublishedIsotopes::elements().size()));
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const QStringList cells = rows[i].split(u':');
            const auto &element = PublishedIsotopes::elements()[static_cast<std::size_t>(i)];
            QCOMPARE(element.symbol, cells[0]);
            QCOMPARE(PublishedIsotopes::find(cells[0]), &element);
            const QStringList ends = cells[1].split(u'-');
            const double margin = cells.value(2).toDouble() * (1.0 + 1e-9);
            const double mass = PublishedIsotopes::averageMass(element);
            QVERIFY2(
                ends.first().toDouble() - margin <= mass && mass <= ends.last().toDouble() + margin,
                qPrintable(rows[i] + u' ' + QString::number(mass, 'f', 9)));
        }
    }

    void elementsAndIsotopesAreOrdered()
    {
        int atomicNumber = 0;
        qsizetype natural = 0;
        for (const auto &element : PublishedIsotopes::elements()) {
            QVERIFY(element.atomicNumber > atomicNumber);
            atomicNumber = element.atomicNumber;
            int massNumber = atomicNumber - 1; // 1H has no neutron
            double sum = 0.0;
            for (const auto &isotope : element.isotopes) {
                const auto name = qPrintable(element.symbol + QString::number(isotope.massNumber));
                QVERIFY2(isotope.massNumber > massNumber, name);
                massNumber = isotope.massNumber;
                QVERIFY2(std::fabs(isotope.massDa - massNumber) < 0.2, name);
                QVERIFY2(
                    isotope.abundance > 0.0 || element.symbol == u"H" || element.symbol == u"C",
                    name);
                sum += isotope.abundance;
                natural += isotope.abundance > 0.0;
                QCOMPARE(PublishedIsotopes::find(element, massNumber), &isotope);
            }
            QVERIFY2(std::fabs(sum - 1.0) < 1e-9, element.symbol.data());
            QVERIFY(!PublishedIsotopes::find(element, massNumber + 1));
        }
        QCOMPARE(atomicNumber, 92);
        QCOMPARE(natural, 288);
        for (const auto &symbol : {u"Tc"_s, u"D"_s, u"h"_s, u"NA"_s, u""_s, u"Na\0"_s})
            QVERIFY2(!PublishedIsotopes::find(symbol), qPrintable(symbol));
    }
};

QTEST_APPLESS_MAIN(TestPublishedIsotopes)
#include "tst_PublishedIsotopes.moc"

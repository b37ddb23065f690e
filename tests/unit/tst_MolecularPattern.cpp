#include "ErrorTrace.h"
#include "Numbers.h"
#include "PlainMolecule.h"

#include <QTest>

#include <vex/MolecularPattern.h>

#include <algorithm>
#include <cmath>
#include <map>

using namespace Qt::StringLiterals;
using namespace vex;

namespace {

const QString kMegadalton = u"C44468H69860N12226O13302S375"_s;

// Name, formula, average and monoisotopic mass in daltons with the digits that catalogues,
// pharmacopoeias and papers print; empty where none was found.
const QStringList kPublished = uR"(caffeine | C8H10N4O2 | 194.1906 | 194.08037557
calcium chloride | CaCl2 | 110.98 | 109.900296
selenomethionine | C5H11NO2Se | 196.119 | 196.9955
butyltin trichloride | C4H9SnCl3 | 282.18
ferrocene | Fe(C5H5)2 | 186.03 | 186.013186
DDT | C14H9Cl5 | 354.5 | 351.914689
decabromodiphenyl ether | C12Br10O | 959.17
bortezomib | C19H25BN4O4 | 384.24 | 384.19689
cisplatin | PtCl2(NH3)2 | 300.05 | 298.955598
haem b | C34H32FeN4O4 | 616.49 | 616.17729
vitamin B12 | C63H88CoN14O14P | 1355.37 | 1354.5674
glutathione | C10H17N3O6S | 307.32 | 307.083806
bradykinin | C50H73N15O11 | 1060.2 | 1059.5614
angiotensin II | C50H71N13O12 | 1046.2 | 1045.53451
substance P | C63H98N18O13S | 1347.6 | 1346.7281
melittin | C131H229N39O31 | 2846.46 | 2844.75417
insulin, human | C257H383N65O77S6 | 5808 | 5803.638
ubiquitin | C378H629N105O118S | 8564.84 | 8559.6167
apomyoglobin, horse | C769H1212N210O218S2 | 16951.49 | 16940.9650
trastuzumab | C6470H10012N1726O2013S42 | 145531.5)"_s.split(u'\n');

ChemicalFormula formulaOf(const QString &text)
{
    return ChemicalFormula::read(text).value();
}

MolecularPattern whole(const QString &text)
{
    return MolecularPattern::holding(formulaOf(text), 1.0).value();
}

/// Shares, and shares times mass, by mass number.
using Expansion = std::map<qint64, std::pair<long double, long double>>;

/// The plain form in a wider type.
Expansion expectedFor(const ChemicalFormula &formula)
{
    Expansion result;
    const auto sums = plain::molecule(formula, 1e-35L);
    qint64 number = sums.massNumber;
    for (std::size_t i = 0; i < sums.shares.size(); ++i, ++number)
        result[number] = {sums.shares[i], sums.defects[i] + sums.shares[i] * number};
    return result;
}

/// The run of @p length shares with the greatest sum, and that sum.
std::pair<qsizetype, double> best(const QList<MolecularPattern::Peak> &peaks, qsizetype length)
{
    std::pair<qsizetype, double> result{0, -1.0};
    for (qsizetype first = 0; first + length <= peaks.size(); ++first) {
        double sum = 0.0;
        for (qsizetype i = first; i < first + length; ++i)
            sum += peaks[i].share;
        if (sum > result.second + 1e-15)
            result = {first, sum};
    }
    return result;
}

} // namespace

class TestMolecularPattern : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishedMasses()
    {
        const auto isPrinted = [](double massDa, const QString &digits, double allowed) {
            const double unit = std::pow(10.0, -double(digits.section(u'.', 1).size()));
            return std::fabs(massDa - digits.toDouble()) <= 0.5 * unit + allowed;
        };
        for (const QString &row : kPublished) {
            const QStringList cells = row.split(u" | "_s);
            const ChemicalFormula formula = formulaOf(cells[1]);
            // carbon is often weighed as 12.011, its isotopes as 12.0107359
            const double carbons = formula.atoms().first().count; // or what comes first without
            QVERIFY2(isPrinted(formula.averageMass(), cells[2], 3e-4 * carbons), qPrintable(row));
            const QString monoisotopic = cells.value(3);
            QVERIFY2(
                monoisotopic.isEmpty() || isPrinted(formula.monoisotopicMass(), monoisotopic, 0.0),
                qPrintable(row));
        }
    }

    /// Published molecules, elements of every kind, few atoms and many, up to 1 MDa.
    void patternsEqualIndependentOnes()
    {
        QStringList formulas{u"SnCl4"_s, u"[13C]6H12O6"_s, u"H2"_s, u"[2H]2O"_s, u"HgI2Br2"_s,
            u"F6S"_s, u"[35Cl]Cl"_s, u"C2932H4614N780O898S39"_s, kMegadalton, u"S14"_s, u"S40"_s,
            u"S63"_s, u"S3000"_s, u"Ca100"_s, u"Ca5000"_s, u"Sn20"_s, u"Sn300"_s, u"Xe100"_s,
            u"Fe1000"_s, u"O16"_s, u"O17"_s, u"O100000"_s, u"Pb300U40"_s, u"Cl500Br300"_s,
            u"Ta90He100Cl3"_s};
        for (const QString &row : kPublished)
            formulas += row.section(u" | "_s, 1, 1);
        for (const QString &text : formulas) {
            const ChemicalFormula formula = formulaOf(text);
            Expansion expected = expectedFor(formula);
            const qint64 lightest = expected.begin()->first;
            const auto ofShare = [](const auto &each) { return each.second.first; };
            const long double highest =
                std::ranges::max_element(expected, {}, ofShare)->second.first;
            long double all = 0.0L; // 1 but for the rounding of the abundances
            for (const auto &[number, sums] : expected)
                all += sums.first;
            for (const double held : {1.0, 0.9999}) {
                const auto pattern = MolecularPattern::holding(formula, held).value();
                qint64 number = pattern.firstMassNumber();
                QCOMPARE(number - pattern.firstShift(), lightest);
                for (const auto &[share, massDa] : pattern.peaks()) {
                    const auto [sum, sumOfMass] = expected[number++];
                    QVERIFY2(std::fabs(double(share - sum / all)) < 5e-15 * double(highest),
                        qPrintable(text));
                    const double error = std::fabs(double(massDa - sumOfMass / sum));
                    QVERIFY2(!(sum > 1e-15L * highest) || error < 5e-7, qPrintable(text));
                    QVERIFY2(!(sum > 1e-12L * highest) || error < 2e-9, qPrintable(text));
                }
                if (held < 1.0)
                    continue;
                // nothing that counts lies beside, and hardly more is told than that
                QVERIFY(expected[pattern.firstMassNumber() - 1].first < 1e-19L * highest);
                QVERIFY(expected[number].first < 1e-19L * highest);
                QVERIFY(pattern.peaks().first().share >= 0.9e-20 * double(highest));
                QVERIFY(pattern.peaks().last().share >= 0.9e-20 * double(highest));
            }
        }
    }

    void runsAreTheBest()
    {
        for (const QString &text :
            {u"C8H10N4O2"_s, u"CaCl2"_s, u"Br2"_s, u"Cl40"_s, u"Sn20"_s, u"TaBi"_s, u"Li30"_s,
                u"V10"_s, u"S30"_s, u"C378H629N105O118S1"_s, u"C2932H4614N780O898S39"_s}) {
            const ChemicalFormula formula = formulaOf(text);
            const MolecularPattern all = whole(text);
            const auto verify = [&all](const MolecularPattern &pattern, qsizetype length) {
                const qsizetype first = best(all.peaks(), length).first;
                QCOMPARE(pattern.peaks().size(), length);
                QCOMPARE(pattern.firstShift() - all.firstShift(), first);
                QCOMPARE(pattern.firstMassNumber() - all.firstMassNumber(), first);
                for (qsizetype i = 0; i < length; ++i) {
                    const auto &[share, massDa] = all.peaks()[first + i];
                    QVERIFY(std::fabs(pattern.peaks()[i].share - share) < 1e-15);
                    QVERIFY(std::fabs(pattern.peaks()[i].massDa - massDa) < 1e-9 || share < 1e-12);
                }
            };
            qsizetype length = 1;
            for (double rest = 1.0 - 1e-9; rest > 1e-11; rest *= 0.7) {
                while (best(all.peaks(), length).second < 1.0 - rest)
                    ++length;
                verify(MolecularPattern::holding(formula, 1.0 - rest).value(), length);
            }
            for (const qsizetype count : {1, 2, 3, 5, 12, 13, 25, 60, 100000})
                verify(MolecularPattern::ofLength(formula, count).value(),
                    std::min(count, all.peaks().size()));
        }
    }

    /// What must be so for every formula: the shares are all of the signal, and the mean of the
    /// masses is the average mass.
    void sumsAreThoseOfTheFormula()
    {
        QStringList formulas{kMegadalton, u"C6H12O6"_s, u"[13C]6H12O6"_s, u"[13C]2[2H]3"_s,
            u"Na+"_s, u"SO4^2-"_s, u"C254H378N65O75S6^5+"_s, u"F10000"_s, u"C10000000"_s,
            u"O10000000S2"_s, u"Br1000000"_s, u"[14C][3H]Th"_s};
        for (const PublishedIsotopes::Element &element : PublishedIsotopes::elements())
            formulas += {element.symbol + u"1"_s, element.symbol + u"57H3"_s};
        for (const QString &text : formulas) {
            double sum = 0.0;
            double mean = 0.0; // above the average mass
            const double average = formulaOf(text).averageMass();
            const MolecularPattern pattern = whole(text);
            for (const auto &[share, massDa] : pattern.peaks()) {
                sum += share;
                mean += share * (massDa - average);
            }
            QVERIFY(std::fabs(sum - 1.0) < 1e-13);
            // an element's abundances add up to 1 but for rounding
            QVERIFY2(std::fabs(mean) < 1e-6 + 1e-14 * average, qPrintable(text));
        }
        QCOMPARE(whole(u"[238U]10000000"_s).firstMassNumber(), 2380000000ll);
    }

    /// Counts at which a first share would be 1e-46700: neighbours keep the ratio of a binomial.
    void millionsOfAtoms()
    {
        const MolecularPattern pattern = whole(u"C10000000"_s);
        QVERIFY(std::fabs(double(pattern.firstShift()) - 107000.0 + 9.5 * 325.4) < 50.0);
        double k = double(pattern.firstShift());
        const auto &peaks = pattern.peaks();
        for (qsizetype i = 1; i < peaks.size(); ++i, k += 1.0) {
            const double ratio = (1e7 - k) / (k + 1.0) * (0.0107 / 0.9893);
            QVERIFY(std::fabs(peaks[i].share / peaks[i - 1].share - ratio) < 1e-13);
        }
    }

    void refused()
    {
        const ChemicalFormula water = formulaOf(u"H2O"_s);
        const auto report = [](const Result<MolecularPattern> &result) {
            return test::reportOf(result.error());
        };
        const auto failure = [](const QString &message, int line) {
            return test::ErrorReport{
                GeneralFailure, message, {u"src/algo/MolecularPattern:"_s + QString::number(line)}};
        };
        const QString share = u"The share of the signal is %1. It must be above 0 and at most 1."_s;
        for (const double asked : {0.0, -0.5, 1.5, test::kNaN})
            QCOMPARE(report(MolecularPattern::holding(water, asked)), failure(share.arg(asked), 1));
        for (const qsizetype count : {0, -3})
            QCOMPARE(report(MolecularPattern::ofLength(water, count)),
                failure(u"The number of peaks is %1. It must be at least 1."_s.arg(count), 2));
        const QString empty = u"The formula has no atoms."_s;
        QCOMPARE(report(MolecularPattern::holding({}, 0.5)), failure(empty, 3));
        QCOMPARE(report(MolecularPattern::ofLength({}, 5)), failure(empty, 4));
    }
};

QTEST_GUILESS_MAIN(TestMolecularPattern)
#include "tst_MolecularPattern.moc"

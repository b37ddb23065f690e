#include "ErrorTrace.h"
#include "PlainMolecule.h"

#include <QTest>

#include <vex/MolecularPattern.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

using namespace Qt::StringLiterals;
using namespace vex;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const QString kMegadalton = u"C44468H69860N12226O13302S375"_s;

// Name, formula, average and monoisotopic mass in daltons with the digits that catalogues,
// pharmacopoeias and papers print; empty where none was found.
using Published = std::array<QString, 4>;
const std::array kPublished{
    Published{u"caffeine"_s, u"C8H10N4O2"_s, u"194.1906"_s, u"194.08037557"_s},
    Published{u"calcium chloride"_s, u"CaCl2"_s, u"110.98"_s, u"109.900296"_s},
    Published{u"selenomethionine"_s, u"C5H11NO2Se"_s, u"196.119"_s, u"196.9955"_s},
    Published{u"butyltin trichloride"_s, u"C4H9SnCl3"_s, u"282.18"_s, {}},
    Published{u"ferrocene"_s, u"Fe(C5H5)2"_s, u"186.03"_s, u"186.013186"_s},
    Published{u"DDT"_s, u"C14H9Cl5"_s, u"354.5"_s, u"351.914689"_s},
    Published{u"decabromodiphenyl ether"_s, u"C12Br10O"_s, u"959.17"_s, {}},
    Published{u"bortezomib"_s, u"C19H25BN4O4"_s, u"384.24"_s, u"384.19689"_s},
    Published{u"cisplatin"_s, u"PtCl2(NH3)2"_s, u"300.05"_s, u"298.955598"_s},
    Published{u"haem b"_s, u"C34H32FeN4O4"_s, u"616.49"_s, u"616.17729"_s},
    Published{u"vitamin B12"_s, u"C63H88CoN14O14P"_s, u"1355.37"_s, u"1354.5674"_s},
    Published{u"glutathione"_s, u"C10H17N3O6S"_s, u"307.32"_s, u"307.083806"_s},
    Published{u"bradykinin"_s, u"C50H73N15O11"_s, u"1060.2"_s, u"1059.5614"_s},
    Published{u"angiotensin II"_s, u"C50H71N13O12"_s, u"1046.2"_s, u"1045.53451"_s},
    Published{u"substance P"_s, u"C63H98N18O13S"_s, u"1347.6"_s, u"1346.7281"_s},
    Published{u"melittin"_s, u"C131H229N39O31"_s, u"2846.46"_s, u"2844.75417"_s},
    Published{u"insulin, human"_s, u"C257H383N65O77S6"_s, u"5808"_s, u"5803.638"_s},
    Published{u"ubiquitin"_s, u"C378H629N105O118S"_s, u"8564.84"_s, u"8559.6167"_s},
    Published{u"apomyoglobin, horse"_s, u"C769H1212N210O218S2"_s, u"16951.49"_s, u"16940.9650"_s},
    Published{u"trastuzumab"_s, u"C6470H10012N1726O2013S42"_s, u"145531.5"_s, {}},
};

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

/// Adds every isotopologue of the atoms from @p kind and @p isotope on, of which @p left of that
/// kind are still to be chosen, to what was chosen before.
void expand(const QList<ChemicalFormula::Atoms> &atoms, qsizetype kind, std::size_t isotope,
    int left, long double share, long double mass, qint64 number, Expansion *result)
{
    if (kind == atoms.size()) {
        (*result)[number].first += share;
        (*result)[number].second += share * mass;
        return;
    }
    const auto &isotopes = atoms[kind].element->isotopes;
    if (isotope == isotopes.size()) {
        const int next = kind + 1 < atoms.size() ? atoms[kind + 1].count : 0;
        if (left == 0)
            expand(atoms, kind + 1, 0, next, share, mass, number, result);
        return;
    }
    const auto &[massNumber, massDa, abundance] = isotopes[isotope];
    const int single = atoms[kind].massNumber;
    const long double each = single == 0 ? abundance : single == massNumber;
    for (int chosen = 0; chosen <= left && share > 0.0L; ++chosen) {
        expand(atoms, kind, isotope + 1, left - chosen, share, mass, number, result);
        share *= each * (left - chosen) / (chosen + 1); // the ways to choose one more
        mass += massDa;
        number += massNumber;
    }
}

/// Every isotopologue by itself where they are few, otherwise the plain form in a wider type.
Expansion expectedFor(const ChemicalFormula &formula)
{
    Expansion result;
    double isotopologues = 1.0; // or more: 3H and 14C count as well
    for (const auto &[element, massNumber, count] : formula.atoms())
        for (std::size_t i = 1; i < element->isotopes.size(); ++i)
            isotopologues *= double(std::size_t(count) + i) / double(i);
    if (isotopologues < 1e7) {
        expand(formula.atoms(), 0, 0, formula.atoms()[0].count, 1.0L, 0.0L, 0, &result);
        std::erase_if(result, [](const auto &each) { return each.second.first == 0.0L; });
        return result;
    }
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
        for (const auto &[name, text, average, monoisotopic] : kPublished) {
            const ChemicalFormula formula = formulaOf(text);
            // carbon is often weighed as 12.011, its isotopes as 12.0107359
            const double carbons = formula.atoms().first().count; // or what comes first without
            QVERIFY2(isPrinted(formula.averageMass(), average, 3e-4 * carbons), qPrintable(name));
            QVERIFY2(
                monoisotopic.isEmpty() || isPrinted(formula.monoisotopicMass(), monoisotopic, 0.0),
                qPrintable(name));
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
        for (const auto &[name, text, average, monoisotopic] : kPublished)
            formulas += text;
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

    void shapes()
    {
        // one isotope each: one peak, with the mass of the ion
        const auto salt = MolecularPattern::holding(formulaOf(u"[13C]2F3Na^+"_s)).value();
        QCOMPARE(salt.peaks().size(), 1);
        QCOMPARE(salt.peaks().first().share, 1.0);
        const double mass =
            2 * 13.00335483534 + 3 * 18.99840316207 + 22.98976928195 - 0.00054857990;
        QVERIFY(std::fabs(salt.peaks().first().massDa - mass) < 1e-10);
        QCOMPARE(std::pair(salt.firstMassNumber(), salt.firstShift()), std::pair(106ll, 0ll));
        const auto heaviest = MolecularPattern::ofLength(formulaOf(u"[238U]10000000"_s), 3).value();
        QCOMPARE(heaviest.firstMassNumber(), 2380000000ll);
        // peaks that no isotopologue has stand between their neighbours
        const auto chlorine = whole(u"Cl2"_s);
        QCOMPARE(chlorine.peaks().size(), 5);
        QVERIFY(chlorine.peaks()[1].share == 0.0 && chlorine.peaks()[3].share == 0.0);
        QVERIFY(std::ranges::is_sorted(chlorine.peaks(), {}, &MolecularPattern::Peak::massDa));
        // what a share takes off is counted: a first peak of 1e-253
        const auto heavy = MolecularPattern::holding(formulaOf(kMegadalton)).value();
        QVERIFY(heavy.firstShift() > 500 && heavy.peaks().size() < 230);
        QCOMPARE(heavy.firstMassNumber() - heavy.firstShift(),
            44468 * 12 + 69860 + 12226 * 14 + 13302 * 16 + 375 * 32);
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
        for (const auto &[share, text] :
            {std::pair(0.0, u"0"_s), {-0.5, u"-0.5"_s}, {1.5, u"1.5"_s}, {kNaN, u"nan"_s}})
            QCOMPARE(report(MolecularPattern::holding(water, share)),
                failure(
                    u"The share of the signal is %1. It must be above 0 and at most 1."_s.arg(text),
                    1));
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

#pragma once

// The averagine model and the formula grammar written out step by step, as plainly as possible:
// what the library's answers are compared with, bit by bit, and what its speed is measured against.
// It shares no code with the library; keep it slow and obvious.

#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include <vex/MolecularFormula.h>

namespace plain {

constexpr int kPeaks = 100;
constexpr int kTypes = 8;

inline QMap<QString, double> parseChemicalFormula(const QString &formula)
{
    QString text;
    for (const QChar character : formula) {
        if (character.isLetter() || character.isDigit() || character == u'-' || character == u'+')
            text.append(character);
    }
    QList<qsizetype> starts;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isUpper())
            starts.append(i);
    }
    QMap<QString, double> counts;
    for (qsizetype k = 0; k < starts.size(); ++k) {
        const qsizetype end = k + 1 < starts.size() ? starts[k + 1] : text.size();
        const QString token = text.mid(starts[k], end - starts[k]).trimmed();
        qsizetype split = 0;
        while (split < token.size() && token[split].isLetter())
            ++split;
        double count = 1.0;
        if (split < token.size()) {
            const QByteArray countText = token.mid(split).toUtf8();
            char *rest = nullptr;
            errno = 0;
            count = std::strtod(countText.constData(), &rest);
            if (rest == countText.constData())
                throw std::invalid_argument("invalid stod argument");
            if (errno == ERANGE)
                throw std::out_of_range("stod argument out of range");
        }
        const QString symbol = token.left(split);
        if (counts.contains(symbol))
            counts[symbol] += count;
        else
            counts.insert(symbol, count);
    }
    return counts;
}

struct Element
{
    double masses[4];
    double abundances[4];
    double averageMass;
};

class AveragineModel
{
public:
    AveragineModel()
    {
        const Element elements[kTypes] = {
            {{12.0, 13.0033548}, {0.9893, 0.0107}, 0.0},
            {{1.007825, 2.0141078}, {0.999885, 0.000115}, 0.0},
            {{15.9949146, 16.9991315, 17.9991604}, {0.99757, 0.00038, 0.00205}, 0.0},
            {{14.003074, 15.001089}, {0.99632, 0.00368}, 0.0},
            {{31.9720707, 32.9714585, 33.9678668}, {0.9493, 0.0076, 0.0431}, 0.0},
            {{30.9737615}, {1.0}, 0.0},
            {{22.98976967}, {1.0}, 0.0},
            {{0.0}, {0.0}, 0.0},
        };
        for (int e = 0; e < kTypes; ++e) {
            m_elements[e] = elements[e];
            for (int j = 0; j < 4; ++j)
                m_elements[e].averageMass += elements[e].masses[j] * elements[e].abundances[j];
        }
    }

    void init(const vex::MolecularFormula &formula)
    {
        QHash<vex::MolecularFormula::AtomType, double> hash;
        formula.molecularFormula(&hash);
        double counts[kTypes] = {};
        for (auto entry = hash.cbegin(); entry != hash.cend(); ++entry)
            counts[entry.key()] = entry.value();
        initAverageMer(counts);
    }

    static void normalize(int n, double *values)
    {
        double sum = 0.0;
        for (int i = 0; i < n; ++i)
            sum += values[i];
        if (std::fabs(sum) <= 1e-12)
            return;
        for (int i = 0; i < n; ++i)
            values[i] *= 1.0 / sum;
    }

    static void convolution(const double *a, const double *b, double *out)
    {
        for (int k = 0; k < kPeaks; ++k) {
            out[k] = 0.0;
            for (int i = 0; i <= k; ++i) {
                if (a[i] < 0.0001)
                    break;
                out[k] += a[i] * b[k - i];
            }
        }
    }

    void initAverageMer(const double *counts)
    {
        for (int e = 0; e < kTypes; ++e)
            m_composition[e] = counts[e];
        normalize(kTypes, m_composition);
        m_merMass = 0.0;
        for (int e = 0; e < kTypes; ++e)
            m_merMass += m_composition[e] * m_elements[e].averageMass;
        for (int j = 0; j < kPeaks; ++j)
            m_patterns[0][j] = 0.0;
        for (int j = 0; j < 4; ++j) {
            for (int e = 0; e < kTypes; ++e)
                m_patterns[0][j] += m_composition[e] * m_elements[e].abundances[j];
        }
        normalize(kPeaks, m_patterns[0]);
        double working[kPeaks];
        copy(m_patterns[0], working);
        for (int block = 0; block < 3; ++block) {
            for (int i = 0; i < 9; ++i) {
                double out[kPeaks];
                convolution(m_patterns[block], working, out);
                copy(out, working);
            }
            normalize(kPeaks, working);
            copy(working, m_patterns[block + 1]);
        }
    }

    QList<double> averageMer(double mass) const
    {
        double working[kPeaks] = {1.0};
        if (std::fabs(m_merMass) > 1e-12 && mass > 0.5 * m_merMass) {
            while (mass > 0.5 * m_merMass) {
                int block = 0;
                if (mass >= 1000.0 * m_merMass) {
                    mass -= 1000.0 * m_merMass;
                    block = 3;
                } else if (mass >= 100.0 * m_merMass) {
                    mass -= 100.0 * m_merMass;
                    block = 2;
                } else if (mass >= 10.0 * m_merMass) {
                    mass -= 10.0 * m_merMass;
                    block = 1;
                } else {
                    mass -= m_merMass;
                }
                double out[kPeaks];
                convolution(m_patterns[block], working, out);
                copy(out, working);
            }
        }
        QList<double> result(kPeaks);
        for (int i = 0; i < kPeaks; ++i)
            result[i] = working[i];
        return result;
    }

    int peakIntensityRatiosFromMass(double mass, QList<double> *intensities) const
    {
        intensities->clear();
        double best = 0.0;
        int bestIndex = -1;
        const QList<double> pattern = averageMer(mass);
        for (int i = 0; i < pattern.size(); ++i) {
            if (pattern[i] > best) {
                best = pattern[i];
                bestIndex = i;
            }
            intensities->append(pattern[i]);
        }
        return bestIndex;
    }

    double adjustmentForSingleMer() const
    {
        double adjustment = 0.0;
        for (int e = 0; e < kTypes; ++e) {
            const Element &element = m_elements[e];
            double excess = 0.0;
            for (int j = 1; j < 4; ++j)
                excess += (element.masses[j] - element.masses[0]) * element.abundances[j];
            adjustment += m_composition[e] * excess;
        }
        return adjustment;
    }

    double getMonoFromAverageMer(double averageMass) const
    {
        if (std::fabs(m_merMass) <= 1e-12)
            return 0.0;
        return averageMass - adjustmentForSingleMer() * (averageMass / m_merMass);
    }

    double merMass() const { return m_merMass; }
    const double *pattern(int block) const { return m_patterns[block]; }

private:
    static void copy(const double *from, double *to)
    {
        for (int i = 0; i < kPeaks; ++i)
            to[i] = from[i];
    }

    Element m_elements[kTypes];
    double m_patterns[4][kPeaks] = {};
    double m_merMass = 0.0;
    double m_composition[kTypes] = {};
};

inline double averageMassToMono(double averageMass, const QString &formula)
{
    const QMap<QString, double> counts = parseChemicalFormula(formula);
    if (counts.isEmpty())
        return 0.0;
    const char16_t *const symbols[] = {u"C", u"H", u"O", u"N", u"S", u"P", u"Na"};
    QHash<vex::MolecularFormula::AtomType, double> hash;
    for (int type = 0; type < 7; ++type) {
        hash.insert(static_cast<vex::MolecularFormula::AtomType>(type),
            counts.value(QString::fromUtf16(symbols[type]), 0.0));
    }
    vex::MolecularFormula composition;
    composition.setMolecularFormula(hash);
    AveragineModel model;
    model.init(composition);
    return model.getMonoFromAverageMer(averageMass);
}

} // namespace plain

#include <vex/MolecularFormula.h>

namespace vex {

MolecularFormula::MolecularFormula()
{
    m_formula.reserve(kAtomTypeCount);
    for (int type = C; type <= Reserved; ++type)
        m_formula.insert(static_cast<AtomType>(type), 0.0);
}

void MolecularFormula::setMolecularFormula(const QHash<AtomType, double> &formula)
{
    for (auto entry = formula.cbegin(); entry != formula.cend(); ++entry)
        m_formula.insert(entry.key(), entry.value());
}

void MolecularFormula::molecularFormula(QHash<AtomType, double> *formula) const
{
    *formula = m_formula;
}

Error MolecularFormula::normalizedMolecularFormula(QHash<AtomType, double> *formula)
{
    formula->clear();
    double sum = 0.0;
    Error error = sumOfValuesInMolecularFormulaMap(m_formula, &sum);
    // Deliberate: no guard against a sum of 0; the fractions are NaN then.
    for (int type = C; type <= Reserved; ++type)
        formula->insert(static_cast<AtomType>(type), count(static_cast<AtomType>(type)) / sum);
    return error;
}

Error MolecularFormula::sumOfValuesInMolecularFormulaMap(
    const QHash<AtomType, double> &formula, double *sum)
{
    double total = *sum; // which may be one of the counts
    for (const double count : formula)
        total += count;
    *sum = total;
    return ErrorCode::NoError;
}

void MolecularFormula::clear()
{
    m_formula = {};
}

} // namespace vex

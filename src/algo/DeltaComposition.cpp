#include <vex/DeltaComposition.h>

#include "algo/detail/AtomCounts.h"
#include "algo/detail/CompositionText.h"
#include "detail/ShownText.h"
#include "detail/Trace.h"

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, chosen here.
constexpr detail::TraceSource kSource{"src/algo/DeltaComposition"};
namespace at {
constexpr auto notUnderstood = kSource.line(1);
constexpr auto tooMany = kSource.line(2);
} // namespace at

} // namespace

DeltaComposition::DeltaComposition(const ChemicalFormula &formula)
    : m_atoms(formula.atoms())
    , m_charge(formula.charge())
{
}

Result<DeltaComposition> DeltaComposition::read(QStringView text, int charge)
{
    detail::AtomCounts counts;
    if (const auto fault = detail::readComposition(text, &counts))
        return detail::stamped(at::notUnderstood, Q_FUNC_INFO,
            Result<DeltaComposition>(Error(ErrorCode::GeneralFailure,
                u"%1 %2 (column %3)"_s.arg(
                    text.isEmpty() ? u"the composition"_s : detail::quotedHead(text), fault->what,
                    QString::number(fault->position + 1)))));
    DeltaComposition delta;
    delta.m_atoms = detail::inHillOrder(counts);
    delta.m_charge = charge;
    return delta;
}

Error DeltaComposition::add(const DeltaComposition &other, int times)
{
    detail::AtomCounts counts;
    for (const Atoms &atoms : std::as_const(m_atoms))
        counts[{atoms.element, atoms.massNumber}] += atoms.count;
    for (const Atoms &atoms : other.m_atoms)
        counts[{atoms.element, atoms.massNumber}] += qint64(atoms.count) * times;
    const qint64 charge = m_charge + qint64(other.m_charge) * times;
    const auto refused = [](const QString &what) {
        return detail::stamped(at::tooMany, Q_FUNC_INFO,
            Error(ErrorCode::GeneralFailure,
                u"the %1 would be beyond %2"_s.arg(what, QString::number(detail::kLargestCount))));
    };
    for (const auto &[kind, count] : counts) {
        if (qAbs(count) > detail::kLargestCount)
            return refused(u"number of %1"_s.arg(kind.first->symbol));
    }
    if (qAbs(charge) > detail::kLargestCount)
        return refused(u"charge"_s);
    m_atoms = detail::inHillOrder(counts);
    m_charge = static_cast<int>(charge);
    return ErrorCode::NoError;
}

QString DeltaComposition::text() const
{
    QString text;
    for (const Atoms &atoms : m_atoms) {
        const QString count = atoms.count == 1 ? QString() : QString::number(atoms.count);
        text += atoms.massNumber == 0
            ? atoms.element->symbol + count
            : u'[' + QString::number(atoms.massNumber) + atoms.element->symbol + count + u']';
    }
    return text;
}

double DeltaComposition::averageMass() const
{
    return detail::averageMass(m_atoms, m_charge);
}

double DeltaComposition::monoisotopicMass() const
{
    return detail::monoisotopicMass(m_atoms, m_charge);
}

} // namespace vex

#include <vex_common_stable/Warnings.h>

namespace vex {

Warnings::~Warnings() = default;

void Warnings::addWarningInternal(const QString &warning)
{
    m_warnings.append(warning);
}

void Warnings::addWarningsInternal(const QList<QString> &warnings)
{
    m_warnings.append(warnings);
}

void Warnings::clearWarningsInternal()
{
    m_warnings.clear();
}

void Warnings::resetWarningInternal(const QString &warning)
{
    m_warnings = {warning};
}

void Warnings::resetWarningsInternal(const QList<QString> &warnings)
{
    m_warnings = warnings;
}

} // namespace vex

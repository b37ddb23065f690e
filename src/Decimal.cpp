#include <vex/Decimal.h>

#include <QJsonValue>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace vex {

namespace {

const QString kValueKey = QStringLiteral("value");
const QString kSigFigKey = QStringLiteral("sigFig");

// A lookup by name finds the type from the start on.
const int kMetaType = qRegisterMetaType<Decimal>("vex::Decimal");

} // namespace

Decimal::Decimal(double value, int sigFig)
    : m_value(value)
    , m_sigFig(sigFig)
{
}

void Decimal::setValue(const QString &text)
{
    const QLocale locale;
    m_value = locale.toDouble(text);
    const qsizetype point = text.indexOf(locale.decimalPoint());
    // Deliberate: whatever stands behind the point counts.
    m_sigFig = point < 0 ? 0 : static_cast<int>(text.size() - point - 1);
}

Decimal Decimal::fromString(const QString &text)
{
    Decimal decimal;
    decimal.setValue(text);
    return decimal;
}

QString Decimal::toString() const
{
    return QLocale().toString(m_value, 'f', m_sigFig);
}

QJsonObject Decimal::toJson() const
{
    return {{kValueKey, m_value}, {kSigFigKey, m_sigFig}};
}

Decimal Decimal::fromJson(const QJsonObject &object)
{
    return Decimal(object.value(kValueKey).toDouble(0.0), object.value(kSigFigKey).toInt(0));
}

bool Decimal::operator==(const Decimal &other) const
{
    const double scale = std::max({1.0, std::fabs(m_value), std::fabs(other.m_value)});
    return m_sigFig == other.m_sigFig && std::fabs(m_value - other.m_value) <= 1e-12 * scale;
}

QDebug operator<<(QDebug debug, const Decimal &decimal)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "Decimal(value:" << decimal.value() << ", sigFig:" << decimal.sigFig()
                    << ")";
    return debug;
}

} // namespace vex

#pragma once

#include <QDebug>
#include <QJsonObject>
#include <QMetaType>
#include <QString>

#include <vex/Export.h>

namespace vex {

/// A number with a fixed count of digits behind the decimal point, as a user types and reads it.
///
/// The count is called sigFig all the same. Known to Qt's meta types as "vex::Decimal": it travels
/// in QVariant and in queued signals.
class VEX_EXPORT Decimal
{
public:
    /// 0 with two digits.
    Decimal() = default;
    /// Stores both as they are.
    Decimal(double value, int sigFig);

    /// The number.
    double value() const { return m_value; }
    /// Digits behind the decimal point.
    int sigFig() const { return m_sigFig; }
    /// Replaces the number and keeps the digits.
    void setValue(double value) { m_value = value; }

    /// Reads number and digits in the default locale.
    ///
    /// Text that is no number counts as 0. Every character behind the first decimal point counts as
    /// a digit, also a blank or an exponent.
    void setValue(const QString &text);

    /// What setValue() reads.
    static Decimal fromString(const QString &text);

    /// The number in the default locale, in fixed notation with sigFig() digits behind the point.
    QString toString() const;

    /// An object with the keys "value" and "sigFig".
    QJsonObject toJson() const;

    /// Reads what toJson() writes; a key that is missing or of another type gives 0.
    static Decimal fromJson(const QJsonObject &object);

    /// True for equal digits and numbers that differ by at most 1e-12 times the larger magnitude,
    /// or by 1e-12 where both are below 1.
    bool operator==(const Decimal &other) const;

private:
    double m_value = 0.0;
    int m_sigFig = 2;
};

/// Writes "Decimal(value:1.5, sigFig:2)".
VEX_EXPORT QDebug operator<<(QDebug debug, const Decimal &decimal);

} // namespace vex

Q_DECLARE_METATYPE(vex::Decimal)

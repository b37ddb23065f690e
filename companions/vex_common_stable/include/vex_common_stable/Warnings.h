#pragma once

#include <QList>
#include <QString>

#include <vex_common_stable/Export.h>

namespace vex {

/// A list of warning texts that travels with an Error or a Result.
///
/// The five protected operations do the real work. Their order is part of the binary interface:
/// they follow the destructor in the order in which they are declared here.
class VEX_COMMON_STABLE_EXPORT Warnings
{
public:
    /// No warnings.
    Warnings() = default;
    /// Copies the texts.
    Warnings(const Warnings &) = default;
    /// Takes the texts over.
    Warnings(Warnings &&) = default;
    /// Replaces the texts by a copy of the other's.
    Warnings &operator=(const Warnings &) = default;
    /// Replaces the texts by the other's.
    Warnings &operator=(Warnings &&) = default;
    /// Releases the texts.
    virtual ~Warnings();

    /// Replaces all texts by @p warning.
    void resetWarning(const QString &warning)
    {
        resetWarningInternal(QString(warning)); // a copy: it may be one of these
    }
    /// Replaces all texts by @p warnings, in order.
    void resetWarnings(const QList<QString> &warnings)
    {
        resetWarningsInternal(QList<QString>(warnings));
    }

    /// The texts, oldest first.
    const QList<QString> &warnings() const { return m_warnings; }

protected:
    /// Appends one text.
    virtual void addWarningInternal(const QString &warning);
    /// Appends several texts in order.
    virtual void addWarningsInternal(const QList<QString> &warnings);
    /// Removes all texts.
    virtual void clearWarningsInternal();
    /// Replaces all texts by one.
    virtual void resetWarningInternal(const QString &warning);
    /// Replaces all texts by several, in order.
    virtual void resetWarningsInternal(const QList<QString> &warnings);

private:
    QList<QString> m_warnings;
};

} // namespace vex

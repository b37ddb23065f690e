#include <vex_common_stable/Error.h>

#include <QDebugStateSaver>

using namespace Qt::StringLiterals;

namespace vex {

Error::Error(ErrorCode code)
    : m_code(code)
{
}

Error::Error(ErrorCode code, const QString &message)
    : m_code(code)
    , m_message(message)
{
}

Error::Error(ErrorCode code, const char *message)
    : Error(code, QString::fromUtf8(message))
{
}

Error::~Error() = default;

Error &Error::ecatch(const char *function, const char *file, int line)
{
    if (hasError())
        m_trace.append({QString::fromUtf8(function), QString::fromUtf8(file), line});
    return *this;
}

QList<QString> Error::errorMessages() const
{
    QList<QString> messages;
    if (!m_message.isEmpty())
        messages.append(m_message);
    for (const Location &at : m_trace)
        messages.append(u"at %1 (%2:%3)"_s.arg(at.function, at.file, QString::number(at.line)));
    return messages;
}

Error &Error::addWarning(const QString &warning)
{
    addWarningInternal(warning);
    return *this;
}

Error &Error::addWarnings(const QList<QString> &warnings)
{
    addWarningsInternal(warnings);
    return *this;
}

Error &Error::clearWarnings()
{
    clearWarningsInternal();
    return *this;
}

QDebug operator<<(QDebug debug, const Error &error)
{
    const QDebugStateSaver saver(debug);
    debug.nospace().noquote() << error.errorMessages().join(u'\n');
    return debug;
}

} // namespace vex

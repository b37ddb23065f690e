#pragma once

#include <QDebug>
#include <QList>
#include <QString>

#include <vex_common_stable/ErrorCode.h>
#include <vex_common_stable/Export.h>
#include <vex_common_stable/Warnings.h>

namespace vex {

/// A failure as a value: its code, what it says, and every place through which it passed.
///
/// An Error with the code ErrorCode::NoError is a success. Ignoring a returned Error is a compiler
/// warning; a deliberate drop is written as `std::ignore = call();`.
class VEX_COMMON_STABLE_EXPORT [[nodiscard]] Error : public Warnings
{
public:
    /// One place through which a failure passed.
    struct Location
    {
        QString function; ///< full signature of the function, as the compiler spells it
        QString file; ///< source file
        int line = 0; ///< line in that file

        /// True when all three agree.
        bool operator==(const Location &) const = default;
    };

    /// A success.
    Error() = default;
    /// @p code without a message. A code passes as an Error; a Result wants the Error itself.
    Error(ErrorCode code);
    /// @p code with the text that a person will read.
    Error(ErrorCode code, const QString &message);
    /// The same with UTF-8 text.
    Error(ErrorCode code, const char *message);
    /// Copies code, message, trace and warnings.
    Error(const Error &) = default;
    /// Takes everything over.
    Error(Error &&) = default;
    /// Replaces everything by a copy.
    Error &operator=(const Error &) = default;
    /// Replaces everything by the other's.
    Error &operator=(Error &&) = default;
    ~Error() override;

    /// True exactly when the code is not ErrorCode::NoError.
    bool hasError() const { return m_code != ErrorCode::NoError; }
    /// The kind of failure.
    ErrorCode code() const { return m_code; }
    /// The text given at construction; empty when there was none.
    const QString &message() const { return m_message; }
    /// The places passed so far, innermost first.
    const QList<Location> &trace() const { return m_trace; }

    /// Appends one place to the trace and returns this error. A success stays as it is.
    ///
    /// @param function  full signature text, UTF-8
    /// @param file      source file, UTF-8
    /// @param line      line in that file
    Error &ecatch(const char *function, const char *file, int line);

    /// The message, when there is one, then a line `at <function> (<file>:<line>)` for each place
    /// of the trace, innermost first.
    QList<QString> errorMessages() const;

    /// Appends one warning and returns this error.
    Error &addWarning(const QString &warning);
    /// Appends several warnings in order and returns this error.
    Error &addWarnings(const QList<QString> &warnings);
    /// Removes all warnings and returns this error.
    Error &clearWarnings();

private:
    ErrorCode m_code = ErrorCode::NoError;
    QString m_message;
    QList<Location> m_trace;
};

/// Prints the lines of Error::errorMessages().
VEX_COMMON_STABLE_EXPORT QDebug operator<<(QDebug debug, const Error &error);

} // namespace vex

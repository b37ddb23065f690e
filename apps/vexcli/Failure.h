#pragma once

#include <vex/Error.h>

#include <QString>

namespace vexcli {

/// The arguments make no sense: exit code 2.
inline vex::Error usageFailure(const QString &text, const char *function = __builtin_FUNCTION(),
    const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    vex::Error error(vex::ErrorCode::InvalidInput, text);
    error.ecatch(function, file, line);
    return error;
}

/// The work failed: exit code 1.
inline vex::Error failure(const QString &text, const char *function = __builtin_FUNCTION(),
    const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    vex::Error error(vex::ErrorCode::GeneralFailure, text);
    error.ecatch(function, file, line);
    return error;
}

/// @p error on its way up: one more place in its trace.
template <typename Failure>
Failure passedOn(Failure error, const char *function = __builtin_FUNCTION(),
    const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    error.ecatch(function, file, line);
    return error;
}

/// Ctrl-C ended the work.
inline vex::Error interrupted(const char *function = __builtin_FUNCTION(),
    const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    return failure(QStringLiteral("interrupted, no file was written"), function, file, line);
}

} // namespace vexcli

#pragma once

#include <QMessageLogger>

#include <utility>

namespace vex::detail {

/// A place in the source that a trace or a log message names.
struct TraceSite
{
    const char *file;
    int line;
};

/// A source file; gives the places in it. Kept at the top of each source, see docs/design/0001.
struct TraceSource
{
    const char *file;

    constexpr TraceSite line(int number) const { return {file, number}; }
};

/// Hands @p failure back with @p site added to its trace, when it is a failure.
///
/// The one way to raise and to pass on, for Error and Result alike.
template <typename Failure>
Failure stamped(TraceSite site, const char *function, Failure failure)
{
    failure.ecatch(function, site.file, site.line);
    return failure;
}

/// A message logger that reports @p site as the place of the message.
inline QMessageLogger logAt(TraceSite site, const char *function)
{
    return QMessageLogger(site.file, site.line, function);
}

} // namespace vex::detail

#pragma once

#include <QStringList>
#include <QTest>

#include <vex/Error.h>

namespace vex::test {

/// What a row expects of an error, compared as one value; the trace as "file:line", innermost
/// first.
struct ErrorReport
{
    ErrorCode code = NoError;
    QString message;
    QStringList trace;

    bool operator==(const ErrorReport &) const = default;
};

inline ErrorReport reportOf(const Error &error)
{
    ErrorReport report{error.code(), error.message(), {}};
    for (const Error::Location &at : error.trace())
        report.trace.append(at.file + u':' + QString::number(at.line));
    return report;
}

/// What QCOMPARE prints.
inline char *toString(const ErrorReport &report)
{
    return QTest::toString(
        QStringList{QString::number(report.code), report.message} + report.trace);
}

} // namespace vex::test

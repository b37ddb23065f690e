#include <vex/FileCopierUtils.h>

#include "detail/Trace.h"
#include "platform/ElevatedCopy.h"

#include <QObject>

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/FileCopierUtils"};
namespace at {
constexpr auto badParameters = kSource.line(58);
constexpr auto sourceNotReadable = kSource.line(61);
constexpr auto destinationNotWritable = kSource.line(64);
constexpr auto notCopied = kSource.line(68);
} // namespace at

/// What the helper's exit code tells.
struct Outcome
{
    detail::TraceSite site;
    QString text;
};

Outcome outcomeOf(std::optional<quint32> exitCode)
{
    switch (exitCode.value_or(4)) {
    case 1:
        return {at::badParameters, QObject::tr("Bad parameters provided")};
    case 2:
        return {at::sourceNotReadable, QObject::tr("Source file is not readable")};
    case 3:
        return {at::destinationNotWritable, QObject::tr("Destination file is not writable")};
    default:
        return {at::notCopied, QObject::tr("Copying the file failed")};
    }
}

// Named as traces tell it, on every platform.
Error runFileCopierWindows(const QString &source, const QString &destination)
{
    // Deliberate: one after the other, so that a marker in the source is filled in again.
    const QString withSource = detail::elevatedCopyPattern().arg(source);
    const QString parameters = withSource.arg(destination);
    const auto [exitCode, said] = detail::runElevatedCopy(parameters);
    if (exitCode == 0U)
        return ErrorCode::NoError;
    const auto [site, text] = outcomeOf(exitCode);
    Error error(ErrorCode::GeneralFailure, text);
    if (!said.isEmpty())
        error.addWarning(said);
    return detail::stamped(site, Q_FUNC_INFO, std::move(error));
}

} // namespace

Error FileCopierUtils::runFileCopier(const QString &source, const QString &destination)
{
    return runFileCopierWindows(source, destination);
}

} // namespace vex

#include "output/Messages.h"

#include "Failure.h"
#include "output/Text.h"
#include "platform/Files.h"

#include <vex/CommandLineKeys.h>

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <mutex>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

struct Severity
{
    QLatin1StringView name;
    QtMsgType type;
};

constexpr std::array kSeverities{
    Severity{"debug"_L1, QtDebugMsg},
    Severity{"info"_L1, QtInfoMsg},
    Severity{"warning"_L1, QtWarningMsg},
    Severity{"critical"_L1, QtCriticalMsg},
};

/// Position in kSeverities; fatal messages rank with critical ones.
std::size_t rankOf(QtMsgType type)
{
    const auto found = std::find_if(kSeverities.begin(), kSeverities.end(),
        [type](const Severity &severity) { return severity.type == type; });
    return std::min<std::size_t>(
        static_cast<std::size_t>(found - kSeverities.begin()), kSeverities.size() - 1);
}

std::mutex mutex; // messages come from more than one thread
std::size_t lowestRank = 2; // warnings and worse
std::unique_ptr<QFile> logFile;

/// One line each on standard error and in the log.
void say(const QString &shown, const QString &logged)
{
    const std::scoped_lock lock(mutex);
    std::fprintf(stderr, "vex: %s\n", qUtf8Printable(shownText(shown)));
    if (!logFile)
        return;
    const QByteArray line = (QDateTime::currentDateTime().toString(Qt::ISODateWithMs) + u' '
        + shownText(logged) + u'\n')
                                .toUtf8();
    if (logFile->write(line) == line.size())
        return;
    const QString problem =
        u"cannot write %1: %2"_s.arg(logFile->fileName(), logFile->errorString());
    logFile.reset();
    std::fprintf(stderr, "vex: %s\n", qUtf8Printable(shownText(problem)));
}

void handleMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    const std::size_t rank = rankOf(type);
    if (rank < lowestRank)
        return;
    constexpr auto kHeading = "Application arguments:\n"_L1; // what stands below goes behind it
    const QString flat = text.startsWith(kHeading)
        ? kHeading.chopped(1) + u' ' + text.sliced(kHeading.size())
        : text;
    const QString line = "%1: %2"_L1.arg(kSeverities[rank].name,
        flat.startsWith(u'\t') ? "  "_L1 + flat.sliced(1) : flat); // a line of a backtrace
    say(line, line);
}

} // namespace

void warn(const QString &text)
{
    qWarning("%s", qUtf8Printable(text));
}

void sayError(const QString &text)
{
    say(text, "error: "_L1 + text);
}

vex::Error setUpMessages(const QString &logPath, const QString &severity)
{
    if (!severity.isEmpty()) {
        const auto found = std::find_if(kSeverities.begin(), kSeverities.end(),
            [&severity](const Severity &known) { return severity == known.name; });
        if (found == kSeverities.end())
            return usageFailure(u"--%1 '%2' is none of debug, info, warning, critical"_s.arg(
                vex::klog_severity, severity));
        lowestRank = static_cast<std::size_t>(found - kSeverities.begin());
    }
    if (!logPath.isEmpty()) {
        const bool isDevice = !devicePath(logPath).isEmpty(); // which has no end to go to
        auto file = std::make_unique<QFile>(isDevice ? devicePath(logPath) : logPath);
        if (!file->open(QIODevice::WriteOnly | QIODevice::Unbuffered
                | (isDevice ? QIODevice::NotOpen : QIODevice::Append)))
            return failure(u"cannot write %1: %2"_s.arg(logPath, file->errorString()));
        logFile = std::move(file);
    }
    qInstallMessageHandler(handleMessage);
    return vex::ErrorCode::NoError;
}

} // namespace vexcli

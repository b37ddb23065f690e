#include "output/Messages.h"

#include "Failure.h"
#include "output/Text.h"

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

void handleMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    const std::size_t rank = rankOf(type);
    if (rank < lowestRank)
        return;
    const QString line = "%1: %2\n"_L1.arg(kSeverities[rank].name, shownText(text));
    const std::scoped_lock lock(mutex);
    std::fprintf(stderr, "vex: %s", qUtf8Printable(line));
    if (logFile) {
        logFile->write(
            (QDateTime::currentDateTime().toString(Qt::ISODateWithMs) + u' ' + line).toUtf8());
        logFile->flush();
    }
}

} // namespace

void warn(const QString &text)
{
    qWarning("%s", qUtf8Printable(text));
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
        auto file = std::make_unique<QFile>(logPath);
        if (!file->open(QIODevice::WriteOnly | QIODevice::Append))
            return failure(u"cannot write %1: %2"_s.arg(logPath, file->errorString()));
        logFile = std::move(file);
    }
    qInstallMessageHandler(handleMessage);
    return vex::ErrorCode::NoError;
}

} // namespace vexcli

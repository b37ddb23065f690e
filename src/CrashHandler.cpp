#include <vex/CrashHandler.h>

#include "detail/Backtrace.h"
#include "platform/CrashFilter.h"
#include "platform/StackWalk.h"

#include <QDebug>

#include <cstring>
#include <mutex>

using namespace std::chrono_literals;

namespace {

constexpr const char *kOthersVariable = "VEX_MULTIPLE_EXCEPTION_HANDLERS_ENABLED";
constexpr auto kTellingLimit = 2500ms; // to collect, name and log the frames
constexpr auto kDamagedLimit = 1500ms; // for receivers after that has failed

std::atomic<bool> isHandlingEnabled = true;
std::atomic<bool> isBacktraceEnabled = true;
bool isInstalled = false; // guarded by mutex
std::mutex mutex; // never taken at a crash
std::atomic<std::chrono::milliseconds> receiverLimit = 0ms;

/// How far the handling of a crash has come. The rescue goes on from there.
enum class Step {
    None,
    Telling, ///< nothing is out yet
    Receiving, ///< receivers of the signal run
};
std::atomic<Step> step = Step::None;

// Of the crash; there is one at a time.
constinit vex::detail::Backtrace backtrace;
constinit vex::detail::FixedText<std::size_t{256} * 1024> backtraceLines;

void updateLines()
{
    backtraceLines.clear();
    vex::detail::forEachLine(backtrace, [](const char *line) { backtraceLines << line << "\n"; });
}

void emitCrash(EXCEPTION_POINTERS *pointers)
{
    Q_EMIT CrashHandler::instance()->crashDetected(pointers);
}

/// What the system is told: 1 for the end of the process, 0 for further handlers.
int answer()
{
    return vex::detail::numberFromEnvironment(kOthersVariable) < 1 ? 1 : 0;
}

int filter(EXCEPTION_POINTERS *pointers)
{
    if (!isHandlingEnabled) // reached through a handler that was put on top of this one
        return 0;
    step = Step::Telling;
    vex::detail::limitCrashFilter(kTellingLimit);
    CrashHandler::instance();
    CrashHandler::crashHandler(pointers);
    step = Step::None;
    return answer();
}

int rescue(EXCEPTION_POINTERS *pointers)
{
    const Step before = step.exchange(Step::Receiving);
    vex::detail::limitCrashFilter(kDamagedLimit);
    if (isBacktraceEnabled) {
        updateLines();
        constexpr const char *kFailed =
            "The crash below could not be handled as usual: the handling failed or hung.\n";
        vex::detail::writeToStandardError(kFailed, std::strlen(kFailed));
        vex::detail::writeToStandardError(backtraceLines.text(), backtraceLines.size());
    }
    if (before == Step::Telling)
        emitCrash(pointers);
    return answer();
}

} // namespace

CrashHandler *CrashHandler::instance()
{
    // never destroyed: static destructors may crash
    static auto *const handler = new CrashHandler(nullptr);
    return handler;
}

CrashHandler::CrashHandler(QObject *parent)
    : QObject(parent)
{
    const std::scoped_lock lock(mutex);
    isInstalled = isHandlingEnabled;
    if (isInstalled)
        vex::detail::installCrashFilter({filter, rescue});
    else
        qDebug("Crash handling is disabled");
}

void CrashHandler::disableCrashHandler()
{
    const std::scoped_lock lock(mutex);
    isHandlingEnabled = false;
    if (isInstalled)
        restoreCrashHandler();
    isInstalled = false;
}

void CrashHandler::restoreCrashHandler()
{
    vex::detail::restoreCrashFilter();
}

void CrashHandler::setDumpBacktraceOnCrashEnabled(bool isEnabled)
{
    isBacktraceEnabled = isEnabled;
}

void CrashHandler::setReceiverTimeLimit(std::chrono::milliseconds limit)
{
    receiverLimit = limit;
    if (step == Step::Receiving)
        vex::detail::limitCrashFilter(limit);
}

void CrashHandler::prepareThread()
{
    vex::detail::prepareThreadForCrash();
}

QByteArrayView CrashHandler::backtraceText()
{
    return {backtraceLines.text(), qsizetype(backtraceLines.size())};
}

void CrashHandler::crashHandler(EXCEPTION_POINTERS *pointers)
{
    static std::mutex direct; // for applications that call this; a crash takes no lock
    std::unique_lock lock(direct, std::defer_lock);
    if (step == Step::None)
        lock.lock();
    if (isBacktraceEnabled) {
        // all that needs no memory comes before the first message
        vex::detail::collectFrames(pointers, &backtrace);
        vex::detail::nameFrames(&backtrace);
        updateLines();
        instance()->dumpBacktrace(pointers);
    }
    if (step == Step::Telling) {
        step = Step::Receiving;
        vex::detail::limitCrashFilter(receiverLimit);
    }
    emitCrash(pointers);
}

void CrashHandler::dumpBacktrace(EXCEPTION_POINTERS *)
{
    vex::detail::demangleNames(&backtrace);
    updateLines();
    vex::detail::forEachLine(backtrace, [](const char *line) { qDebug("%s", line); });
}

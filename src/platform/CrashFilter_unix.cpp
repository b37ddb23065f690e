#include "platform/CrashFilter.h"

#include "detail/DecimalOrZero.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <tuple>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vex::detail {

namespace {

constexpr std::array kSignals{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};
constexpr int kWatchSignal = SIGALRM;
constexpr std::size_t kStackSize = std::size_t{512} * 1024; // receivers run on it
constexpr std::size_t kGuardSize = std::size_t{64} * 1024; // a multiple of every page size

CrashCalls calls;
std::array<struct sigaction, kSignals.size()> previous;

// Of the crash; there is one at a time.
std::atomic<pid_t> crashedThread = 0;
EXCEPTION_POINTERS crash;
std::atomic<int> troubles = 0; // of its handling
timer_t watch;
bool isWatched = false;
struct sigaction previousWatch;

pid_t thisThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

/// What was there for @p signal.
struct sigaction &previousFor(int signal)
{
    return previous[static_cast<std::size_t>(
        std::find(kSignals.begin(), kSignals.end(), signal) - kSignals.begin())];
}

void setBlocked(int signal, bool isBlocked)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    pthread_sigmask(isBlocked ? SIG_BLOCK : SIG_UNBLOCK, &signals, nullptr);
}

void resetAction(int signal)
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(signal, &standard, nullptr);
}

/// Sends the crashing signal once more to this thread, with all that is known of its cause.
void sendAgain()
{
    if (syscall(SYS_rt_tgsigqueueinfo, getpid(), thisThread(), crash.signal, crash.info) != 0)
        raise(crash.signal);
}

/// Whether it came from a program, such as kill(1) or abort(), and does not come again by itself.
bool isSent()
{
    return crash.info->si_code <= 0 || crash.signal == SIGABRT;
}

/// Has the signal come again once the handler has returned, to where the crash was.
void sendAfterReturn()
{
    setBlocked(crash.signal, true);
    sendAgain();
    sigdelset(&crash.context->uc_sigmask, crash.signal);
}

[[noreturn]] void endByCrash()
{
    resetAction(crash.signal);
    setBlocked(crash.signal, false);
    sendAgain();
    constexpr int kSignalStatus = 128; // as a shell shows the end by a signal
    _exit(kSignalStatus + crash.signal);
}

/// The handling of the crash has crashed or takes too long.
[[noreturn]] void rescue()
{
    if (troubles.fetch_add(1) == 0 && calls.rescue(&crash) != 1) {
        sigaction(crash.signal, &previousFor(crash.signal), nullptr);
        setBlocked(crash.signal, false);
        sendAgain();
    }
    endByCrash();
}

/// The watch's signals come to the thread that has crashed; an alarm of the application's may come
/// to any.
extern "C" void onWatch(int, siginfo_t *info, void *)
{
    if (info->si_code == SI_TIMER && info->si_value.sival_ptr == &watch)
        rescue();
}

void startWatch()
{
    struct sigaction action = {};
    action.sa_sigaction = onWatch;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER; // the rescue is watched too
    struct sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = kWatchSignal;
    event.sigev_value.sival_ptr = &watch;
    event._sigev_un._tid = thisThread();
    // not that of the C library, which allocates in some versions
    isWatched = sigaction(kWatchSignal, &action, &previousWatch) == 0
        && syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &watch) == 0;
    setBlocked(kWatchSignal, false);
}

void endWatch()
{
    if (isWatched)
        syscall(SYS_timer_delete, watch);
    isWatched = false;
    sigaction(kWatchSignal, &previousWatch, nullptr);
}

/// Descriptors in reserve: a process that has run out of them crashes soon, and still has to read
/// its debug data and to write its report.
class SpareDescriptors
{
public:
    void take()
    {
        constexpr rlim_t kPlenty = 256; // a process that may have few needs them all
        rlimit limit = {};
        if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur < kPlenty)
            return;
        for (int &spare : m_descriptors)
            spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
        struct stat there = {};
        if (stat("/dev/null", &there) == 0)
            m_device = there.st_rdev;
    }
    void release()
    {
        for (int &spare : m_descriptors) {
            struct stat there = {};
            // somebody may have closed all there were, and opened others
            if (spare >= 0 && fstat(spare, &there) == 0 && S_ISCHR(there.st_mode)
                && there.st_rdev == m_device)
                close(spare);
            spare = -1;
        }
    }

private:
    std::array<int, 4> m_descriptors = {-1, -1, -1, -1};
    dev_t m_device = 0;
};
constinit SpareDescriptors spares;

/// Waits for the end of the process, for another handler to have mended the crash, or for the
/// thread that tells of one to be gone.
void waitForOther()
{
    for (pid_t other = crashedThread; other != 0; other = crashedThread) {
        if (syscall(SYS_tgkill, getpid(), other, 0) != 0)
            crashedThread.compare_exchange_strong(other, 0);
        constexpr timespec kSoon{0, 10'000'000};
        nanosleep(&kSoon, nullptr);
    }
}

extern "C" void onCrash(int signal, siginfo_t *info, void *context)
{
    const int error = errno;
    pid_t nobody = 0;
    const pid_t self = thisThread();
    if (!crashedThread.compare_exchange_strong(nobody, self)) {
        if (nobody == self)
            rescue();
        waitForOther();
        errno = error;
        return; // and comes again, if the cause is still there
    }
    crash = {signal, info, static_cast<ucontext_t *>(context)};
    troubles = 0;
    spares.release();
    startWatch();
    const bool isOver = calls.filter(&crash) == 1;
    endWatch();
    if (isOver) {
        resetAction(signal);
        sendAfterReturn(); // a core dump then shows the crash, not its handling
        return;
    }
    sigaction(signal, &previousFor(signal), nullptr);
    if (isSent())
        sendAfterReturn();
    crashedThread = 0;
    errno = error;
}

/// A stack of its own for the handlers of signals of a thread.
class SignalStack
{
public:
    SignalStack() = default;
    ~SignalStack()
    {
        if (!m_memory)
            return;
        stack_t now = {};
        sigaltstack(nullptr, &now);
        if (now.ss_sp == stackStart())
            sigaltstack(&m_previous, nullptr);
        munmap(m_memory, kGuardSize + kStackSize);
    }
    SignalStack(const SignalStack &) = delete;
    SignalStack &operator=(const SignalStack &) = delete;

    /// Keeps one that is there if it is large enough.
    void prepare()
    {
        stack_t now = {};
        if (m_memory || sigaltstack(nullptr, &now) != 0)
            return;
        if ((now.ss_flags & SS_DISABLE) == 0 && now.ss_size >= kStackSize)
            return;
        void *const memory = mmap(nullptr, kGuardSize + kStackSize, PROT_READ | PROT_WRITE,
            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
        if (memory == MAP_FAILED)
            return;
        m_memory = static_cast<char *>(memory);
        mprotect(m_memory, kGuardSize, PROT_NONE); // stacks grow downwards
        m_previous = now;
        const stack_t stack{stackStart(), 0, kStackSize};
        sigaltstack(&stack, nullptr);
    }

private:
    char *stackStart() const { return m_memory + kGuardSize; }

    char *m_memory = nullptr;
    stack_t m_previous = {};
};

} // namespace

void installCrashFilter(const CrashCalls &newCalls)
{
    calls = newCalls;
    spares.take();
    prepareThreadForCrash();
    struct sigaction action = {};
    action.sa_sigaction = onCrash;
    // not deferred: a crash of the handling comes here again
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (const int signal : kSignals)
        sigaction(signal, &action, &previousFor(signal));
}

void restoreCrashFilter()
{
    for (const int signal : kSignals) {
        struct sigaction now = {};
        sigaction(signal, nullptr, &now);
        if ((now.sa_flags & SA_SIGINFO) != 0 && now.sa_sigaction == onCrash)
            sigaction(signal, &previousFor(signal), nullptr);
    }
    spares.release();
}

void prepareThreadForCrash()
{
    thread_local SignalStack stack;
    stack.prepare();
}

void limitCrashFilter(std::chrono::milliseconds limit)
{
    if (!isWatched)
        return;
    constexpr long kMillisecondsInSecond = 1000;
    constexpr long kNanosecondsInMillisecond = 1'000'000;
    itimerspec time = {};
    limit = std::max(limit, std::chrono::milliseconds(0));
    time.it_value.tv_sec = static_cast<time_t>(limit.count() / kMillisecondsInSecond);
    time.it_value.tv_nsec =
        static_cast<long>(limit.count() % kMillisecondsInSecond) * kNanosecondsInMillisecond;
    syscall(SYS_timer_settime, watch, 0, &time, nullptr);
}

int numberFromEnvironment(const char *name)
{
    const char *const text = std::getenv(name);
    return text ? decimalOrZero(text) : 0;
}

void writeToStandardError(const char *text, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = write(STDERR_FILENO, text, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        text += written;
        size -= static_cast<std::size_t>(written);
    }
}

} // namespace vex::detail

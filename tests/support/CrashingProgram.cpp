// Takes the steps that its arguments name, one after the other; tst_CrashHandler looks at what is
// left.

#include <QDebug>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <vex/CrashHandler.h>

#ifdef _WIN32
#    include <windows.h>
#else
#    include <fcntl.h>
#    include <sys/mman.h>
#    include <sys/resource.h>
#    include <unistd.h>
#endif

namespace {

int *volatile nowhere = nullptr;
volatile int depthReached = 0;

[[gnu::noinline]] void crash()
{
    *nowhere = 1;
}

[[gnu::noinline]] void crashDeep(int depth)
{
    if (depth == 0)
        crash();
    else
        crashDeep(depth - 1);
    depthReached = depth;
}

[[gnu::noinline]] int overflow(int depth)
{
    volatile char space[4096];
    space[0] = static_cast<char>(depth);
    return depthReached == 0 ? overflow(depth + 1) + space[0] : depth;
}

void wait(std::chrono::milliseconds time)
{
    std::this_thread::sleep_for(time);
}

template <typename Receiver>
void receive(const Receiver &receiver)
{
    QObject::connect(CrashHandler::instance(), &CrashHandler::crashDetected, receiver);
}

void install()
{
    receive([] { std::fputs("received\n", stderr); });
}

/// From several threads at once.
void installFromThreads()
{
    std::vector<CrashHandler *> seen(8);
    std::vector<std::thread> threads;
    for (CrashHandler *&one : seen)
        threads.emplace_back([&one] { one = CrashHandler::instance(); });
    for (std::thread &thread : threads)
        thread.join();
    for (CrashHandler *one : seen) {
        if (one != seen[0])
            std::exit(3);
    }
    install();
}

template <void (*logging)()>
void log()
{
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &) { logging(); });
}

// Handlers of the application's own.
#ifdef _WIN32
LONG WINAPI handleOwn(EXCEPTION_POINTERS *)
{
    std::fputs("own handler\n", stderr);
    return EXCEPTION_EXECUTE_HANDLER;
}

void installOwn()
{
    SetUnhandledExceptionFilter(handleOwn);
}

/// What the system would be told: 1 ends the process, 0 goes on searching.
void askFilter()
{
    CONTEXT context;
    RtlCaptureContext(&context);
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    EXCEPTION_POINTERS pointers = {&record, &context};
    std::fprintf(stderr, "answer %ld\n", SetUnhandledExceptionFilter(nullptr)(&pointers));
}
#else
struct sigaction handlerBelow;

void handleOwn(int signal, siginfo_t *info, void *)
{
    std::fprintf(stderr, "own handler, %s\n", info->si_code == SEGV_MAPERR ? "unmapped" : "sent");
    std::signal(signal, SIG_DFL);
}

void handleAndPassOn(int signal, siginfo_t *info, void *context)
{
    std::fputs("own handler\n", stderr);
    handlerBelow.sa_sigaction(signal, info, context);
}

void handleAndMend(int, siginfo_t *info, void *)
{
    mprotect(
        info->si_addr, static_cast<std::size_t>(sysconf(_SC_PAGESIZE)), PROT_READ | PROT_WRITE);
}

void installOwn(void (*handle)(int, siginfo_t *, void *))
{
    struct sigaction action = {};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigaddset(&action.sa_mask, SIGUSR2);
    sigaction(SIGSEGV, &action, &handlerBelow);
    sigaction(SIGABRT, &action, nullptr);
}

void installOwn()
{
    installOwn(handleOwn);
}

/// Remembers what the system has for each signal; the second time it compares.
void compareActions()
{
    constexpr int kOfTheLibrary = 0x04000000; // the C library adds it to whatever is set
    std::string text;
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS, SIGALRM}) {
        struct sigaction now = {};
        sigaction(signal, nullptr, &now);
        text += std::to_string(reinterpret_cast<std::size_t>(now.sa_sigaction)) + ' '
            + std::to_string(now.sa_flags & ~kOfTheLibrary)
            + (sigismember(&now.sa_mask, SIGUSR2) ? " m\n" : "\n");
    }
    static std::string before;
    if (!before.empty())
        std::fputs(text == before ? "same\n" : "other\n", stderr);
    else
        before = text;
}

void useUpDescriptors()
{
    const rlimit few{256, 256};
    setrlimit(RLIMIT_NOFILE, &few);
    while (open("/dev/null", O_RDONLY) >= 0) { }
}

void writeWhereMended()
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void *const memory = mmap(nullptr, page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char *>(memory) = 1;
    std::fputs("goes on\n", stderr);
}

void callWild()
{
    const auto wild = reinterpret_cast<void (*)()>(0x7fff'0000'1000);
    wild();
    depthReached = 1;
}
#endif

const std::map<std::string, void (*)()> kSteps{
    {"abort", [] { std::abort(); }},
    {"call", [] { CrashHandler::crashHandler(nullptr); }},
    {"crash", crash},
    {"crash-deep", [] { crashDeep(500); }},
    {"disable", CrashHandler::disableCrashHandler},
    {"install", install},
    {"install-in-threads", installFromThreads},
    {"limit", [] { CrashHandler::setReceiverTimeLimit(std::chrono::milliseconds(300)); }},
    {"log-aborts", log<[] { std::abort(); }>},
    {"log-hangs", log<[] { wait(std::chrono::hours(1)); }>},
    {"overflow-prepared",
        [] {
            std::thread([] {
                CrashHandler::prepareThread();
                overflow(0);
            }).join();
        }},
    {"own", installOwn},
    {"receiver-crashes", [] { receive(crash); }},
    {"receiver-hangs", [] { receive([] { wait(std::chrono::hours(1)); }); }},
    {"receiver-waits", [] { receive([] { wait(std::chrono::milliseconds(2800)); }); }},
    {"silent", [] { CrashHandler::setDumpBacktraceOnCrashEnabled(false); }},
#ifdef _WIN32
    {"ask-filter", askFilter},
#else
    {"alarm", [] { alarm(1); }},
    {"alarm-now", [] { std::raise(SIGALRM); }},
    {"compare", compareActions},
    {"own-mends", [] { installOwn(handleAndMend); }},
    {"own-passes-on", [] { installOwn(handleAndPassOn); }},
    {"trap", [] { std::raise(SIGTRAP); }},
    {"use-up-descriptors", useUpDescriptors},
    {"wild-call", callWild},
    {"write-where-mended", writeWhereMended},
#endif
};

} // namespace

int main(int count, char **arguments)
{
#ifdef _WIN32
    SetErrorMode(SEM_NOGPFAULTERRORBOX);
    std::setvbuf(stderr, nullptr, _IONBF, 0); // a pipe is buffered, which the end leaves behind
#else
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
#endif
    for (int i = 1; i < count; ++i)
        kSteps.at(arguments[i])();
    return 0;
}

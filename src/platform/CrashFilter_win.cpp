#include "platform/CrashFilter.h"

#include "detail/DecimalOrZero.h"
#include "platform/Unwind_win.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>

#include <windows.h>

namespace vex::detail {

namespace {

// What the system calls for an exception that nobody has handled, and what the C library calls for
// abort(). An exception in the filter comes to the same function again, unless a receiver has a
// handler (__try) around it: so no vectored handler is needed, which would take those away from it.

using SignalHandler = void (*)(int);

constexpr DWORD kGccException = 0x20474343; // "CCG " of GCC, without the bits of its kind
constexpr DWORD kGccExceptionMask = 0x20ffffff;
constexpr UINT kExitOfAbort = 3;
constexpr DWORD kPollMilliseconds = 10;
constexpr SIZE_T kWatcherStack = SIZE_T{256} * 1024; // receivers may run on it
constexpr ULONG kStackReserve = ULONG{128} * 1024; // under Wine what we do uses a fifth

enum class Stage {
    None,
    Filter,
    Rescue,
    Over, ///< the filter has answered: the process is to end
};

CrashCalls crashCalls = {}; // the first three do not change while ours is installed
LPTOP_LEVEL_EXCEPTION_FILTER previousFilter = nullptr;
SignalHandler previousAbort = SIG_DFL;
std::atomic<bool> isInstalled = false;

// Of the crash; set by the thread that has come first, before the stage is Filter.
std::atomic<DWORD> crashedThread = 0;
EXCEPTION_POINTERS *crashPointers = nullptr;
UINT crashExit = 0;
HANDLE crashedThreadHandle = nullptr;

std::atomic<Stage> stage = Stage::None;
std::atomic<DWORD> rescuingThread = 0;
std::atomic<ULONGLONG> limitEnd = 0; // 0 for none
HANDLE crashEvent = nullptr; // what the watchers wait for

[[noreturn]] void waitForTheEnd()
{
    for (;;)
        Sleep(INFINITE);
}

[[noreturn]] void endProcess(UINT exit)
{
    TerminateProcess(GetCurrentProcess(), exit);
    waitForTheEnd();
}

[[noreturn]] void rescueAndEnd()
{
    crashCalls.rescue(crashPointers);
    endProcess(crashExit);
}

/// @return whether the caller is to call the rescue
bool takeOver()
{
    Stage expected = Stage::Filter;
    if (!stage.compare_exchange_strong(expected, Stage::Rescue))
        return false;
    rescuingThread = GetCurrentThreadId();
    return true;
}

DWORD WINAPI watch(void *isFirst);

void startWatcher(bool isFirst)
{
    const HANDLE thread = CreateThread(nullptr, kWatcherStack, watch, isFirst ? &stage : nullptr,
        STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread)
        CloseHandle(thread);
}

/// Two threads do this: one has the rescue run when the time is over, the other watches that. They
/// are there before a crash. A thread that starts holds the lock of the loader and allocates: when
/// the crash was in the allocator, the filter and the thread would wait for each other for ever.
DWORD WINAPI watch(void *isFirst)
{
    if (isFirst) // so that only one of them takes the caller's time
        startWatcher(false);
    WaitForSingleObject(crashEvent, INFINITE);
    for (; isInstalled && stage != Stage::Over; Sleep(kPollMilliseconds)) {
        ULONGLONG end = limitEnd;
        if (end == 0 || GetTickCount64() < end || !limitEnd.compare_exchange_strong(end, 0))
            continue; // the other thread may have been faster
        if (stage == Stage::Rescue)
            endProcess(crashExit);
        if (takeOver()) {
            SuspendThread(crashedThreadHandle); // it hangs, and must not go on in between
            rescueAndEnd();
        }
    }
    return 0;
}

/// Where they cannot be had, and while the process ends as usual, which ends them first, there is
/// no limit.
void startWatchers()
{
    if (!crashEvent)
        crashEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!crashEvent || !ResetEvent(crashEvent))
        return;
    startWatcher(true);
}

/// @return what the filter has answered
int handleCrash(EXCEPTION_POINTERS *pointers, UINT exit)
{
    const DWORD self = GetCurrentThreadId();
    DWORD first = 0;
    if (crashedThread.compare_exchange_strong(first, self)) {
        crashPointers = pointers;
        crashExit = exit;
        DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(),
            &crashedThreadHandle, THREAD_SUSPEND_RESUME, FALSE, 0);
        stage = Stage::Filter;
        const int answer = crashCalls.filter(pointers);
        Stage expected = Stage::Filter;
        if (!stage.compare_exchange_strong(expected, Stage::Over))
            waitForTheEnd(); // time was over just now
        return answer;
    }
    // the rescue crashes, or what runs while the stack is unwound at the end
    if (self == rescuingThread || (self == first && stage == Stage::Over))
        endProcess(crashExit);
    if (self == first && takeOver())
        rescueAndEnd();
    waitForTheEnd();
}

LONG WINAPI onException(EXCEPTION_POINTERS *pointers)
{
    const EXCEPTION_RECORD *record = pointers->ExceptionRecord;
    if (!isInstalled) // called by what others have installed on top
        return previousFilter ? previousFilter(pointers) : EXCEPTION_CONTINUE_SEARCH;
    // an uncaught C++ exception: GCC's throw goes on, to std::terminate() and abort()
    if ((record->ExceptionCode & kGccExceptionMask) == kGccException
        && (record->ExceptionFlags & EXCEPTION_NONCONTINUABLE) == 0)
        return EXCEPTION_CONTINUE_EXECUTION;
    return handleCrash(pointers, record->ExceptionCode);
}

void onAbort(int)
{
    // the C library has taken ours out, and other threads, or the filter, may abort now
    if (isInstalled) {
        std::signal(SIGABRT, onAbort);
        CONTEXT context;
        RtlCaptureContext(&context);
        unwindOnce(&context); // what is of interest called this
        EXCEPTION_RECORD record = {};
        record.ExceptionCode = static_cast<DWORD>(STATUS_FATAL_APP_EXIT);
        record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
        record.ExceptionAddress = reinterpret_cast<void *>(context.Rip);
        EXCEPTION_POINTERS pointers = {&record, &context};
        if (handleCrash(&pointers, kExitOfAbort) != 0)
            endProcess(kExitOfAbort);
        std::signal(SIGABRT, SIG_DFL);
    }
    if (previousAbort != SIG_DFL && previousAbort != SIG_IGN)
        previousAbort(SIGABRT);
}

/// A system that commits a stack as a whole (Wine) has its guard page at the very end, where it
/// leaves nothing of the reserve. One more goes to the reserve's beginning.
void guardReserve(ULONG bytes)
{
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    auto *page = reinterpret_cast<void *>(low + bytes);
    MEMORY_BASIC_INFORMATION memory = {};
    const bool isBelowUs = low + 2 * ULONG_PTR{bytes} < reinterpret_cast<ULONG_PTR>(&memory);
    if (!isBelowUs || VirtualQuery(page, &memory, sizeof memory) == 0 || memory.State != MEM_COMMIT
        || memory.Protect != PAGE_READWRITE)
        return;
    DWORD before = 0;
    VirtualProtect(page, system.dwPageSize, PAGE_READWRITE | PAGE_GUARD, &before);
}

} // namespace

void installCrashFilter(const CrashCalls &calls)
{
    crashCalls = calls;
    previousFilter = SetUnhandledExceptionFilter(onException);
    const SignalHandler previous = std::signal(SIGABRT, onAbort);
    previousAbort = previous == SIG_ERR ? SIG_DFL : previous;
    isInstalled = true;
    startWatchers();
    prepareThreadForCrash();
}

void restoreCrashFilter()
{
    isInstalled = false;
    if (crashEvent)
        SetEvent(crashEvent); // ends the watchers
    const auto filter = SetUnhandledExceptionFilter(previousFilter);
    if (filter != onException)
        SetUnhandledExceptionFilter(filter);
    const SignalHandler handler = std::signal(SIGABRT, previousAbort);
    if (handler != onAbort)
        std::signal(SIGABRT, handler);
}

void prepareThreadForCrash()
{
    ULONG bytes = 0;
    SetThreadStackGuarantee(&bytes); // only asks
    if (bytes < kStackReserve) {
        ULONG reserve = kStackReserve;
        if (!SetThreadStackGuarantee(&reserve)) // a smaller stack
            return;
    }
    guardReserve(std::max(bytes, kStackReserve));
}

void limitCrashFilter(std::chrono::milliseconds limit)
{
    if (limit.count() <= 0 || stage == Stage::None) {
        limitEnd = 0;
        return;
    }
    limitEnd = GetTickCount64() + static_cast<ULONGLONG>(limit.count());
    if (crashEvent)
        SetEvent(crashEvent);
}

int numberFromEnvironment(const char *name)
{
    std::array<char, 512> text = {};
    constexpr auto kSize = static_cast<DWORD>(std::tuple_size_v<decltype(text)>);
    const DWORD length = GetEnvironmentVariableA(name, text.data(), kSize);
    return length < kSize ? decimalOrZero(text.data()) : 0;
}

void writeToStandardError(const char *text, std::size_t size)
{
    const HANDLE file = GetStdHandle(STD_ERROR_HANDLE);
    DWORD written = 0;
    for (; size > 0 && WriteFile(file, text, static_cast<DWORD>(size), &written, nullptr)
         && written > 0;
         text += written)
        size -= written;
}

} // namespace vex::detail

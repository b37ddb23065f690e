#include "Crashes.h"

#include "platform/ProcessorFaults.h"

#include <vex/CrashHandler.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

using namespace Qt::StringLiterals;

namespace vexcli {

// Not hidden: of a hidden class the compiler would know every heir, and call that.
struct Shape
{
    Shape()
    {
        Shape *volatile self = this;
        self->drawOutline(); // NOLINT: as all here, what no program is to do
    }
    virtual ~Shape() = default;
    Shape(const Shape &) = delete;
    Shape &operator=(const Shape &) = delete;
    virtual void drawOutline() = 0;
};

struct Circle : Shape
{
    void drawOutline() override { }
};

namespace {

// Compilers leave out, or refuse, what they see to be wrong; they do not see through these.
int *volatile nowhere = nullptr;
void (*volatile noFunction)() = nullptr;
volatile int zero = 0;
volatile std::size_t kept = 0;

[[gnu::noinline]] void writeToNull()
{
    *nowhere = 1;
}

[[gnu::noinline]] void callNull()
{
    noFunction();
    kept = 1; // no call at the very end, which would leave no trace of this function
}

[[gnu::noinline]] void divideByZero()
{
    constexpr int kDividend = 100;
    zero = kDividend / zero;
}

[[gnu::noinline]] void callAbort()
{
    std::abort();
}

[[gnu::noinline]] void throwException()
{
    if (zero == 0)
        throw std::runtime_error("an exception that nobody catches");
}

[[gnu::noinline]] void throwDespitePromise() noexcept // NOLINT(bugprone-exception-escape)
{
    throwException();
    kept = 1;
}

[[gnu::noinline]] void callPureVirtual()
{
    Circle circle; // not yet one while its base is made
}

[[gnu::noinline]] std::size_t fillStack(std::size_t depth)
{
    volatile char space[4096];
    space[0] = static_cast<char>(depth);
    return zero == 0 ? fillStack(depth + 1) + static_cast<unsigned char>(space[0]) : depth;
}

void overflowStack()
{
    kept = fillStack(0);
}

[[gnu::noinline]] void recurse(int depth)
{
    if (depth == 0)
        writeToNull();
    else
        recurse(depth - 1);
    kept = kept + 1;
}

/// Writes into memory that is given back already, so that the next request of any fails inside the
/// heap.
[[gnu::noinline]] void damageHeap()
{
    constexpr std::size_t kSize = 4000;
    constexpr std::size_t kNotes = 64; // of the heap, in memory that it has back
    // between others in use: free memory side by side would become one
    void *volatile before = std::malloc(kSize);
    void *volatile block = std::malloc(kSize);
    void *volatile behind = std::malloc(kSize);
    std::free(block);
    for (std::size_t i = 0; i < kNotes; ++i)
        static_cast<volatile char *>(block)[i] = 0x11; // NOLINT: after it is freed
    kept = reinterpret_cast<std::size_t>(before) + reinterpret_cast<std::size_t>(behind);
    for (std::size_t size = kSize / 2; size < 100 * kSize; size += kSize / 2)
        kept = kept + reinterpret_cast<std::size_t>(std::malloc(size));
    std::abort(); // should the heap live with it
}

void damageHeapBesideThread()
{
    std::thread([] { std::this_thread::sleep_for(std::chrono::minutes(1)); }).detach();
    damageHeap();
}

struct LastObject
{
    bool isArmed = false;
    LastObject() = default;
    ~LastObject()
    {
        if (isArmed)
            writeToNull();
    }
    LastObject(const LastObject &) = delete;
    LastObject &operator=(const LastObject &) = delete;
};
LastObject lastObject;

void crashAtExit()
{
    lastObject.isArmed = true;
}

void crashInReceiver()
{
    QObject::connect(CrashHandler::instance(), &CrashHandler::crashDetected, divideByZero);
    writeToNull();
}

void crashInTwoThreads()
{
    static std::atomic<int> ready = 0;
    const auto crash = [] {
        ++ready;
        while (ready < 2)
            std::this_thread::yield();
        writeToNull();
    };
    std::thread(crash).detach();
    crash();
}

} // namespace

std::span<const Crash> crashes()
{
    static const std::array kCrashes{
        Crash{"null-write"_L1, "writes to a null pointer"_L1, writeToNull},
        Crash{"null-call"_L1, "calls a null function pointer"_L1, callNull},
        Crash{"divide"_L1, "divides an integer by zero"_L1,
            isDivisionByZeroCaught ? divideByZero : nullptr},
        Crash{"illegal"_L1, "runs an instruction that no processor has"_L1, illegalInstruction},
        Crash{"bus"_L1, "reads memory behind the end of its file"_L1, busError},
        Crash{"abort"_L1, "calls abort()"_L1, callAbort},
        Crash{"exception"_L1, "throws an exception that nobody catches"_L1, throwException},
        Crash{"noexcept"_L1, "throws through a function that promises not to"_L1,
            throwDespitePromise},
        Crash{"pure-virtual"_L1, "calls a function that its class does not have yet"_L1,
            callPureVirtual},
        Crash{"thread"_L1, "writes to a null pointer in a second thread"_L1, writeToNull, true},
        Crash{"stack-overflow"_L1, "recurses until the stack is full"_L1, overflowStack},
        Crash{"thread-stack-overflow"_L1, "does so in a second thread"_L1, overflowStack, true},
        Crash{"recursion"_L1, "writes to a null pointer 200 calls deep"_L1, [] { recurse(200); }},
        Crash{"heap"_L1, "damages the heap, and crashes inside it"_L1, damageHeap},
        Crash{"thread-heap"_L1, "does so beside a second thread: the heap stays locked"_L1,
            damageHeapBesideThread},
        Crash{"static-destructor"_L1, "writes to a null pointer after the end of main()"_L1,
            crashAtExit},
        Crash{
            "receiver"_L1, "crashes a second time while the crash is reported"_L1, crashInReceiver},
        Crash{"two-threads"_L1, "crashes in two threads at the same time"_L1, crashInTwoThreads},
    };
    return kCrashes;
}

} // namespace vexcli

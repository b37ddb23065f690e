#include "platform/StackWalk.h"

#include <algorithm>
#include <cstring>
#include <tuple>

#include <dlfcn.h>
#include <link.h>
#include <sys/uio.h>
#include <unistd.h>
#include <unwind.h>

#ifdef VEX_HAS_BACKTRACE
#    include <backtrace.h>
#endif

namespace vex::detail {

namespace {

const char *fileName(const char *path)
{
    const char *slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

void *pointerTo(std::uint64_t address)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): from the stack
    return reinterpret_cast<void *>(address);
}

/// The module that @p frame lies in, if any. Takes no lock where the C library can tell without.
bool findModule(Frame *frame)
{
    void *const address = pointerTo(frame->address);
    const char *path = nullptr;
#ifdef DLFO_STRUCT_HAS_EH_DBASE
    dl_find_object found;
    if (_dl_find_object(address, &found) == 0) {
        path = found.dlfo_link_map->l_name;
        frame->moduleStart = found.dlfo_link_map->l_addr;
    }
#else
    Dl_info found;
    if (dladdr(address, &found) != 0) {
        path = found.dli_fname;
        frame->moduleStart = reinterpret_cast<std::uint64_t>(found.dli_fbase);
    }
#endif
    if (!path)
        return false;
    std::array<char, 4096> program = {};
    if (*path == '\0' && readlink("/proc/self/exe", program.data(), program.size() - 1) > 0)
        path = program.data(); // the program itself has no name there
    frame->module.clear();
    frame->module << fileName(path);
    return true;
}

/// Where the crash was, in the registers of the processor.
std::uint64_t *programCounter(ucontext_t *context)
{
#if defined(__x86_64__)
    return reinterpret_cast<std::uint64_t *>(&context->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return reinterpret_cast<std::uint64_t *>(&context->uc_mcontext.pc);
#else
    std::ignore = context;
    return nullptr;
#endif
}

/// The memory at @p address, as far as there is any.
[[maybe_unused]] bool readMemory(std::uint64_t address, std::uint64_t *value)
{
    const iovec from{pointerTo(address), sizeof *value};
    const iovec to{value, sizeof *value};
    return process_vm_readv(getpid(), &to, 1, &from, 1, 0) == ssize_t{sizeof *value};
}

/// After a call of what is no function, such as null: makes the registers those of the caller.
void returnFromCall(ucontext_t *context)
{
#if defined(__x86_64__)
    auto *const stack = reinterpret_cast<std::uint64_t *>(&context->uc_mcontext.gregs[REG_RSP]);
    Frame caller;
    if (!readMemory(*stack, &caller.address) || !findModule(&caller))
        return;
    *programCounter(context) = caller.address;
    *stack += sizeof(std::uint64_t);
#elif defined(__aarch64__)
    constexpr std::size_t kLinkRegister = 30;
    *programCounter(context) = context->uc_mcontext.regs[kLinkRegister];
#else
    std::ignore = context;
#endif
}

struct Walk
{
    Backtrace *backtrace;
    std::uint64_t start; ///< only what comes after this address counts; 0: everything does
    bool isStartCaller; ///< the start itself counts too, as a caller
};

void add(Backtrace *backtrace, std::uint64_t address, bool isCaller)
{
    const std::size_t count = backtrace->count;
    Frame &frame = backtrace->frames[count];
    frame = Frame();
    frame.address = address;
    frame.isCaller = isCaller;
    findModule(&frame);
    backtrace->count = count + 1;
}

_Unwind_Reason_Code step(_Unwind_Context *context, void *data)
{
    auto *const walk = static_cast<Walk *>(data);
    int isInstruction = 0; // where a signal came, rather than where a call returns to
    const std::uint64_t address = _Unwind_GetIPInfo(context, &isInstruction);
    const bool isStart = walk->start != 0 && address == walk->start;
    if (walk->start != 0 && !isStart)
        return _URC_NO_REASON; // of the handling
    walk->start = 0;
    if (address == 0 || walk->backtrace->count == walk->backtrace->frames.size())
        return _URC_END_OF_STACK;
    if (!isStart || walk->isStartCaller)
        add(walk->backtrace, address, isStart || isInstruction == 0);
    return _URC_NO_REASON;
}

#ifdef VEX_HAS_BACKTRACE

void ignoreError(void *, const char *, int) { }

/// Reads the debug data of all modules at its first use.
backtrace_state *debugData()
{
    static backtrace_state *const state =
        backtrace_create_state(nullptr, 1 /* several threads */, ignoreError, nullptr);
    return state;
}

/// Functions that are inlined into each other at one address, the innermost first.
struct Place
{
    Frame *frame;
    const char *innermost = nullptr;
    const char *outermost = nullptr;
    int depth = 0;
};

int takePlace(void *data, std::uintptr_t, const char *file, int line, const char *function)
{
    auto *const place = static_cast<Place *>(data);
    if (place->depth == 0) {
        place->innermost = function;
        if (file && line > 0) {
            place->frame->line = static_cast<std::uint64_t>(line);
            place->frame->file << file;
        }
    }
    if (function) {
        place->outermost = function;
        ++place->depth;
    }
    return 0;
}

void takeSymbol(void *data, std::uintptr_t, const char *name, std::uintptr_t start, std::uintptr_t)
{
    auto *const frame = static_cast<Frame *>(data);
    if (!name)
        return;
    frame->displacement = frame->address - start;
    frame->hasDisplacement = true;
    frame->symbol << name;
}

void nameFrame(Frame *frame)
{
    // the call stands before where it returns to, perhaps at the very end of its function
    const std::uintptr_t address = frame->address - (frame->isCaller ? 1 : 0);
    Place place{frame};
    backtrace_pcinfo(debugData(), address, takePlace, ignoreError, &place);
    backtrace_syminfo(debugData(), address, takeSymbol, ignoreError, frame);
    if (frame->symbol.isEmpty() && place.outermost)
        frame->symbol << place.outermost;
    if (place.depth > 1 && place.innermost)
        frame->inlined << place.innermost;
}

#else

void nameFrame(Frame *) { }

#endif

} // namespace

void collectFrames(EXCEPTION_POINTERS *pointers, Backtrace *backtrace)
{
    backtrace->count = 0;
    backtrace->problem.clear();
    ucontext_t *const context = pointers ? pointers->context : nullptr;
    std::uint64_t *const counter = context ? programCounter(context) : nullptr;
    Walk walk{backtrace, 0, false};
    if (!counter) {
        _Unwind_Backtrace(step, &walk);
        return;
    }
    const mcontext_t registers = context->uc_mcontext;
    add(backtrace, *counter, false);
    if (backtrace->frames[0].module.isEmpty()) {
        returnFromCall(context);
        walk.isStartCaller = true;
    }
    walk.start = *counter;
    _Unwind_Backtrace(step, &walk);
    context->uc_mcontext = registers;
}

void nameFrames(Backtrace *backtrace)
{
    std::for_each_n(backtrace->frames.begin(), backtrace->count.load(),
        [](Frame &frame) { nameFrame(&frame); });
}

} // namespace vex::detail

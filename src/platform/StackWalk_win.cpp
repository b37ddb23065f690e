#include "platform/StackWalk.h"

#include "platform/Unwind_win.h"

#include <string_view>

#include <windows.h>
// after windows.h, which it does not include itself
#include <dbghelp.h>

namespace vex::detail {

namespace {

constexpr ULONG kSymbolLetters = 255;
constexpr DWORD kPathLetters = 1024;
constexpr std::size_t kUtf8Bytes = 3; // at most, for each unit of UTF-16

bool areSymbolsOpen = false;

template <std::size_t Size>
void append(FixedText<Size> *text, const wchar_t *letters)
{
    std::array<char, kPathLetters *kUtf8Bytes> bytes = {};
    WideCharToMultiByte(CP_UTF8, 0, letters, -1, bytes.data(), static_cast<int>(bytes.size() - 1),
        nullptr, nullptr);
    *text << bytes.data();
}

template <std::size_t Size>
void appendSystemError(FixedText<Size> *text, DWORD error)
{
    std::array<wchar_t, Size> message = {};
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, message.data(), static_cast<DWORD>(message.size()), nullptr);
    for (; length > 0 && message[length - 1] <= L' '; --length)
        message[length - 1] = L'\0';
    if (length > 0)
        append(text, message.data());
    else
        (*text << "error ").number(error);
}

HMODULE moduleAt(DWORD64 address)
{
    HMODULE module = nullptr;
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (address == 0) // stands for the program itself
        return nullptr;
    return GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(address), &module) ? module
                                                                                   : nullptr;
}

PRUNTIME_FUNCTION functionAt(DWORD64 address)
{
    DWORD64 image = 0;
    return RtlLookupFunctionEntry(address, &image, nullptr);
}

/// For what tells nothing of its frame: a function that calls nothing, the compiler's test of the
/// stack's size, which is where a stack overflows and keeps two registers there, or a place that is
/// no code.
bool popReturnAddress(CONTEXT *context)
{
    constexpr int kMostKept = 2;
    for (int i = 0; i <= kMostKept; ++i) {
        DWORD64 address = 0;
        SIZE_T bytes = 0; // reading it this way fails where the stack pointer is wild
        if (!ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void *>(context->Rsp),
                &address, sizeof address, &bytes))
            return false;
        context->Rsp += sizeof address;
        if (functionAt(address)) {
            context->Rip = address;
            return true;
        }
    }
    return false;
}

void setFrame(Backtrace *backtrace, std::size_t index, DWORD64 address)
{
    Frame &frame = backtrace->frames[index];
    frame = {};
    frame.address = address;
    frame.isCaller = index > 0;
    if (backtrace->count <= index)
        backtrace->count = index + 1; // the rest takes a lock
    const HMODULE module = moduleAt(address);
    std::array<wchar_t, kPathLetters> file = {};
    if (module && GetModuleFileNameW(module, file.data(), kPathLetters) > 0) {
        frame.moduleStart = reinterpret_cast<std::uintptr_t>(module);
        const std::wstring_view path = file.data();
        append(&frame.module, &file[path.rfind(L'\\') + 1]); // npos + 1 is 0
    }
}

/// Without DbgHelp, which needs a sound heap: what remains of the walk when that fails.
void walkByTables(CONTEXT context, std::size_t index, Backtrace *backtrace)
{
    for (; index < backtrace->frames.size(); ++index) {
        setFrame(backtrace, index, context.Rip);
        const DWORD64 stack = context.Rsp;
        if (!unwindOnce(&context) || context.Rsp <= stack) // damaged stacks can go round
            break;
    }
}

/// @return how many frames there are
std::size_t walkByDbgHelp(CONTEXT context, std::size_t index, Backtrace *backtrace)
{
    STACKFRAME64 frame = {};
    frame.AddrPC.Offset = context.Rip;
    frame.AddrFrame.Offset = context.Rbp;
    frame.AddrStack.Offset = context.Rsp;
    frame.AddrPC.Mode = frame.AddrFrame.Mode = frame.AddrStack.Mode = AddrModeFlat;
    while (index < backtrace->frames.size()
        && StackWalk64(IMAGE_FILE_MACHINE_AMD64, GetCurrentProcess(), GetCurrentThread(), &frame,
            &context, nullptr, SymFunctionTableAccess64, SymGetModuleBase64, nullptr)
        && frame.AddrPC.Offset != 0)
        setFrame(backtrace, index++, frame.AddrPC.Offset);
    return index;
}

/// Adds the application's folder to where symbols are looked for.
bool addSearchPath(FixedText<512> *problem)
{
    static std::array<wchar_t, 2 * std::size_t{kPathLetters}> path;
    if (!SymGetSearchPathW(GetCurrentProcess(), path.data(), kPathLetters)) {
        const DWORD error = GetLastError();
        appendSystemError(&(*problem << "SymGetSearchPath failed: "), error);
        return false;
    }
    const std::size_t length = std::wstring_view(path.data()).size();
    path[length] = L';';
    wchar_t *const folder = &path[length + 1];
    const DWORD letters = GetModuleFileNameW(nullptr, folder, kPathLetters - 1);
    const std::size_t name = std::wstring_view(folder, letters).rfind(L'\\');
    folder[name == std::wstring_view::npos ? 0 : name] = L'\0';
    if (!SymSetSearchPathW(GetCurrentProcess(), path.data())) {
        const DWORD error = GetLastError();
        (*problem << "SymSetSearchPath failed. ").number(error);
        return false;
    }
    return true;
}

bool openSymbols(FixedText<512> *problem)
{
    SymSetOptions(SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES);
    areSymbolsOpen = SymInitializeW(GetCurrentProcess(), nullptr, TRUE) != FALSE;
    if (!areSymbolsOpen) {
        const DWORD error = GetLastError();
        appendSystemError(&(*problem << "SymInitialize failed: "), error);
    }
    return areSymbolsOpen && addSearchPath(problem);
}

void nameFrame(Frame *frame)
{
    const HANDLE process = GetCurrentProcess();
    // the call of a function that never returns may be the last of its own
    const DWORD64 place = frame->address - (frame->isCaller ? 1 : 0);

    alignas(SYMBOL_INFOW) std::array<char, sizeof(SYMBOL_INFOW) + kSymbolLetters * sizeof(wchar_t)>
        space = {};
    auto *symbol = reinterpret_cast<SYMBOL_INFOW *>(space.data());
    symbol->SizeOfStruct = sizeof(SYMBOL_INFOW);
    symbol->MaxNameLen = kSymbolLetters;
    if (SymFromAddrW(process, place, nullptr, symbol) && symbol->Name[0] != L'\0') {
        append(&frame->symbol, symbol->Name);
        frame->hasDisplacement = frame->address >= symbol->Address;
        frame->displacement = frame->address - symbol->Address;
    }

    IMAGEHLP_LINEW64 line = {};
    line.SizeOfStruct = sizeof line;
    DWORD column = 0;
    if (SymGetLineFromAddrW64(process, place, &column, &line) && line.FileName) {
        append(&frame->file, line.FileName);
        frame->line = line.LineNumber;
    }
}

} // namespace

bool unwindOnce(CONTEXT *context)
{
    DWORD64 image = 0;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context->Rip, &image, nullptr);
    if (!function)
        return popReturnAddress(context);
    void *data = nullptr;
    DWORD64 frame = 0;
    RtlVirtualUnwind(
        UNW_FLAG_NHANDLER, image, context->Rip, function, context, &data, &frame, nullptr);
    return context->Rip != 0;
}

void collectFrames(EXCEPTION_POINTERS *pointers, Backtrace *backtrace)
{
    backtrace->count = 0;
    backtrace->problem.clear();
    CONTEXT context;
    if (pointers) {
        context = *pointers->ContextRecord;
    } else {
        RtlCaptureContext(&context);
        unwindOnce(&context);
    }
    std::size_t index = 0;
    bool isWalkable = true;
    if (!functionAt(context.Rip)) {
        setFrame(backtrace, index++, context.Rip);
        isWalkable = popReturnAddress(&context);
    }
    if (isWalkable)
        walkByTables(context, index, backtrace);
    if (!openSymbols(&backtrace->problem)) {
        backtrace->count = 0;
        return;
    }
    if (isWalkable)
        index = walkByDbgHelp(context, index, backtrace);
    if (index > 0)
        backtrace->count = index;
}

void nameFrames(Backtrace *backtrace)
{
    for (std::size_t i = 0; areSymbolsOpen && i < backtrace->count; ++i)
        nameFrame(&backtrace->frames[i]);
    if (areSymbolsOpen)
        SymCleanup(GetCurrentProcess());
    areSymbolsOpen = false;
}

} // namespace vex::detail

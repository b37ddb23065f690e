#include "platform/Terminal.h"

#include <atomic>
#include <cstdlib>
#include <initializer_list>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace vexcli {

namespace {

void (*noteInterrupt)(int) = nullptr;
UINT codePageBefore = 0;

void restoreConsole()
{
    if (codePageBefore != 0)
        SetConsoleOutputCP(codePageBefore);
}

BOOL WINAPI handleControl(DWORD event)
{
    static std::atomic<bool> isNoted = false;
    if (isNoted.exchange(true))
        return FALSE; // ends the process
    noteInterrupt(static_cast<int>(event));
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(
            INFINITE); // the process is ended when this returns: leave main() its time to clean up
    return TRUE;
}

} // namespace

void prepareProcess()
{
    // Where a thread ends, MinGW frees its thread-local objects before it destroys them (GCC's bug
    // 83562); Qt keeps the stack of compiled regular expressions in one.
    qputenv("QT_ENABLE_REGEXP_JIT", "0");
}

void prepareStreams()
{
    for (std::FILE *stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
    // Not every C library leaves standard error without a buffer.
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    for (const DWORD name : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        const HANDLE console = GetStdHandle(name);
        DWORD mode = 0;
        if (GetConsoleMode(console, &mode) == FALSE)
            continue;
        SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        if (codePageBefore == 0) {
            codePageBefore = GetConsoleOutputCP();
            SetConsoleOutputCP(CP_UTF8);
            std::atexit(restoreConsole); // it belongs to the console
        }
    }
}

vex::Result<QStringList> commandArguments(int, char **)
{
    int count = 0;
    LPWSTR *const texts = CommandLineToArgvW(GetCommandLineW(), &count);
    QStringList arguments;
    for (int i = 1; texts && i < count; ++i)
        arguments.append(QString::fromWCharArray(texts[i]));
    LocalFree(texts);
    return arguments;
}

bool isTerminal(std::FILE *stream)
{
    return _isatty(_fileno(stream)) != 0;
}

void onInterrupt(void (*note)(int))
{
    noteInterrupt = note;
    SetConsoleCtrlHandler(handleControl, TRUE);
}

void endProcess(int exitCode)
{
    restoreConsole();
    std::_Exit(exitCode);
}

} // namespace vexcli

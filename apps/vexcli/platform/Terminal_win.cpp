#include "platform/Terminal.h"

#include <cstdlib>
#include <initializer_list>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace vexcli {

namespace {

void (*noteInterrupt)(int) = nullptr;
UINT codePageBefore = 0;

BOOL WINAPI handleControl(DWORD event)
{
    noteInterrupt(static_cast<int>(event));
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(
            INFINITE); // the process is ended when this returns: leave main() its time to clean up
    return TRUE;
}

} // namespace

void prepareStreams()
{
    for (std::FILE *stream : {stdout, stderr})
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
            std::atexit([] { SetConsoleOutputCP(codePageBefore); }); // it belongs to the console
        }
    }
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

} // namespace vexcli

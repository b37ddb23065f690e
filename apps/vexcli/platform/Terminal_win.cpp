#include "platform/Terminal.h"

#include "Failure.h"

#include <atomic>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

void (*noteInterrupt)(int) = nullptr;
UINT codePageBefore = 0;

std::atomic<bool> isInputHidden = false;
DWORD shownInput = 0; // mode of the console, to be put back

void showInput()
{
    if (!isInputHidden.exchange(false))
        return;
    const HANDLE console = GetStdHandle(STD_INPUT_HANDLE);
    FlushConsoleInputBuffer(console); // a shell would take what is unread for a command
    SetConsoleMode(console, shownInput);
}

void restoreConsole()
{
    showInput();
    if (codePageBefore != 0)
        SetConsoleOutputCP(codePageBefore);
}

BOOL WINAPI handleControl(DWORD event)
{
    static std::atomic<bool> isNoted = false;
    if (isNoted.exchange(true))
        return FALSE; // ends the process
    showInput();
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

HiddenInput::HiddenInput()
{
    const HANDLE console = GetStdHandle(STD_INPUT_HANDLE);
    if (GetConsoleMode(console, &shownInput) == FALSE)
        return;
    isInputHidden = true;
    FlushConsoleInputBuffer(console);
    constexpr DWORD kLines = ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT;
    const bool isHidden =
        SetConsoleMode(console, (shownInput & ~DWORD{ENABLE_ECHO_INPUT}) | kLines) != FALSE;
    m_state = isHidden ? Hidden : Shown;
}

HiddenInput::~HiddenInput()
{
    showInput();
}

vex::Result<QByteArray> HiddenInput::readLine()
{
    std::wstring line;
    while (!line.ends_with(L'\n')) {
        wchar_t piece[1024];
        DWORD got = 0;
        if (ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), piece,
                static_cast<DWORD>(std::size(piece)), &got, nullptr)
                == FALSE
            && GetLastError() != ERROR_OPERATION_ABORTED)
            return failure(u"cannot read standard input: %1"_s.arg(qt_error_string()));
        if (got == 0)
            Sleep(10); // Ctrl-C, which ends the process soon
        line.append(piece, got);
    }
    while (line.ends_with(L'\n') || line.ends_with(L'\r'))
        line.pop_back();
    return QString::fromStdWString(line).toUtf8();
}

void restoreTerminal()
{
    restoreConsole();
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

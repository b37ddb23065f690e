// Takes the place of a program that the library starts: taskkill, or the copy helper.
//
// Writes the command line that it got into the file named by VEX_STUB_FILE, and ends with the code
// in VEX_STUB_CODE; before that it ends the process tree whose number is the last word, when there
// is no such code.

#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include <windows.h>

#include <tlhelp32.h>

namespace {

std::wstring variable(const wchar_t *name)
{
    std::wstring value(1024, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), 1024));
    return value;
}

std::vector<PROCESSENTRY32W> allProcesses()
{
    std::vector<PROCESSENTRY32W> processes;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != FALSE;
         more = Process32NextW(snapshot, &entry))
        processes.push_back(entry);
    CloseHandle(snapshot);
    return processes;
}

void endBelow(DWORD id, const std::vector<PROCESSENTRY32W> &processes)
{
    for (const auto &process : processes) {
        if (process.th32ParentProcessID == id)
            endBelow(process.th32ProcessID, processes);
    }
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, id);
    TerminateProcess(process, 1);
    CloseHandle(process);
}

/// Ends the tree of @p id when it is a child of whoever called, and no other.
int endTree(DWORD id)
{
    const auto processes = allProcesses();
    const auto parentOf = [&processes](DWORD child) -> DWORD {
        for (const auto &process : processes) {
            if (process.th32ProcessID == child)
                return process.th32ParentProcessID;
        }
        return 0;
    };
    const DWORD caller = parentOf(GetCurrentProcessId());
    if (caller == 0 || parentOf(id) != caller)
        return 99;
    endBelow(id, processes);
    std::printf("SUCCESS");
    return 0;
}

} // namespace

int main()
{
    const std::wstring commandLine = GetCommandLineW();
    FILE *file = _wfopen(variable(L"VEX_STUB_FILE").c_str(), L"w, ccs=UTF-8");
    if (file == nullptr)
        return 98;
    std::fputws(commandLine.c_str(), file);
    std::fclose(file);
    const std::wstring code = variable(L"VEX_STUB_CODE");
    if (!code.empty())
        return static_cast<int>(std::wcstol(code.c_str(), nullptr, 10));
    return endTree(std::wcstoul(commandLine.c_str() + commandLine.rfind(L' '), nullptr, 10));
}

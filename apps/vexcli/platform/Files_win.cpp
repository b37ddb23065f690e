#include "platform/Files.h"

#include <string>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// The path as the system takes it: absolute, without "." and "..", blanks and dots at its end;
/// a reserved name such as NUL becomes the path of the device.
QString fullPath(const QString &path)
{
    const std::wstring text = path.toStdWString();
    std::wstring full(GetFullPathNameW(text.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return QString::fromStdWString(full);
}

/// Number of the volume and of the file or folder on it; empty when there is none.
QString numberOf(const QString &path)
{
    const HANDLE file = CreateFileW(path.toStdWString().c_str(), 0,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
        FILE_FLAG_BACKUP_SEMANTICS, nullptr); // the flag opens folders too
    if (file == INVALID_HANDLE_VALUE)
        return {};
    BY_HANDLE_FILE_INFORMATION info;
    const bool isKnown = GetFileInformationByHandle(file, &info) != FALSE;
    CloseHandle(file);
    if (!isKnown)
        return {};
    return u"%1:%2:%3"_s.arg(info.dwVolumeSerialNumber)
        .arg(info.nFileIndexHigh)
        .arg(info.nFileIndexLow);
}

} // namespace

QString fileIdentity(const QString &path)
{
    if (const QString number = numberOf(path); !number.isEmpty())
        return number;
    const QString full = fullPath(path).toCaseFolded();
    const qsizetype name = full.lastIndexOf(u'\\') + 1;
    const QString folder = numberOf(full.left(name));
    return folder.isEmpty() ? full : folder + u'/' + full.mid(name);
}

QString devicePath(const QString &path)
{
    const QString full = fullPath(path);
    return full.startsWith("\\\\.\\"_L1) ? full : QString();
}

} // namespace vexcli

#include "platform/Files.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <string>

#include <io.h>
#include <windows.h>

using namespace Qt::StringLiterals;

namespace vexcli {

QString devicePath(const QString &path)
{
    // the system makes the path of the device of a reserved name such as NUL
    const std::wstring text = path.toStdWString();
    std::wstring full(GetFullPathNameW(text.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    const QString device = QString::fromStdWString(full);
    return device.startsWith("\\\\.\\"_L1) ? device : QString();
}

qint64 readSome(int descriptor, char *data, qint64 most, QString *problem)
{
    const auto size = static_cast<DWORD>(std::min<qint64>(most, 1 << 30));
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    DWORD got = 0;
    if (ReadFile(handle, data, size, &got, nullptr) || GetLastError() == ERROR_BROKEN_PIPE)
        return got;
    *problem = qt_error_string(static_cast<int>(GetLastError()));
    return -1;
}

QString programFolder()
{
    std::wstring program(MAX_PATH, L'\0');
    DWORD length = 0;
    // a text that does not fit is cut off without an error
    while (
        (length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())))
        == program.size())
        program.resize(2 * program.size());
    program.resize(length);
    return length == 0
        ? QString()
        : QFileInfo(QDir::fromNativeSeparators(QString::fromStdWString(program))).path();
}

} // namespace vexcli

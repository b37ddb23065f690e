#include "platform/Files.h"

#include <string>

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

} // namespace vexcli

#include <vex_common_stable/Drives.h>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace vex {

QList<QString> driveNames()
{
    QList<QString> names;
    const DWORD drives = GetLogicalDrives(); // a bit for each letter
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
        if ((drives >> (letter - u'A')) & 1)
            names.append(QChar(letter) + ":/"_L1);
    }
    return names;
}

QString driveType(const QString &driveName)
{
    const QString root = driveName.left(1) + ":\\"_L1;
    if (driveName != root.first(2) + u'/')
        return u"unknown"_s;
    switch (GetDriveTypeW(reinterpret_cast<const wchar_t *>(root.utf16()))) {
    case DRIVE_FIXED:
        return u"fixed"_s;
    case DRIVE_REMOVABLE:
        return u"removable"_s;
    case DRIVE_REMOTE:
        return u"network"_s;
    case DRIVE_CDROM:
        return u"optical"_s;
    case DRIVE_RAMDISK:
        return u"memory"_s;
    default:
        return u"unknown"_s;
    }
}

} // namespace vex

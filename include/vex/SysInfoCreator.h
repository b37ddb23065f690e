#pragma once

#include <QList>
#include <QString>

#include <optional>

#include <vex/BuildInfoData.h>
#include <vex/Error.h>
#include <vex/Export.h>

namespace vex {

/// What a report tells of the system. An empty text or optional stands for what is not known.
struct SystemInfo
{
    /// A drive.
    struct Drive
    {
        QString name; ///< where it begins, such as "C:/" or "/home"; without the user's name
        QString type; ///< fixed, removable, network, optical, memory or unknown
        /// False where a dead server could keep an answer back for good: then there are no sizes.
        bool isSpaceAsked = false;
        std::optional<qint64> bytesTotal; ///< size of the drive
        std::optional<qint64> bytesFree; ///< what the user of the process may still fill
    };

    QString
        osName; ///< with its version where the system has it so, "Debian GNU/Linux 12 (bookworm)"
    QString osVersion; ///< "12"
    QString kernel; ///< "linux 6.1.0-18-amd64"
    QString processor; ///< as its maker calls it
    std::optional<int> logicalProcessors; ///< those that are running
    QString architecture; ///< "x86_64"
    std::optional<qint64> memoryBytesTotal; ///< what the system can use
    std::optional<qint64> memoryBytesFree; ///< what programs could have at once, caches given up
    QList<Drive> drives; ///< in the order of their names
    QString locale; ///< "en_GB"
    QString qtVersion; ///< of the Qt that the process runs with
};

/// Reports for whoever has to find out what is wrong on somebody else's machine.
///
/// A report is lines of "Name: value". What cannot be seen in a value, such as a line feed, is
/// written as <U+000A>. There is neither the name of the machine nor that of its user: in paths the
/// home folder is "~", and a folder of the user's name is "(user)".
class VEX_EXPORT SysInfoCreator
{
public:
    /// Asks the system. Servers are not asked, nor is FUSE.
    static SystemInfo systemInfo();

    /// The path of the running program, as reports tell it; empty when the system does not.
    static QString programPath();

    /// The report on a system.
    static QString systemText(const SystemInfo &info);

    /// The report on the running application: its build, its path, the version of this library.
    static QString applicationText(const BuildInfoData &build);

    /// Writes systemText() of this system to a file, in UTF-8. It appears whole or not at all, and
    /// takes the place of another file, but of nothing that is no file, such as a device.
    /// @par Errors  GeneralFailure when it cannot be written, with the reason of the system
    static Error writeSystemInfo(const QString &path);

    /// The same with applicationText().
    /// @par Errors  GeneralFailure when it cannot be written, with the reason of the system
    static Error writeApplicationInfo(const QString &path, const BuildInfoData &build);
};

} // namespace vex

#include <vex_common_stable/Drives.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <algorithm>
#include <array>
#include <string_view>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

/// A line of /proc/self/mountinfo, see proc_pid_mountinfo(5).
struct Mount
{
    QByteArray id;
    QByteArray parent; // the mount on which this one stands
    QByteArray device; // "major:minor"
    QByteArray root; // what of the file system the folder shows
    QByteArray folder;
    QByteArray type;
    QByteArray source;
};

// Servers, and hosts of virtual machines.
constexpr std::array<std::string_view, 20> kNetwork{"9p", "acfs", "afs", "beegfs", "ceph", "cifs",
    "coda", "drvfs", "gpfs", "lustre", "ncpfs", "nfs", "nfs4", "orangefs", "prl_fs", "smb3",
    "smbfs", "vboxsf", "virtiofs", "vmhgfs"};
constexpr std::array<std::string_view, 3> kMemory{"ramfs", "rootfs", "tmpfs"};
// They lie on devices, but have a number of their own instead of one of these.
constexpr std::array<std::string_view, 6> kOnDevices{
    "aufs", "bcachefs", "btrfs", "overlay", "ubifs", "zfs"};

template <typename List>
bool contains(const List &list, const QByteArray &word)
{
    return std::find(list.begin(), list.end(), std::string_view(word.data(), size_t(word.size())))
        != list.end();
}

/// The kernel writes blanks, tabs, line feeds and backslashes as \040 and so on.
QByteArray decoded(const QByteArray &field)
{
    QByteArray text;
    for (qsizetype i = 0; i < field.size(); ++i) {
        bool isNumber = false;
        const uint code = field[i] == '\\' ? field.mid(i + 1, 3).toUInt(&isNumber, 8) : 0;
        text += isNumber ? char(code) : field[i];
        i += isNumber ? 3 : 0;
    }
    return text;
}

QList<Mount> allMounts()
{
    QFile file(u"/proc/self/mountinfo"_s);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<Mount> mounts;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype middle = fields.indexOf("-", 6); // behind any number of optional fields
        if (middle >= 0 && middle + 2 < fields.size())
            mounts.append({fields[0], fields[1], fields[2], fields[3], decoded(fields[4]),
                fields[middle + 1], decoded(fields[middle + 2])});
    }
    return mounts;
}

bool isWithin(const QByteArray &path, const QByteArray &folder)
{
    return folder == "/" || path == folder || path.startsWith(folder + '/');
}

/// False when another mount lies over this one, or over a folder above it.
bool isReachable(const Mount &mount, const QList<Mount> &all)
{
    const Mount *next = nullptr; // on the way down from place to mount
    const Mount *place = &mount;
    // each round goes one up; the list may have changed while it was read, so it may hold a circle
    for (qsizetype rounds = 0; place && rounds < all.size(); ++rounds) {
        const Mount *above = nullptr;
        for (const Mount &other : all) {
            const bool covers = other.parent == place->id && &other != next && &other != place
                && isWithin(next ? next->folder : mount.folder, other.folder);
            if (covers)
                return false;
            if (other.id == place->parent && &other != place)
                above = &other;
        }
        next = place;
        place = above;
    }
    return true;
}

/// The system's word for the disk, or for the disk that a partition lies on.
bool isRemovable(const Mount &mount)
{
    const bool hasNumber = !mount.device.startsWith("0:");
    const QByteArray disk = hasNumber
        ? "/sys/dev/block/" + mount.device
        : "/sys/class/block/" + mount.source.mid(mount.source.lastIndexOf('/') + 1);
    for (const char *place : {"/removable", "/../removable"}) {
        QFile file(QString::fromUtf8(disk + place));
        if (file.open(QIODevice::ReadOnly))
            return file.readAll().startsWith('1');
    }
    return false;
}

/// A word of driveType(); empty when there are no files.
QString typeOf(const Mount &mount)
{
    const bool isSystems = isWithin(mount.folder, "/proc") || isWithin(mount.folder, "/sys")
        || (isWithin(mount.folder, "/dev") && !isWithin(mount.folder, "/dev/shm"));
    if (isSystems || mount.type == "fusectl")
        return {};
    if (contains(kNetwork, mount.type))
        return u"network"_s;
    if (mount.type.startsWith("fuse"))
        return u"unknown"_s;
    if (contains(kMemory, mount.type))
        return u"memory"_s;
    const QByteArray major = mount.device.left(mount.device.indexOf(':'));
    if (major == "0" && !contains(kOnDevices, mount.type))
        return {};
    if (major == "11") // SCSI CD-ROM, as devices.txt of the kernel has it
        return u"optical"_s;
    return isRemovable(mount) ? u"removable"_s : u"fixed"_s;
}

bool canHang(const QString &type)
{
    return type == "network"_L1 || type == "unknown"_L1;
}

/// Types by name.
QMap<QString, QString> allDrives()
{
    const QList<Mount> mounts = allMounts();
    QMap<QString, QString> drives;
    QList<Mount> local;
    QList<QByteArray> distant;
    for (const Mount &mount : mounts) {
        const QString type = typeOf(mount);
        if (canHang(type))
            distant.append(mount.folder);
        if (type.isEmpty() || !isReachable(mount, mounts))
            continue;
        if (canHang(type))
            drives.insert(QFile::decodeName(mount.folder), type);
        else
            local.append(mount);
    }
    const auto isBehindServer = [&distant](const QByteArray &path) {
        return std::any_of(distant.begin(), distant.end(),
            [&path](const QByteArray &folder) { return isWithin(path, folder); });
    };
    std::stable_sort(local.begin(), local.end(), [](const Mount &a, const Mount &b) {
        const bool isWholeA = a.root == "/";
        const bool isWholeB = b.root == "/";
        return isWholeA != isWholeB ? isWholeA : a.folder.size() < b.folder.size();
    });
    QList<QByteArray> seen;
    for (const Mount &mount : std::as_const(local)) {
        const QString name = QFile::decodeName(mount.folder);
        const bool isFile =
            mount.root != "/" && !isBehindServer(mount.folder) && !QFileInfo(name).isDir();
        if (isFile || seen.contains(mount.device))
            continue;
        seen.append(mount.device);
        drives.insert(name, typeOf(mount));
    }
    return drives;
}

} // namespace

QList<QString> driveNames()
{
    return allDrives().keys();
}

QString driveType(const QString &driveName)
{
    return allDrives().value(driveName, u"unknown"_s);
}

} // namespace vex

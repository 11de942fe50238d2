#include "platform/VolumeFacts.h"
#include "platform/linux/LinuxVolume.h"

#include <QFile>
#include <QList>

#include <array>
#include <climits>
#include <cstdlib>

#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace tw {

namespace linuxvolume {

namespace {

std::optional<QByteArray> readSmallFile(const QByteArray& path)
{
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.read(4096).trimmed();
}

// Mount tables write space, tab, newline and backslash as octal escapes.
QByteArray unescapeMountField(const QByteArray& field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int value = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out.append(char(value));
                i += 3;
                continue;
            }
        }
        out.append(field[i]);
    }
    return out;
}

bool holds(const QByteArray& mountPoint, const QByteArray& path)
{
    if (mountPoint == "/")
        return path.startsWith('/');
    return path == mountPoint || path.startsWith(QByteArray(mountPoint + '/'));
}

} // namespace

VolumeInfo::Medium mediumFromSysfs(const QByteArray& sysRoot, unsigned major, unsigned minor)
{
    const QByteArray entry = sysRoot + "/dev/block/" + QByteArray::number(major) + ':' + QByteArray::number(minor);
    char resolved[PATH_MAX];
    if (!::realpath(entry.constData(), resolved))
        return VolumeInfo::Medium::unknown;
    QByteArray device(resolved);
    // A partition has no queue of its own: its disk is the folder above.
    if (QFile::exists(QFile::decodeName(device + "/partition")))
        device = device.left(device.lastIndexOf('/'));
    const auto rotational = readSmallFile(device + "/queue/rotational");
    if (rotational == QByteArray("1"))
        return VolumeInfo::Medium::rotational;
    if (rotational == QByteArray("0"))
        return VolumeInfo::Medium::solidState;
    return VolumeInfo::Medium::unknown;
}

bool isNetworkType(std::string_view typeName)
{
    static constexpr std::array<std::string_view, 13> kNetwork = {
        "nfs", "nfs4", "cifs", "smb3", "smbfs", "9p", "afs", "ceph", "glusterfs", "lustre", "ncpfs", "coda", "davfs",
    };
    // FUSE file systems that talk to a server; local ones (gvfs, mergerfs,
    // overlay helpers) are not listed and stay on the device rule.
    static constexpr std::array<std::string_view, 12> kNetworkFuse = {
        "sshfs", "rclone", "s3fs", "gcsfuse", "davfs", "curlftpfs", "glusterfs", "cephfs", "smbnetfs",
        "juicefs", "goofys", "blobfuse",
    };
    for (std::string_view name : kNetwork)
        if (typeName == name)
            return true;
    constexpr std::string_view fusePrefix = "fuse.";
    if (typeName.starts_with(fusePrefix)) {
        const std::string_view subtype = typeName.substr(fusePrefix.size());
        for (std::string_view name : kNetworkFuse)
            if (subtype == name)
                return true;
    }
    return false;
}

std::optional<QByteArray> mountType(const QByteArray& mountinfo, unsigned major, unsigned minor,
                                    const QByteArray& path)
{
    const QByteArray device = QByteArray::number(major) + ':' + QByteArray::number(minor);
    std::optional<QByteArray> best;
    qsizetype bestLength = -1;
    for (const QByteArray& line : mountinfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf(QByteArray("-"));
        if (fields.size() < 5 || dash < 0 || dash + 1 >= fields.size() || fields[2] != device)
            continue;
        const QByteArray mountPoint = unescapeMountField(fields[4]);
        if (!holds(mountPoint, path) || mountPoint.size() <= bestLength)
            continue;
        bestLength = mountPoint.size();
        best = fields[dash + 1];
    }
    return best;
}

} // namespace linuxvolume

namespace {

constexpr long kNfsMagic = 0x6969;
constexpr long kSmbMagic = 0x517B;
constexpr long kCifsMagic = 0xFF534D42;
constexpr long kSmb2Magic = 0xFE534D42;
constexpr long kV9fsMagic = 0x01021997;
constexpr long kAfsMagic = 0x5346414F;
constexpr long kCephMagic = 0x00C36400;
constexpr long kCodaMagic = 0x73757245;
constexpr long kNcpMagic = 0x564C;
constexpr long kFuseMagic = 0x65735546;

// Its folder above lies on another device, or it is the top of the tree.
bool isMountPoint(const QByteArray& path)
{
    struct stat self {};
    struct stat above {};
    if (::stat(path.constData(), &self) != 0 || !S_ISDIR(self.st_mode))
        return false;
    if (::stat(QByteArray(path + "/..").constData(), &above) != 0)
        return false;
    return self.st_dev != above.st_dev || self.st_ino == above.st_ino;
}

class LinuxVolumeFacts final : public VolumeFacts {
public:
    std::optional<VolumeInfo::Capacity> capacity(const QByteArray& path) const override
    {
        struct statvfs facts {};
        if (::statvfs(path.constData(), &facts) != 0)
            return std::nullopt;
        const auto unit = qint64(facts.f_frsize);
        return VolumeInfo::capacityFrom(qint64(facts.f_blocks) * unit, qint64(facts.f_bavail) * unit,
                                        std::nullopt);
    }

    std::optional<VolumeInfo::MountUsage> mountUsage(const QByteArray& path) const override
    {
        if (!isMountPoint(path))
            return std::nullopt;
        struct statvfs facts {};
        if (::statvfs(path.constData(), &facts) != 0)
            return std::nullopt;
        const auto unit = qint64(facts.f_frsize);
        const auto capacity = VolumeInfo::capacityFrom(qint64(facts.f_blocks) * unit,
                                                       qint64(facts.f_bavail) * unit, std::nullopt);
        if (!capacity)
            return std::nullopt;
        return VolumeInfo::MountUsage{*capacity, std::nullopt,
                                      VolumeInfo::reservedFrom(facts.f_bfree, facts.f_bavail, facts.f_frsize)};
    }

    VolumeInfo::Medium medium(const QByteArray& path) const override
    {
        struct stat facts {};
        if (::stat(path.constData(), &facts) != 0)
            return VolumeInfo::Medium::unknown;
        const unsigned major = ::major(facts.st_dev);
        const unsigned minor = ::minor(facts.st_dev);
        struct statfs fs {};
        if (::statfs(path.constData(), &fs) == 0) {
            switch (long(fs.f_type) & 0xFFFFFFFFL) {
            case kNfsMagic: case kSmbMagic: case kCifsMagic: case kSmb2Magic: case kV9fsMagic:
            case kAfsMagic: case kCephMagic: case kCodaMagic: case kNcpMagic:
                return VolumeInfo::Medium::network;
            case kFuseMagic: {
                // FUSE says nothing of where the data lives; its subtype does.
                QFile table(QStringLiteral("/proc/self/mountinfo"));
                if (table.open(QIODevice::ReadOnly)) {
                    const auto type = linuxvolume::mountType(table.readAll(), major, minor, path);
                    if (type && linuxvolume::isNetworkType(std::string_view(type->constData(), size_t(type->size()))))
                        return VolumeInfo::Medium::network;
                }
                break;
            }
            default:
                break;
            }
        }
        // Anonymous devices (tmpfs, overlay, btrfs subvolumes) have no disk to ask.
        if (major == 0)
            return VolumeInfo::Medium::unknown;
        return linuxvolume::mediumFromSysfs("/sys", major, minor);
    }
};

} // namespace

const VolumeFacts& systemVolumeFacts()
{
    static const LinuxVolumeFacts facts;
    return facts;
}

} // namespace tw

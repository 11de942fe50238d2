// Volume facts: the shared decisions, and the Linux answers over a made-up
// /sys tree and mount table, plus the real system for the current folder.

#include "TestMain.h"
#include "TestFiles.h"
#include "platform/VolumeBoundary.h"
#include "platform/VolumeFacts.h"
#include "platform/linux/LinuxVolume.h"
#include "scan/VolumeInfo.h"

#include <QDir>
#include <QTemporaryDir>

#include <map>
#include <memory>

#include <sys/statvfs.h>
#include <unistd.h>

using namespace tw;
using namespace tw::test;
using Medium = VolumeInfo::Medium;

class VolumeTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // The kernel's layout: /sys/dev/block/MAJ:MIN links into the device tree.
    QByteArray makeDisk(const QByteArray& disk, const QByteArray& rotational, bool withPartition)
    {
        const QByteArray sys = QFile::encodeName(m_dir.path()) + "/" + disk + "-sys";
        const QByteArray device = "devices/pci0000:00/virtio1/block/" + disk;
        makeTree(sys, {{"dev/block"}});
        makeTree(sys + '/' + device, {{"queue"}});
        if (!rotational.isEmpty())
            writeBytes(sys + '/' + device + "/queue/rotational", rotational + "\n");
        symlinkAt("../../" + device, sys + "/dev/block/8:0");
        if (withPartition) {
            writeBytes(sys + '/' + device + '/' + disk + "1/partition", "1\n");
            symlinkAt("../../" + device + '/' + disk + "1", sys + "/dev/block/8:1");
        }
        return sys;
    }

private Q_SLOTS:
    void capacityFromWhatThePlatformKnows()
    {
        QVERIFY(!VolumeInfo::capacityFrom(std::nullopt, 10, 20));
        // Only the total known: nothing free is claimed.
        QCOMPARE(*VolumeInfo::capacityFrom(1000, std::nullopt, std::nullopt), (VolumeInfo::Capacity{1000, 0, 0}));
        // Purgeable space counts in what the user sees, even above the raw figure.
        QCOMPARE(*VolumeInfo::capacityFrom(1000, 300, 450), (VolumeInfo::Capacity{1000, 450, 300}));
        QCOMPARE(*VolumeInfo::capacityFrom(1000, 300, std::nullopt), (VolumeInfo::Capacity{1000, 300, 300}));
    }

    void mediumTypeTexts()
    {
        for (const auto& [type, medium] : {std::pair{u"Solid State", Medium::solidState}, {u"Rotational", Medium::rotational},
                                           {u"solid state", Medium::unknown}, {u"", Medium::unknown}})
            QCOMPARE(VolumeInfo::mediumFromType(type), medium);
        QCOMPARE(VolumeInfo::toText(Medium::network), QStringLiteral("network"));
    }

    void sysfsWholeDisksAndPartitions()
    {
        QVERIFY(m_dir.isValid());
        const QByteArray ssd = makeDisk("nvme", "0", true), hdd = makeDisk("sda", "1", true);
        // A partition (8:1) asks its disk; nothing to read, or no such device: unknown.
        for (const auto& [sys, minor, medium] :
             {std::tuple{ssd, 0, Medium::solidState}, {ssd, 1, Medium::solidState}, {hdd, 1, Medium::rotational},
              {hdd, 0, Medium::rotational}, {makeDisk("vdb", "", false), 0, Medium::unknown}, {hdd, 7, Medium::unknown},
              {QByteArray("/nonexistent"), 0, Medium::unknown}})
            QCOMPARE(linuxvolume::mediumFromSysfs(sys, 8, minor), medium);
    }

    void networkTypes()
    {
        for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "9p", "ceph", "fuse.sshfs", "fuse.rclone"})
            QVERIFY2(linuxvolume::isNetworkType(type), type);
        for (const char* type : {"ext4", "btrfs", "tmpfs", "fuse", "fuse.gvfsd-fuse", "fuseblk", "nfsd", "overlay"})
            QVERIFY2(!linuxvolume::isNetworkType(type), type);
    }

    void mountTableLookup()
    {
        const QByteArray table =
            "22 1 254:1 / / rw,relatime shared:1 - ext4 /dev/vda1 rw\n"
            "40 22 0:45 / /home/me/remote rw,nosuid - fuse.sshfs me@host:/srv rw\n"
            "41 40 0:45 /sub /home/me/remote/deeper rw - fuse.other x rw\n"
            "42 22 0:46 / /mnt/my\\040share rw - cifs //server/share rw\n"
            "garbage line\n";
        // The longest mount point holding the path wins; a prefix of the
        // name is not a parent folder; no such device, no type.
        for (const auto& [major, minor, path, type] :
             {std::tuple<unsigned, unsigned, QByteArray, QByteArray>{0, 45, "/home/me/remote/docs", "fuse.sshfs"},
              {0, 45, "/home/me/remote/deeper/x", "fuse.other"}, {0, 45, "/home/me/remotely", {}},
              {0, 46, "/mnt/my share/a", "cifs"}, {254, 1, "/etc", "ext4"}, {9, 9, "/etc", {}}})
            QCOMPARE(linuxvolume::mountType(table, major, minor, path).value_or(QByteArray()), type);
    }

    void realSystemAnswers()
    {
        const QByteArray here = QFile::encodeName(m_dir.path());
        const auto capacity = VolumeInfo::capacity(here);
        QVERIFY(capacity);
        struct statvfs facts {};
        QCOMPARE(::statvfs(here.constData(), &facts), 0);
        QCOMPARE(capacity->total, qint64(facts.f_blocks) * qint64(facts.f_frsize));
        QCOMPARE(capacity->free, capacity->rawFree);
        QVERIFY(capacity->free >= 0 && capacity->free <= capacity->total && !VolumeInfo::capacity("/no/such/folder"));
        // Any answer will do on an unknown machine, but it must not be network for a temp folder.
        QVERIFY(VolumeInfo::medium(here) != Medium::network);
        QCOMPARE(VolumeInfo::medium("/no/such/folder"), Medium::unknown);
    }

    void volumeBoundaryAsksEachEntryOnAnotherDevice()
    {
        // One device carries two volumes: the data volume's own name, and
        // folders firmlinked into the system volume that are named as it.
        std::map<std::string, std::string> names{{"/", "/"},
                                                 {"/Users", "/"},
                                                 {"/System/Volumes/Data", "/System/Volumes/Data"},
                                                 {"/Volumes/Stick", "/Volumes/Stick"}};
        auto asked = std::make_shared<std::vector<std::string>>();
        VolumeNames platform;
        platform.volumeOf = [names, asked](const std::string& path) -> std::optional<std::string> {
            asked->push_back(path);
            const auto found = names.find(path);
            return found == names.end() ? std::nullopt : std::optional(found->second);
        };
        const dev_t system = 1, data = 2, stick = 3;
        // Either order of meeting them gives the same answers.
        for (bool dataFirst : {true, false}) {
            const VolumeBoundary boundary("/", platform);
            asked->clear();
            if (dataFirst)
                QVERIFY(!boundary.contains("/System/Volumes", system, "Data", data, true));
            QVERIFY(boundary.contains("/", system, "Users", data, true));
            QVERIFY(!boundary.contains("/System/Volumes", system, "Data", data, true));
            QVERIFY(!boundary.contains("/Volumes", system, "Stick", stick, true));
            // Unnamed: kept.
            QVERIFY(boundary.contains("/", system, "mystery", stick, true));
            // Entries on their folder's device are never asked about.
            const auto before = asked->size();
            QVERIFY(boundary.contains("/Users", data, "me", data, true) && boundary.contains("/", system, "etc", system, true));
            QCOMPARE(asked->size(), before);
        }

        // Mount points on the same device are other volumes; a file there is not one.
        platform.mountPoints = {"/home/me/bound"};
        const VolumeBoundary bound("/home/me", platform);
        QVERIFY(!bound.contains("/home/me", system, "bound", system, true));
        QVERIFY(bound.contains("/home/me", system, "bound2", system, true));
        // Without any name for the root, nothing is left out for its device.
        const VolumeBoundary unnamed("/nowhere", VolumeNames{});
        QVERIFY(unnamed.contains("/nowhere", system, "x", data, true));
    }
};

TIDEWICK_TEST_MAIN(VolumeTest)
#include "tst_volume.moc"

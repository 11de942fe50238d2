// Cases that need real mounts, made here with Linux's mount(2): the walk stops
// at other volumes, and the command line's unseen figure on a small volume.
// Linux only: the mount calls and tmpfs are Linux's.

#include "CliScan.h"
#include "FakeBulkLister.h"
#include "TestFiles.h"
#include "TestMain.h"
#include "scan/Scanner.h"

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace tw;
using namespace tw::test;

class MountsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

private Q_SLOTS:
    // A volume of its own, and another part of the same file system mounted
    // again inside the tree: both are other volumes, by either listing.
    void otherVolumesLeaveNoNode()
    {
        if (::geteuid() != 0)
            QSKIP("mounting volumes for the test needs root");
        const QByteArray parent = makeTree(base() + "/mounts", {{"inner"}, {"bound"}, {"kept", 4096}});
        makeTree(base() + "/elsewhere", {{"data", 64 * 1024}});
        const auto unmount = qScopeGuard([&] {
            for (const char* name : {"/inner", "/bound"})
                ::umount2(QByteArray(parent + name).constData(), MNT_DETACH);
        });
        if (::mount("none", QByteArray(parent + "/inner").constData(), "tmpfs", 0, nullptr) != 0
            || ::mount(QByteArray(base() + "/elsewhere").constData(), QByteArray(parent + "/bound").constData(),
                       nullptr, MS_BIND, nullptr) != 0)
            QSKIP("the volumes could not be mounted here");
        writeFile(parent + "/inner/hidden", 64 * 1024);
        // By names, and by records as macOS's bulk listing writes them.
        const FakeBulkLister records;
        for (const BulkLister* lister : std::initializer_list<const BulkLister*>{nullptr, &records}) {
            Scanner::Options options;
            options.workers = 2;
            options.bulkLister = lister;
            const auto tree = Scanner({}, options).scan(parent);
            QVERIFY(!childNamed(*tree->root(), "inner") && !childNamed(*tree->root(), "bound"));
            QCOMPARE(tree->root()->fileCount(), 1);
            QCOMPARE(tree->root()->size(), allocatedBytes(parent + "/kept"));
        }
    }

    void commandLineCountsWhatAnotherUserCannotRead()
    {
        if (::geteuid() != 0)
            QSKIP("mounting a volume for the test needs root");
        const QByteArray mountPoint = base() + "/mnt";
        makeDir(mountPoint);
        if (::mount("tidewick-test", mountPoint.constData(), "tmpfs", 0, "size=16m,mode=0755") != 0)
            QSKIP(qPrintable(QStringLiteral("cannot mount a tmpfs here: ") + QString::fromLocal8Bit(std::strerror(errno))));
        const auto unmount = qScopeGuard([&] { ::umount2(mountPoint.constData(), MNT_DETACH); });
        QCOMPARE(::chmod(base().constData(), 0755), 0);
        makeTree(mountPoint, {{"open/seen", 200 * 1024}, {"locked/hidden", 1024 * 1024}, {"private/hidden", 1024 * 1024}});
        for (const char* name : {"/locked", "/private"})
            QCOMPARE(::chmod(QByteArray(mountPoint + name).constData(), 0700), 0);
        const qint64 hidden = allocatedSum(mountPoint, {"locked/hidden", "private/hidden"});

        auto scanAsNobody = [](const QByteArray& path) {
            QProcess process;
            return runAsNobodyIfRoot(process) ? scanWithCli(process, path).value("root").toObject() : QJsonObject();
        };
        const QJsonObject root = scanAsNobody(mountPoint);
        QVERIFY(!root.isEmpty());
        const QJsonObject unseen = root.value("unseen").toObject();
        struct statvfs facts {};
        QCOMPARE(::statvfs(mountPoint.constData(), &facts), 0);
        const qint64 used = qint64(facts.f_blocks - facts.f_bavail) * qint64(facts.f_frsize);
        QCOMPARE(unseen.value("bytes").toInteger(), used - root.value("size").toInteger());
        QVERIFY(unseen.value("bytes").toInteger() >= hidden);
        QCOMPARE(unseen.value("unreadableFolders").toInteger(), 2);
        QCOMPARE(unseen.value("localSnapshots").toInteger(), 0);
        QCOMPARE(unseen.value("reservedBytes").toInteger(), 0); // tmpfs keeps nothing back
        QVERIFY(!unseen.contains("purgeableBytes"));

        // Below the mount point there is nothing to compare with.
        const QJsonObject inside = scanAsNobody(mountPoint + "/open");
        QVERIFY(!inside.isEmpty());
        QVERIFY(!inside.contains("unseen"));
    }
};

TIDEWICK_TEST_MAIN(MountsTest)
#include "tst_mounts.moc"

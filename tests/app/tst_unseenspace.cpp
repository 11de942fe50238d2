// The used space of a volume that a scan from its mount point could not see:
// AppState's figure and the details panel's texts with made-up volume facts,
// and the command line's figures on a real small volume made here.

#include "TestMain.h"
#include "CliScan.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "app/UnseenSpace.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/ProcessRunner.h"
#include "platform/VolumeFacts.h"

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <sys/statvfs.h>

using namespace tw;
using namespace tw::test;

namespace {

constexpr qint64 kMB = 1000 * 1000;

// One folder stands for a mount point, with 50 MB used of 100 MB.
class FakeMount final : public VolumeFacts {
public:
    std::optional<VolumeInfo::Capacity> capacity(const QByteArray&) const override
    {
        return VolumeInfo::Capacity{100 * kMB, 58 * kMB, 50 * kMB};
    }
    VolumeInfo::Medium medium(const QByteArray&) const override { return VolumeInfo::Medium::unknown; }
    std::optional<VolumeInfo::MountUsage> mountUsage(const QByteArray& path) const override
    {
        if (path != mountPoint)
            return std::nullopt;
        return VolumeInfo::MountUsage{*capacity(path), 8 * kMB, std::nullopt};
    }
    QByteArray mountPoint;
};

class ThreeSnapshots final : public ProcessRunner {
public:
    std::optional<QByteArray> run(const QString&, const QStringList&) const override
    {
        return QByteArray("com.apple.TimeMachine.a.local\ncom.apple.TimeMachine.b.local\n"
                          "com.apple.TimeMachine.c.local\n");
    }
};

} // namespace

class UnseenSpaceTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void figureFollowsTheRootOfAMountPoint()
    {
        LocalizationManager::shared().setCurrent(Language::english);
        const QByteArray root = QFile::encodeName(m_dir.path()) + "/volume";
        makeDir(root);
        makeDir(root + "/folder");
        writeFile(root + "/folder/data", 2 * kMB);
        FakeMount mount;
        ThreeSnapshots tool;
        AppState::Services services;
        services.volumes = &mount;
        services.processes = &tool;
        AppState state(services);
        UnseenSpaceModel model;
        model.setState(&state);

        // A folder that is not its volume's mount point has no figure.
        state.requestScan(root + "/folder");
        QTRY_COMPARE(state.phase(), AppState::Phase::ready);
        QVERIFY(!state.unseenSpace());
        QVERIFY(!model.shown());

        mount.mountPoint = root;
        state.requestScan(root);
        QTRY_COMPARE(state.phase(), AppState::Phase::ready);
        QVERIFY(state.unseenSpace());
        const UnseenSpace& unseen = *state.unseenSpace();
        QCOMPARE(unseen.bytes, 50 * kMB - state.root()->size());
        QCOMPARE(unseen.localSnapshots, 3);
        QCOMPARE(unseen.purgeable, std::optional<qint64>(8 * kMB));
        QCOMPARE(unseen.otherBytes(), unseen.bytes - 8 * kMB);
        QVERIFY(model.shown());
        QCOMPARE(model.sizeText(), formatBytes(unseen.bytes));
        const QStringList help = model.helpText().split(u'\n');
        QCOMPARE(help, (QStringList{
                           LocalizationManager::shared().string(QStringLiteral("details.unseen.help")),
                           QStringLiteral("• Local Time Machine snapshots: 3"),
                           QStringLiteral("• Purgeable space: 8 MB"),
                           QStringLiteral("• System data and everything else: ") + formatBytes(unseen.otherBytes()),
                       }));

        // Only while the root is focused; gone with the tree.
        QVERIFY(state.focusOn(state.root().sibling(&*state.root()->children().begin())));
        QVERIFY(!model.shown());
        QVERIFY(state.goUp());
        QVERIFY(model.shown());
        state.resetToWelcome();
        QVERIFY(!state.unseenSpace());
        QVERIFY(!model.shown());
    }

    void commandLineCountsWhatAnotherUserCannotRead()
    {
        if (::geteuid() != 0)
            QSKIP("mounting a volume for the test needs root");
        const QByteArray mountPoint = QFile::encodeName(m_dir.path()) + "/mnt";
        makeDir(mountPoint);
        if (::mount("tidewick-test", mountPoint.constData(), "tmpfs", 0, "size=16m,mode=0755") != 0)
            QSKIP(qPrintable(QStringLiteral("cannot mount a tmpfs here: ") + QString::fromLocal8Bit(std::strerror(errno))));
        const auto unmount = qScopeGuard([&] { ::umount2(mountPoint.constData(), MNT_DETACH); });
        QCOMPARE(::chmod(QFile::encodeName(m_dir.path()).constData(), 0755), 0);
        makeDir(mountPoint + "/open");
        writeFile(mountPoint + "/open/seen", 200 * 1024);
        for (const char* name : {"/locked", "/private"}) {
            makeDir(mountPoint + name);
            writeFile(mountPoint + name + "/hidden", 1024 * 1024);
            QCOMPARE(::chmod(QByteArray(mountPoint + name).constData(), 0700), 0);
        }
        const qint64 hidden = allocatedBytes(mountPoint + "/locked/hidden") + allocatedBytes(mountPoint + "/private/hidden");

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

TIDEWICK_TEST_MAIN(UnseenSpaceTest)
#include "tst_unseenspace.moc"

// The used space of a volume that a scan from its mount point could not see:
// AppState's figure and the details panel's texts with made-up volume facts.
// The command line's figures on a real volume are in the Linux mount tests.

#include "FakePlatform.h"
#include "TestMain.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "app/UnseenSpace.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/ProcessRunner.h"
#include "platform/VolumeFacts.h"

#include <QTemporaryDir>


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
        const QByteArray root = makeTree(QFile::encodeName(m_dir.path()) + "/volume", {{"folder/data", 2 * kMB}});
        FakeMount mount;
        ThreeSnapshots tool;
        AppState::Services services;
        services.volumes = &mount;
        services.processes = &tool;
        AppState state(services);
        UnseenSpaceModel model;
        model.setState(&state);

        // A folder that is not its volume's mount point has no figure.
        QVERIFY(scanned(state, root + "/folder") && !state.unseenSpace() && !model.shown());

        mount.mountPoint = root;
        QVERIFY(scanned(state, root) && state.unseenSpace() && model.shown());
        const UnseenSpace& unseen = *state.unseenSpace();
        QCOMPARE(unseen.bytes, 50 * kMB - state.root()->size());
        QCOMPARE(unseen.localSnapshots, 3);
        QCOMPARE(unseen.purgeable, std::optional<qint64>(8 * kMB));
        QCOMPARE(unseen.otherBytes(), unseen.bytes - 8 * kMB);
        QCOMPARE(model.sizeText(), formatBytes(unseen.bytes));
        const QStringList help = model.helpText().split(u'\n');
        QCOMPARE(help, (QStringList{
                           LocalizationManager::shared().string(QStringLiteral("details.unseen.help")),
                           QStringLiteral("• Local Time Machine snapshots: 3"),
                           QStringLiteral("• Purgeable space: 8 MB"),
                           QStringLiteral("• System data and everything else: ") + formatBytes(unseen.otherBytes()),
                       }));

        // Only while the root is focused; gone with the tree.
        QVERIFY(state.focusOn(nodeAt(state, root + "/folder")) && !model.shown());
        QVERIFY(state.goUp() && model.shown());
        state.resetToWelcome();
        QVERIFY(!state.unseenSpace() && !model.shown());
    }
};

TIDEWICK_TEST_MAIN(UnseenSpaceTest)
#include "tst_unseenspace.moc"

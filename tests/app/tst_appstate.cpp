// AppState's scanning half: the gate, stamps, refresh with focus restoration,
// cancel and reset, the Full Disk Access notice, guarded focus changes, and
// the used space a scan from a mount point could not see (with made-up
// volume facts; the command line's figures on a real volume are in the Linux
// mount tests).

#include "TestMain.h"
#include "FakePlatform.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "app/UnseenSpace.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/ProcessRunner.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

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

class AppStateTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FakeVolume m_volumes;
    FakeAccess m_access;
    FakeReveal m_reveal;

    AppState::Services services(int workers = 1)
    {
        AppState::Services s;
        s.volumes = &m_volumes;
        s.diskAccess = &m_access;
        s.reveal = &m_reveal;
        s.scannerOptions.workers = workers;
        return s;
    }
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

    // fN/sub/data of (N + 1) * 8 KiB and fN/x, for each of `folders`.
    QByteArray sampleTree(const QByteArray& name, int folders = 3)
    {
        const QByteArray root = makeTree(base() + "/" + name, {});
        for (int d = 0; d < folders; ++d)
            makeTree(root + "/f" + QByteArray::number(d), {{"sub/data", (d + 1) * 8192}, {"x", 4096}});
        return root;
    }

    static bool waitReady(AppState& state)
    {
        return QTest::qWaitFor([&] { return state.phase() == AppState::Phase::ready; }, 20000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_volumes.freeStep = 1; // every read tells a new figure
    }
    void init() { m_access.granted = false; }

    void scanEndsReadyWithTheTree()
    {
        const QByteArray root = sampleTree("plain");
        AppState state(services(2));
        QCOMPARE(state.phase(), AppState::Phase::welcome);
        QSignalSpy phases(&state, &AppState::phaseChanged);
        state.requestScan(root);
        QCOMPARE(state.phase(), AppState::Phase::scanning);
        QCOMPARE(state.progress().currentPath, QString::fromUtf8(root));
        QCOMPARE(state.progress().filesScanned, 0);
        QVERIFY(state.volumeCapacity().has_value());
        QVERIFY(waitReady(state) && state.root() && !state.hovered() && !state.needsFullDiskAccess());
        QCOMPARE(state.root()->path(), root);
        QCOMPARE(state.focus(), state.root());
        QCOMPARE(state.root()->fileCount(), 6);
        // The capacity is read again at the end.
        QCOMPARE(state.volumeCapacity()->free, m_volumes.free.load());
        QCOMPARE(phases.count(), 2);
    }

    void secondScanSupersedesTheFirst()
    {
        const QByteArray first = sampleTree("first", 40);
        const QByteArray second = sampleTree("second");
        AppState state(services());
        QStringList pathsAfterSecond;
        bool secondStarted = false;
        connect(&state, &AppState::progressChanged, this, [&] {
            if (secondStarted && state.phase() == AppState::Phase::scanning)
                pathsAfterSecond << state.progress().currentPath;
        });
        state.startScan(first, std::nullopt);
        secondStarted = true;
        state.startScan(second, std::nullopt);
        QVERIFY(waitReady(state));
        QCOMPARE(state.root()->path(), second);
        // The first walk still sends its final report; it must be dropped.
        QTest::qWait(200);
        QCOMPARE(state.root()->path(), second);
        for (const QString& path : std::as_const(pathsAfterSecond))
            QVERIFY2(path.startsWith(QString::fromUtf8(second)), qPrintable(path));
    }

    void refreshRestoresTheFocusedFolder()
    {
        const QByteArray root = sampleTree("refresh");
        AppState state(services());
        QVERIFY(scanned(state, root));
        const NodeRef sub = nodeAt(state, root + "/f1/sub");
        QVERIFY(state.focusOn(sub));
        const std::weak_ptr<ScanTree> oldTree = state.root().tree();

        state.refresh();
        QVERIFY(state.isRefreshing() && state.phase() == AppState::Phase::scanning);
        // The old tree stays shown until the new one replaces it.
        QCOMPARE(state.focus(), sub);
        QVERIFY(waitReady(state) && !state.isRefreshing() && state.root().tree() != oldTree.lock());
        QCOMPARE(state.focus()->path(), root + "/f1/sub");
        QVERIFY(state.focus() != sub);

        // A second refresh while one runs does nothing: had it run, it would restore f2.
        QVERIFY(state.focusOn(nodeAt(state, root + "/f0")));
        state.refresh();
        QVERIFY(state.focusOn(nodeAt(state, root + "/f2")));
        state.refresh();
        QVERIFY(waitReady(state));
        QCOMPARE(state.focus()->path(), root + "/f0");

        // The focused folder gone: the root.
        QVERIFY(state.focusOn(nodeAt(state, root + "/f2/sub")));
        QVERIFY(QDir(QFile::decodeName(root + "/f2/sub")).removeRecursively());
        // An empty path to restore counts as none.
        using Rescan = std::function<void()>;
        for (const Rescan& rescan : {Rescan([&] { state.refresh(); }), Rescan([&] { state.startScan(root, QByteArray()); })}) {
            rescan();
            QVERIFY(waitReady(state));
            QCOMPARE(state.focus(), state.root());
        }
    }

    void cancelAndReset()
    {
        const QByteArray root = sampleTree("cancel");
        AppState state(services());
        // Cancelling a first scan: no tree, the welcome screen.
        state.requestScan(root);
        state.cancelScan();
        QCOMPARE(state.phase(), AppState::Phase::welcome);
        QTest::qWait(300);
        QVERIFY(state.phase() == AppState::Phase::welcome && !state.root());

        // Cancelling a refresh keeps the old tree, unshown.
        QVERIFY(scanned(state, root));
        NodeRef shown = state.root();
        state.refresh();
        state.cancelScan();
        QVERIFY(!state.isRefreshing() && state.phase() == AppState::Phase::welcome);
        QTest::qWait(300);
        QCOMPARE(state.root(), shown);
        QVERIFY(state.volumeCapacity().has_value());

        // Reset forgets the tree and frees it.
        std::weak_ptr<ScanTree> tree = shown.tree();
        NodeRef held = nodeAt(state, root + "/f0");
        shown = NodeRef();
        state.resetToWelcome();
        QVERIFY(!state.root() && !state.focus() && !state.hovered() && !state.volumeCapacity() && !state.rootURL());
        // Whoever still holds a node keeps its tree alive; the last one frees it.
        QVERIFY(!tree.expired());
        QCOMPARE(held->path(), root + "/f0");
        held = NodeRef();
        QVERIFY(tree.expired());
        // With nothing scanned, refresh does nothing.
        state.refresh();
        QCOMPARE(state.phase(), AppState::Phase::welcome);
    }

    void protectedLocationWaitsBehindThePrompt()
    {
        const QByteArray root = sampleTree("protected");
        AppState state(services());
        QSignalSpy prompt(&state, &AppState::fdaPromptForURLChanged);
        state.requestScan(root);
        QCOMPARE(state.phase(), AppState::Phase::welcome);
        QCOMPARE(state.fdaPromptForURL(), std::optional<QByteArray>(root));
        QCOMPARE(prompt.count(), 1);

        state.continueWithoutFullDiskAccess();
        QVERIFY(!state.fdaPromptForURL() && state.phase() == AppState::Phase::scanning);
        // Nothing was closed, so no notice even without the grant.
        QVERIFY(waitReady(state) && !state.needsFullDiskAccess());

        // With nothing waiting, continuing does nothing.
        state.continueWithoutFullDiskAccess();
        QCOMPARE(state.phase(), AppState::Phase::ready);

        // With the grant, no prompt.
        m_access.granted = true;
        state.requestScan(root);
        QVERIFY(!state.fdaPromptForURL() && waitReady(state));
    }

    void noticeOnlyWhenSomethingWasMissed()
    {
        // A chain past the depth limit leaves one flagged folder, even as root.
        const QByteArray root = base() + "/flagged";
        makeChain(root, 131, "d");
        AppState state(services());
        QVERIFY(scanned(state, root));
        QCOMPARE(state.inaccessibleCount(), 1);
        QVERIFY(state.needsFullDiskAccess() && !state.showsUnreadableNotice());
        // With the grant (or where there is none to give): the plain notice.
        m_access.granted = true;
        QVERIFY(scanned(state, root) && !state.needsFullDiskAccess() && state.showsUnreadableNotice());
    }

    void badRootsEndReadyWithAnEmptyRoot()
    {
        AppState state(services(2));
        QVERIFY(scanned(state, base() + "/does/not/exist") && state.root());
        QVERIFY(!state.root()->hasChildren() && state.root()->isInaccessible());
        const QByteArray link = base() + "/rootlink";
        QCOMPARE(::symlink(m_dir.path().toUtf8().constData(), link.constData()), 0);
        QVERIFY(scanned(state, link));
        QVERIFY(!state.root()->hasChildren() && !state.root()->isInaccessible());
    }

    void guardedFocusChange()
    {
        const QByteArray root = sampleTree("focus");
        makeTree(root, {{"file", 100}, {"empty"}});
        AppState state(services());
        QVERIFY(scanned(state, root));
        QSignalSpy focusMoves(&state, &AppState::focusChanged);
        // A file, or a folder without children, cannot be focused.
        QVERIFY(!state.focusOn(nodeAt(state, root + "/file")) && !state.focusOn(nodeAt(state, root + "/empty")));
        QVERIFY(!state.focusOn({}) && !state.goUp());
        QCOMPARE(focusMoves.count(), 0);

        const NodeRef sub = nodeAt(state, root + "/f0/sub");
        state.setHovered(sub);
        QVERIFY(state.focusOn(nodeAt(state, root + "/f0")) && state.focusOn(sub));
        QVERIFY(!state.hovered()); // the old view's hover goes with it
        QVERIFY(state.goUp());
        QCOMPARE(state.focus()->path(), root + "/f0");
        QVERIFY(state.goUp());
        QCOMPARE(state.focus(), state.root());
        QCOMPARE(focusMoves.count(), 4);
    }

    void deletionTakesTheItemOutOfTheTree()
    {
        const QByteArray root = sampleTree("delete");
        const QByteArray bin = makeTree(base() + "/delete-bin", {});
        std::atomic<bool> offGuiThread{true};
        QThread* gui = QThread::currentThread();
        // A stand-in Trash that really moves the item, and notes where it ran.
        AppState::Services s = services();
        s.recycle = [&, bin](const QByteArray& path) -> std::optional<QString> {
            if (QThread::currentThread() == gui)
                offGuiThread = false;
            const QByteArray target = bin + "/" + path.mid(path.lastIndexOf('/') + 1);
            if (::rename(path.constData(), target.constData()) != 0)
                return QString::fromLocal8Bit(std::strerror(errno));
            return std::nullopt;
        };
        AppState state(s);
        QVERIFY(scanned(state, root));
        QSignalSpy finished(&state, &AppState::deletionFinished);
        {
            const NodeRef f0 = nodeAt(state, root + "/f0"), sub = nodeAt(state, root + "/f0/sub");
            const NodeRef data = nodeAt(state, root + "/f0/sub/data");
            const qint64 rootBefore = state.root()->size(), f0Before = f0->size(), dataSize = data->size();
            const qint64 filesBefore = state.root()->fileCount();
            QVERIFY(state.focusOn(sub));
            state.setHovered(data);

            // Deleting a file deep down: every ancestor shrinks, the chart redraws.
            QSignalSpy redraws(&state, &AppState::rootChanged);
            state.setDeleteCandidate(data);
            state.confirmDelete();
            QVERIFY(!state.hasDeleteCandidate());
            QVERIFY(finished.wait(5000) && finished.first().first().toBool() && offGuiThread);
            QCOMPARE(redraws.count(), 1);
            QCOMPARE(state.root()->size(), rootBefore - dataSize);
            QCOMPARE(f0->size(), f0Before - dataSize);
            QCOMPARE(state.root()->fileCount(), filesBefore - 1);
            QVERIFY(!state.hovered() && QFile::exists(QFile::decodeName(bin + "/data")));

            // Deleting the focused folder moves the focus to its parent.
            state.setDeleteCandidate(sub);
            state.confirmDelete();
            QVERIFY(finished.wait(5000));
            QCOMPARE(state.focus(), f0);
            QCOMPARE(state.phase(), AppState::Phase::ready);

            // A failure changes nothing and shows the error.
            const NodeRef x = nodeAt(state, root + "/f1/x");
            const qint64 beforeFailure = state.root()->size();
            const QByteArray away = base() + "/delete-away";
            QCOMPARE(::rename(x->path().constData(), away.constData()), 0);
            state.setDeleteCandidate(x);
            state.confirmDelete();
            QVERIFY(finished.wait(5000) && !finished.last().first().toBool());
            QCOMPARE(state.errorMessage(), QStringLiteral("No such file or directory"));
            QCOMPARE(state.root()->size(), beforeFailure);
            state.clearErrorMessage();
            QVERIFY(!state.hasErrorMessage());
        } // the test lets go of its handles into the tree

        // Deleting the root returns to the welcome screen and lets the tree go.
        const std::weak_ptr<ScanTree> held = state.root().tree();
        state.setDeleteCandidate(state.root());
        state.confirmDelete();
        QVERIFY(finished.wait(5000));
        QCOMPARE(state.phase(), AppState::Phase::welcome);
        QVERIFY(!state.hasTree() && !state.focus() && held.expired());
        QVERIFY(QFile::exists(QFile::decodeName(bin + "/delete")));
    }

    void revealGoesToTheFileManager()
    {
        const QByteArray root = sampleTree("reveal");
        AppState state(services());
        QVERIFY(scanned(state, root));
        m_reveal.revealed.clear();
        state.reveal({});
        QVERIFY(m_reveal.revealed.isEmpty());
        state.reveal(nodeAt(state, root + "/f1/x"));
        QCOMPARE(m_reveal.revealed, QList<QByteArray>{root + "/f1/x"});
    }

    void modeHasItsTexts()
    {
        // The mode's signal and its texts in events are pinned by tst_analytics.
        AppState state(services());
        QCOMPARE(state.mode(), AppState::Mode::folder);
        QCOMPARE(AppState::modeFromText(u"apps"), std::optional(AppState::Mode::apps));
        QVERIFY(!AppState::modeFromText(u"Apps"));
    }

    void figureFollowsTheRootOfAMountPoint()
    {
        LocalizationManager::shared().setCurrent(Language::english);
        const QByteArray root = makeTree(base() + "/volume", {{"folder/data", 2 * kMB}});
        FakeMount mount;
        ThreeSnapshots tool;
        AppState::Services s;
        s.volumes = &mount;
        s.processes = &tool;
        AppState state(s);
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

TIDEWICK_TEST_MAIN(AppStateTest)
#include "tst_appstate.moc"

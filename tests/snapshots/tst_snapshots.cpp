// Local snapshots: what counts as one in the tool's listing, the exact
// thinning request, the system's runner, and the reclaim flow on AppState
// with a made-up tmutil in the system's place.

#include "TestMain.h"
#include "FakePlatform.h"
#include "app/AppState.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/ProcessRunner.h"
#include "snapshots/SnapshotService.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSignalSpy>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

using namespace tw;
using namespace tw::test;

namespace {

// Stands where /usr/bin/tmutil would: answers per subcommand, records calls.
class FakeTmutil final : public ProcessRunner {
public:
    std::optional<QByteArray> run(const QString& program, const QStringList& arguments) const override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_calls.append(QStringList{program} + arguments);
        }
        if (arguments.value(0) == QLatin1String("thinlocalsnapshots") && onThin)
            onThin();
        return listing;
    }
    QList<QStringList> calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    std::optional<QByteArray> listing = QByteArray();
    std::function<void()> onThin;

private:
    mutable std::mutex m_mutex;
    mutable QList<QStringList> m_calls;
};

const QByteArray kThree = "Snapshots for disk /:\n"
                          "com.apple.TimeMachine.2026-11-20-101500.local\n"
                          "  com.apple.TimeMachine.2026-11-21-101500.local\t\n"
                          "com.apple.TimeMachine.2026-11-22-101500.local\n";

} // namespace

class SnapshotsTest : public QObject {
    Q_OBJECT

private:
    FakeTmutil m_tool;
    FakeVolume m_volume;

    AppState::Services services()
    {
        AppState::Services s;
        s.volumes = &m_volume;
        s.processes = &m_tool;
        return s;
    }
    static QString text(const char* key) { return LocalizationManager::shared().string(QLatin1String(key)); }

private Q_SLOTS:
    void init()
    {
        m_tool.listing = kThree;
        m_tool.onThin = nullptr;
        m_volume.total = 1000 * kGB;
        m_volume.free = 100 * kGB;
        LocalizationManager::shared().setCurrent(Language::english);
    }

    void listingKeepsOnlyTimeMachineNames()
    {
        auto names = [this](const QByteArray& output) {
            m_tool.listing = output;
            QStringList out;
            for (const auto& snapshot : SnapshotService::listLocalSnapshots(QStringLiteral("/"), m_tool))
                out << snapshot.name;
            return out;
        };
        QCOMPARE(names(kThree), (QStringList{"com.apple.TimeMachine.2026-11-20-101500.local",
                                             "com.apple.TimeMachine.2026-11-21-101500.local",
                                             "com.apple.TimeMachine.2026-11-22-101500.local"}));
        QCOMPARE(m_tool.calls().last(), (QStringList{"/usr/bin/tmutil", "listlocalsnapshots", "/"}));
        // Near misses, a complaint in the shared pipe, and output that is not UTF-8.
        QVERIFY(names("com.apple.TimeMachine\ncom.apple.TimeMachineX.1\ncom.example.backup.1\n"
                      "tmutil: listlocalsnapshots requires Full Disk Access\n").isEmpty());
        QVERIFY(names("com.apple.TimeMachine.\xff\xfe.local\n").isEmpty());

        (void)SnapshotService::thinLocalSnapshots(SnapshotService::kPurgeAmount, QStringLiteral("/"),
                                                  SnapshotService::kUrgency, m_tool);
        QCOMPARE(m_tool.calls().last(),
                 (QStringList{"/usr/bin/tmutil", "thinlocalsnapshots", "/", "536870912000", "4"}));
    }

    void systemRunnerStartsToolsDirectly()
    {
        const ProcessRunner& system = systemProcessRunner();
        // Both outputs through one pipe, in the order they were written; no
        // shell between, so characters arrive as they are; nothing from a
        // tool that is not there, or from output that is not UTF-8.
        for (const auto& [program, arguments, said] :
             {std::tuple<QString, QStringList, QString>{"/bin/sh", {"-c", "echo out; echo err >&2; exit 3"}, "out\nerr\n"},
              {"/bin/echo", {"a;b $HOME `x`"}, "a;b $HOME `x`\n"}, {"/nonexistent/tool", {}, {}}, {"/bin/printf", {"\\377"}, {}}})
            QCOMPARE(SnapshotService::runTool(program, arguments, system), said);
        // Without tmutil (Linux) there are no snapshots, so no reclaim button.
        if (!QFile::exists(QLatin1String(SnapshotService::kTool)))
            QVERIFY(SnapshotService::listLocalSnapshots(QStringLiteral("/"), system).empty());
    }

    void reclaimMeasuresWhatCameBack()
    {
        AppState state(services());
        state.refreshSnapshotCount();
        QTRY_COMPARE(state.localSnapshotCount(), 3);

        // What came back, and what the user reads; less free space than before
        // (something else filled the disk meanwhile) reads as nothing freed.
        for (const auto& [change, freed, message] :
             {std::tuple{3 * kGB, 3 * kGB, fillText(text("snapshots.result.freed"), formatBytes(3 * kGB))},
              std::tuple{-kGB, 0LL, text("snapshots.result.none")}}) {
            m_tool.listing = kThree;
            m_tool.onThin = [this, change = change] {
                m_volume.free += change;
                m_tool.listing = "Snapshots for disk /:\ncom.apple.TimeMachine.2026-11-22-101500.local\n";
            };
            state.setConfirmThinSnapshots(true);
            QSignalSpy thinned(&state, &AppState::snapshotsThinned);
            const int countBefore = state.localSnapshotCount();
            state.thinSnapshots();
            QVERIFY(!state.confirmThinSnapshots());
            QCOMPARE(state.localSnapshotCount(), countBefore); // the button keeps its count while it runs
            QVERIFY(thinned.wait(5000) && thinned.count() == 1 && !state.thinningSnapshots());
            QCOMPARE(thinned.first().first().toLongLong(), freed);
            QCOMPARE(state.localSnapshotCount(), 1);
            QCOMPARE(state.thinResultMessage(), message);
            state.clearThinResultMessage();
        }
    }

    // The tool runs off the GUI thread, and presses while it runs start no second one.
    void windowKeepsDrawingWhileTheToolWorks()
    {
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQuick\n"
                          "Window { visible: true; width: 120; height: 60\n"
                          "  Rectangle { width: 20; height: 20; color: 'blue'\n"
                          "    NumberAnimation on x { from: 0; to: 100; duration: 400; loops: Animation.Infinite } } }",
                          QUrl());
        std::unique_ptr<QObject> object(component.create());
        auto* window = qobject_cast<QQuickWindow*>(object.get());
        QVERIFY2(window, qPrintable(component.errorString()));
        QVERIFY(QTest::qWaitForWindowExposed(window));

        m_tool.onThin = [] { std::this_thread::sleep_for(std::chrono::milliseconds(800)); };
        AppState state(services());
        QSignalSpy thinned(&state, &AppState::snapshotsThinned);
        int frames = 0;
        connect(window, &QQuickWindow::frameSwapped, this, [&] { frames += state.thinningSnapshots() ? 1 : 0; });
        const qsizetype callsBefore = m_tool.calls().size();
        state.thinSnapshots();
        state.thinSnapshots();
        QTest::qWait(50);
        state.thinSnapshots();
        QVERIFY(thinned.wait(5000));
        QTest::qWait(50);
        QCOMPARE(thinned.count(), 1);
        QCOMPARE(m_tool.calls().mid(callsBefore).count(QStringList{"/usr/bin/tmutil", "thinlocalsnapshots", "/", "536870912000", "4"}), 1);
        QCOMPARE(state.thinResultMessage(), text("snapshots.result.none")); // nothing came back
        // Well under the 48 that 60 frames a second would give; a blocked
        // GUI thread gives none.
        QVERIFY2(frames >= 10, qPrintable(QString::number(frames)));
    }
};

TIDEWICK_TEST_MAIN(SnapshotsTest)
#include "tst_snapshots.moc"

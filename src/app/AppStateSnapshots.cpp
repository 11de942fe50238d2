// AppState: counting local snapshots and asking the system to reclaim them.
//
// The snapshot tool can take seconds to thin a disk, so its calls run on a
// worker thread and the window keeps drawing (the progress shows as a
// disabled button) while it works. Every change of state still happens here
// on the GUI thread, in the same order as if the tool had run in place.

#include "app/AppState.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/VolumeFacts.h"
#include "snapshots/SnapshotService.h"

#include <QMetaObject>
#include <QPointer>

#include <algorithm>
#include <thread>

namespace tw {

namespace {
const QString kStartupVolume = QString::fromLatin1(SnapshotService::kMountPoint);

// Runs `work` on a worker thread and hands its answer to `done` on the GUI
// thread, unless the state has gone by then.
template <typename Work, typename Done>
void offGuiThread(AppState* state, Work work, Done done)
{
    // Lives on the GUI thread until the answer has been handled.
    auto* relay = new QObject;
    QPointer<AppState> self(state);
    std::thread([relay, self, work = std::move(work), done = std::move(done)] {
        auto answer = work();
        QMetaObject::invokeMethod(
            relay,
            [relay, self, done, answer] {
                if (self)
                    done(*self, answer);
                delete relay;
            },
            Qt::QueuedConnection);
    }).detach();
}
} // namespace

void AppState::refreshSnapshotCount()
{
    const quint64 request = ++m_snapshotCountRequest;
    const ProcessRunner* processes = m_services.processes;
    offGuiThread(
        this, [processes] { return int(SnapshotService::listLocalSnapshots(kStartupVolume, *processes).size()); },
        [request](AppState& state, int count) {
            // A later count (a reclaim's own, or a newer refresh) wins.
            if (request != state.m_snapshotCountRequest || state.m_localSnapshotCount == count)
                return;
            state.m_localSnapshotCount = count;
            Q_EMIT state.snapshotsChanged();
        });
}

void AppState::thinSnapshots()
{
    if (m_thinningSnapshots)
        return;
    m_confirmThinSnapshots = false;
    m_thinningSnapshots = true;
    Q_EMIT snapshotsChanged();

    struct Outcome {
        qint64 before = 0;
        qint64 after = 0;
        int count = 0;
    };
    const VolumeFacts* volumes = m_services.volumes;
    const ProcessRunner* processes = m_services.processes;
    offGuiThread(
        this,
        [volumes, processes] {
            // What was freed is measured, not read from the tool: free space
            // just before and just after, a missing reading counting as 0.
            auto freeSpace = [volumes] {
                const auto capacity = volumes->capacity(QByteArray(SnapshotService::kMountPoint));
                return capacity ? capacity->free : 0;
            };
            Outcome outcome;
            outcome.before = freeSpace();
            (void)SnapshotService::thinLocalSnapshots(SnapshotService::kPurgeAmount, kStartupVolume,
                                                      SnapshotService::kUrgency, *processes);
            outcome.after = freeSpace();
            outcome.count = int(SnapshotService::listLocalSnapshots(kStartupVolume, *processes).size());
            return outcome;
        },
        [](AppState& state, const Outcome& outcome) { state.finishThinning(outcome.before, outcome.after, outcome.count); });
}

void AppState::finishThinning(qint64 before, qint64 after, int count)
{
    m_thinningSnapshots = false;
    // This count is newer than any refresh still under way.
    ++m_snapshotCountRequest;
    m_localSnapshotCount = count;
    const qint64 freed = std::max<qint64>(after - before, 0);
    Q_EMIT snapshotsThinned(freed);
    const LocalizationManager& loc = LocalizationManager::shared();
    m_thinResultMessage = after - before < 1
        ? loc.string(QStringLiteral("snapshots.result.none"))
        : fillText(loc.string(QStringLiteral("snapshots.result.freed")), formatBytes(freed));
    Q_EMIT snapshotsChanged();
    if (m_rootURL)
        setVolumeCapacity(m_services.volumes->capacity(*m_rootURL));
}

} // namespace tw

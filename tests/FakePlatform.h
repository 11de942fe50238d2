#pragma once

// Stand-ins at the platform seam that several tests hand to AppState: a
// volume whose figures a test sets (and may move on each read), a Full Disk
// Access answer, a file manager and a process list that record what they are
// asked; and made-up applications with their leftovers.

#include "app/AppState.h"
#include "app/DiskAccess.h"
#include "platform/FileReveal.h"
#include "platform/RunningApplications.h"
#include "platform/VolumeFacts.h"
#include "uninstaller/AppRelatedFiles.h"
#include "uninstaller/InstalledApp.h"

#include <QDateTime>
#include <QtTest>
#include <atomic>
#include <memory>
#include <vector>

namespace tw::test {

inline constexpr qint64 kGB = 1000LL * 1000 * 1000;

// Thread-safe: the scanner reads it off the GUI thread.
class FakeVolume final : public VolumeFacts {
public:
    std::optional<VolumeInfo::Capacity> capacity(const QByteArray&) const override
    {
        ++calls;
        if (!known)
            return std::nullopt;
        const qint64 now = free += freeStep;
        return VolumeInfo::Capacity{total, now, rawFree < 0 ? now : rawFree};
    }
    VolumeInfo::Medium medium(const QByteArray&) const override { return kind; }
    qint64 total = 500 * kGB;
    mutable std::atomic<qint64> free{400 * kGB};
    qint64 rawFree = -1; // below zero: the same as free
    qint64 freeStep = 0; // added to free at every read
    bool known = true;
    VolumeInfo::Medium kind = VolumeInfo::Medium::unknown;
    mutable std::atomic<int> calls{0};
};

// Locations whose path ends in "/protected", or every one, ask for the grant.
class FakeAccess final : public DiskAccess {
public:
    bool requiresFullDiskAccess(const QByteArray& path) const override
    {
        return everywhere || path.endsWith("/protected");
    }
    bool hasFullDiskAccess() const override { return granted; }
    bool granted = true;
    bool everywhere = false;
};

class FakeReveal final : public FileReveal {
public:
    void reveal(const QByteArray& path) override { revealed << path; }
    QList<QByteArray> revealed;
};

// Every application runs while `running` holds; Quit stops them unless stubborn.
class FakeRunning final : public RunningApplications {
public:
    bool isRunning(const QString&, const QByteArray&) const override { return running; }
    bool terminate(const QString&, const QByteArray&) override
    {
        ++terminated;
        running = stubborn;
        return true;
    }
    std::atomic<bool> running{false};
    bool stubborn = false;
    int terminated = 0;
};

// FOLDER/NAME.app, identified as com.test.NAME unless `id` says otherwise.
inline std::unique_ptr<InstalledApp> madeApp(const QByteArray& folder, const QString& name,
                                             const QString& id = {},
                                             std::optional<QDateTime> opened = {})
{
    return std::make_unique<InstalledApp>(folder + '/' + name.toUtf8() + ".app", name,
                                          id.isEmpty() ? QStringLiteral("com.test.") + name : id,
                                          std::nullopt, opened, QByteArray());
}

inline RelatedFile leftover(const QByteArray& path, qint64 size, bool shared = false,
                            RelatedCategory category = RelatedCategory::caches)
{
    RelatedFile file;
    file.url = path;
    file.size = size;
    file.isShared = shared;
    file.category = category;
    return file;
}

// Scans `path` from `state` and waits for it to be shown; false if it never is.
inline bool scanned(AppState& state, const QByteArray& path)
{
    state.requestScan(path);
    return QTest::qWaitFor([&] { return state.phase() == AppState::Phase::ready; }, 20000);
}

// The shown tree's node at `path`.
inline NodeRef nodeAt(AppState& state, const QByteArray& path)
{
    return state.root().sibling(state.root().tree()->find(path));
}

} // namespace tw::test

#pragma once

#include "platform/ProcessRunner.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tw {

// The thin layer over the system's "tmutil" that counts local Time Machine
// snapshots and asks the system to reclaim them. No state; nothing here runs
// with raised rights. Every operation blocks until the tool has ended, so
// callers run it off the GUI thread. Where there is no tmutil (Linux) the
// launch fails and the answers are "no snapshots" and the empty text.
namespace SnapshotService {

// One local snapshot, the tool's line as printed.
struct Snapshot {
    QString name;
    bool operator==(const Snapshot&) const = default;
};

inline constexpr auto kTool = "/usr/bin/tmutil";
// The one thinning request the app makes: far above anything a disk could
// hold in snapshots, so the system goes as far as it can.
inline constexpr qint64 kPurgeAmount = 536870912000; // 500 GiB
inline constexpr int kUrgency = 4;
inline constexpr auto kMountPoint = "/";

// Runs the tool at `path` directly and answers its standard output and
// standard error together, decoded as UTF-8; the empty text when it cannot
// start or does not speak UTF-8.
[[nodiscard]] QString runTool(const QString& path, const QStringList& arguments,
                              const ProcessRunner& runner = systemProcessRunner());

// The snapshots of the volume at `mountPoint`, in the tool's order. A tool
// that fails reads as no snapshots.
[[nodiscard]] std::vector<Snapshot> listLocalSnapshots(const QString& mountPoint,
                                                       const ProcessRunner& runner = systemProcessRunner());

// Asks the system to evict up to `purgeAmount` bytes of snapshots. Answers the
// tool's text, which says nothing reliable about what was freed.
QString thinLocalSnapshots(qint64 purgeAmount, const QString& mountPoint, int urgency,
                           const ProcessRunner& runner = systemProcessRunner());

} // namespace SnapshotService
} // namespace tw

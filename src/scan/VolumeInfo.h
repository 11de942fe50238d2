#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QStringView>

#include <cstdint>
#include <optional>

namespace tw {

class VolumeFacts;

// Facts about the volume under a path: how full it is (toolbar, snapshot
// result) and what storage it sits on (the walker's worker count). Stateless:
// every call asks the system afresh. Paths are the platform's raw bytes.
namespace VolumeInfo {

struct Capacity {
    qint64 total = 0;
    // What the user sees: space the system could make available, purgeable
    // space included where the platform knows it; otherwise rawFree.
    qint64 free = 0;
    qint64 rawFree = 0;
    bool operator==(const Capacity&) const = default;
};

enum class Medium { solidState, rotational, network, unknown };

// A mounted volume as a whole, for telling how much of its used space a walk
// from its mount point could not see. The parts are present where the
// platform knows them: purgeable space on macOS, the blocks only the
// superuser may fill on Linux.
struct MountUsage {
    Capacity capacity;
    std::optional<qint64> purgeable;
    std::optional<qint64> reserved;
    // Everything not free for the user: files, and whatever hides beside them.
    [[nodiscard]] qint64 used() const { return capacity.total > capacity.rawFree ? capacity.total - capacity.rawFree : 0; }
    bool operator==(const MountUsage&) const = default;
};

// Asks the running system. capacity() blocks briefly; medium() may take
// milliseconds and is meant for worker threads.
[[nodiscard]] std::optional<Capacity> capacity(const QByteArray& path);
[[nodiscard]] Medium medium(const QByteArray& path);

// The decisions shared by every backend, kept here so tests reach them.

// From the three optional capacities the platform reported. No total, no answer.
[[nodiscard]] std::optional<Capacity> capacityFrom(std::optional<qint64> total,
                                                   std::optional<qint64> available,
                                                   std::optional<qint64> availableForImportantUsage);
// From the storage driver's "Medium Type" text.
[[nodiscard]] Medium mediumFromType(QStringView mediumType);
// What the system could free for important use beyond the free blocks; none
// unless both figures are known, never below 0.
[[nodiscard]] std::optional<qint64> purgeableFrom(std::optional<qint64> available,
                                                  std::optional<qint64> availableForImportantUsage);
// Free blocks that only the superuser may fill, in bytes.
[[nodiscard]] qint64 reservedFrom(quint64 freeBlocks, quint64 availableBlocks, quint64 blockSize);
[[nodiscard]] QString toText(Medium medium);

} // namespace VolumeInfo
} // namespace tw

Q_DECLARE_METATYPE(tw::VolumeInfo::Capacity)

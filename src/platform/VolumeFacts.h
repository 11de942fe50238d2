#pragma once

#include "scan/VolumeInfo.h"

namespace tw {

// Volume facts as a capability, so that the scanner and AppState can be given
// a fake in tests. The system's own answers come from systemVolumeFacts().
// Implementations must be callable from any thread.
class VolumeFacts {
public:
    virtual ~VolumeFacts() = default;
    [[nodiscard]] virtual std::optional<VolumeInfo::Capacity> capacity(const QByteArray& path) const = 0;
    [[nodiscard]] virtual VolumeInfo::Medium medium(const QByteArray& path) const = 0;
    // The whole volume, asked only when `path` is its mount point; none for
    // any other folder, or when the system does not say.
    [[nodiscard]] virtual std::optional<VolumeInfo::MountUsage> mountUsage(const QByteArray& path) const
    {
        (void)path;
        return std::nullopt;
    }
};

// The running system's answers; lives for the whole process.
[[nodiscard]] const VolumeFacts& systemVolumeFacts();

} // namespace tw

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
};

// The running system's answers; lives for the whole process.
[[nodiscard]] const VolumeFacts& systemVolumeFacts();

} // namespace tw

#pragma once

#include <QByteArray>

namespace tw {

// Whether a location is behind the system's Full Disk Access permission, and
// whether the permission is granted. AppState gates scans on it and decides
// the notice after a scan. The system's answers are SystemDiskAccess.
class DiskAccess {
public:
    virtual ~DiskAccess() = default;
    [[nodiscard]] virtual bool requiresFullDiskAccess(const QByteArray& path) const = 0;
    [[nodiscard]] virtual bool hasFullDiskAccess() const = 0;
};

} // namespace tw

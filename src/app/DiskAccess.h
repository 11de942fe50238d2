#pragma once

#include <QByteArray>

namespace tw {

// Whether a location is behind the system's Full Disk Access permission, and
// whether the permission is granted. AppState gates scans on it and decides
// the notice after a scan. The real decisions arrive with the Full Disk Access
// screens; until then no location asks for the grant.
class DiskAccess {
public:
    virtual ~DiskAccess() = default;
    [[nodiscard]] virtual bool requiresFullDiskAccess(const QByteArray& path) const = 0;
    [[nodiscard]] virtual bool hasFullDiskAccess() const = 0;
};

// No location asks for the grant, and it is reported as present.
class UnrestrictedDiskAccess final : public DiskAccess {
public:
    [[nodiscard]] bool requiresFullDiskAccess(const QByteArray&) const override { return false; }
    [[nodiscard]] bool hasFullDiskAccess() const override { return true; }
};

} // namespace tw

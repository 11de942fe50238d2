#pragma once

#include "app/DiskAccess.h"

#include <QByteArray>
#include <QUrl>

namespace tw {

class FileProbe;

// Whether scanning `path` can meet folders closed without Full Disk Access:
// the whole disk, the home folder, its Library and the system's own trees.
// Plain text prefixes on purpose: a folder merely named "/variety" asks too,
// which errs on the side of asking.
[[nodiscard]] bool requiresFullDiskAccess(const QByteArray& path, const QByteArray& home);

// Whether one of the protected probe folders can be listed. A machine on
// which none of them exists counts as lacking the permission.
[[nodiscard]] bool hasFullDiskAccess(const QByteArray& home, const FileProbe& probe);

// The System Settings panes, each from its newer address, or the older one
// if the newer will not parse.
[[nodiscard]] QUrl fullDiskAccessSettingsUrl();
[[nodiscard]] QUrl appManagementSettingsUrl();

// The running system: the user's home folder, real folders, and where the
// platform has no such permission, the grant taken as present.
class SystemDiskAccess final : public DiskAccess {
public:
    SystemDiskAccess();
    [[nodiscard]] bool requiresFullDiskAccess(const QByteArray& path) const override;
    [[nodiscard]] bool hasFullDiskAccess() const override;

private:
    QByteArray m_home;
};

} // namespace tw

#pragma once

#include <QByteArray>

#include <string_view>
#include <sys/types.h>

namespace tw {

// Decides whether an entry met during a walk lies on the scanned volume. The
// walker asks only when the entry's device differs from the root's, which is
// rare (mount points, firmlinked system folders), so an answer may be slow.
// Built once per scan; contains() is called from every worker at once.
class VolumeBoundary {
public:
    VolumeBoundary(QByteArray rootPath, dev_t rootDevice);
    ~VolumeBoundary();
    VolumeBoundary(const VolumeBoundary&) = delete;
    VolumeBoundary& operator=(const VolumeBoundary&) = delete;

    [[nodiscard]] dev_t rootDevice() const { return m_rootDevice; }

    // True when the entry at parentPath/name, whose device is `device`, still
    // belongs to the root's volume (as the platform names volumes).
    [[nodiscard]] bool contains(dev_t device, std::string_view parentPath, std::string_view name) const;

private:
    QByteArray m_rootPath;
    dev_t m_rootDevice;
    struct Platform;
    Platform* m_platform = nullptr; // owned; backend-specific cache, may stay null
};

} // namespace tw

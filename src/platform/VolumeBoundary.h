#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace tw {

// How the platform names volumes, for the walk's volume test.
struct VolumeNames {
    // The name of the volume that holds `path`, or nothing when the platform
    // cannot tell. Asked rarely (only where a folder's child lies on another
    // device), from any worker at once: it must be safe from any thread.
    std::function<std::optional<std::string>(const std::string& path)> volumeOf;
    // Folders where another mount sits on the same device (bind mounts), as
    // full paths below the scanned root, sorted.
    std::vector<std::string> mountPoints;
};

// The running system's names, with the mount points below `rootPath`.
[[nodiscard]] VolumeNames systemVolumeNames(const std::string& rootPath);

// Decides whether an entry met during a walk lies on the scanned volume.
// An entry on its parent folder's device is on its parent's volume, unless it
// is a mount point: that is decided without a lock or a call, so ordinary
// entries pay nothing. Where the device changes, the entry itself is asked
// about, never its device as a whole: one device may carry two volumes (a
// system volume and the data volume firmlinked into it).
class VolumeBoundary {
public:
    VolumeBoundary(std::string rootPath, VolumeNames names);

    // True when `name` in the folder `parentPath` (on `parentDevice`) is on
    // the root's volume; `device` is the entry's own.
    [[nodiscard]] bool contains(std::string_view parentPath, dev_t parentDevice, std::string_view name,
                                dev_t device, bool isFolder) const
    {
        if (device == parentDevice && (!isFolder || m_names.mountPoints.empty()))
            return true;
        return containsSlow(parentPath, parentDevice, name, device, isFolder);
    }

private:
    [[nodiscard]] bool containsSlow(std::string_view parentPath, dev_t parentDevice, std::string_view name,
                                    dev_t device, bool isFolder) const;

    VolumeNames m_names;
    std::optional<std::string> m_rootVolume;
};

} // namespace tw

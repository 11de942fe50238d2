#include "platform/VolumeBoundary.h"

#include <algorithm>
#include <utility>

namespace tw {

VolumeBoundary::VolumeBoundary(std::string rootPath, VolumeNames names) : m_names(std::move(names))
{
    std::sort(m_names.mountPoints.begin(), m_names.mountPoints.end());
    if (m_names.volumeOf)
        m_rootVolume = m_names.volumeOf(rootPath);
}

bool VolumeBoundary::containsSlow(std::string_view parentPath, dev_t parentDevice, std::string_view name,
                                  dev_t device, bool isFolder) const
{
    std::string path(parentPath);
    if (path.size() != 1 || path.front() != '/')
        path.push_back('/');
    path.append(name);
    // Another mount of the same file system would count its folder twice.
    if (isFolder && std::binary_search(m_names.mountPoints.begin(), m_names.mountPoints.end(), path))
        return false;
    if (device == parentDevice)
        return true;
    // Without a name for the root or for the entry, keep the entry.
    if (!m_rootVolume || !m_names.volumeOf)
        return true;
    const std::optional<std::string> volume = m_names.volumeOf(path);
    return !volume || *volume == *m_rootVolume;
}

} // namespace tw

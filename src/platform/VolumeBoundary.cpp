#include "platform/VolumeBoundary.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace tw {

VolumeBoundary::VolumeBoundary(std::string rootPath, VolumeNames names) : m_names(std::move(names))
{
    std::sort(m_names.mountPoints.begin(), m_names.mountPoints.end());
    if (m_names.volumeOf)
        m_rootVolume = m_names.volumeOf(rootPath);
}

namespace {
// Compares `text` with the concatenation of `parts`, without making it: this
// runs for every folder of a walk when mounts lie below the root.
int compareJoined(std::string_view text, std::initializer_list<std::string_view> parts)
{
    for (std::string_view part : parts) {
        const std::size_t common = std::min(text.size(), part.size());
        if (const int order = text.substr(0, common).compare(part.substr(0, common)))
            return order;
        if (text.size() < part.size())
            return -1;
        text.remove_prefix(part.size());
    }
    return text.empty() ? 0 : 1;
}
} // namespace

bool VolumeBoundary::containsSlow(std::string_view parentPath, dev_t parentDevice, std::string_view name,
                                  dev_t device, bool isFolder) const
{
    const std::string_view separator = parentPath == "/" ? std::string_view() : std::string_view("/");
    // Another mount of the same file system would count its folder twice.
    if (isFolder) {
        const auto at = std::lower_bound(m_names.mountPoints.begin(), m_names.mountPoints.end(), 0,
                                         [&](const std::string& mountPoint, int) {
                                             return compareJoined(mountPoint, {parentPath, separator, name}) < 0;
                                         });
        if (at != m_names.mountPoints.end() && compareJoined(*at, {parentPath, separator, name}) == 0)
            return false;
    }
    if (device == parentDevice)
        return true;
    std::string path(parentPath);
    path.append(separator).append(name);
    // Without a name for the root or for the entry, keep the entry.
    if (!m_rootVolume || !m_names.volumeOf)
        return true;
    const std::optional<std::string> volume = m_names.volumeOf(path);
    return !volume || *volume == *m_rootVolume;
}

} // namespace tw

#include "platform/VolumeBoundary.h"

#include <utility>

namespace tw {

// On Linux a volume is a device number: anything on another device is another
// mount (or a btrfs subvolume, which `du -x` treats the same way).
struct VolumeBoundary::Platform {};

VolumeBoundary::VolumeBoundary(QByteArray rootPath, dev_t rootDevice)
    : m_rootPath(std::move(rootPath)), m_rootDevice(rootDevice)
{
}

VolumeBoundary::~VolumeBoundary() = default;

bool VolumeBoundary::contains(dev_t device, std::string_view, std::string_view) const
{
    return device == m_rootDevice;
}

} // namespace tw

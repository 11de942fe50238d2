// On macOS a volume is what Foundation names as the entry's volume URL: the
// firmlinked system folders share a device with the data volume but may be
// named differently, so a device mismatch is settled by asking.

#include "platform/VolumeBoundary.h"

#import <Foundation/Foundation.h>

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace tw {

namespace {
NSURL* volumeOf(const std::string& path)
{
    NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path.c_str()
                                                                                 length:path.size()];
    if (!text)
        return nil;
    NSURL* volume = nil;
    [[NSURL fileURLWithPath:text] getResourceValue:&volume forKey:NSURLVolumeURLKey error:nil];
    return volume;
}
} // namespace

struct VolumeBoundary::Platform {
    NSURL* rootVolume = nil; // strong, under ARC
    std::mutex lock;
    std::map<dev_t, bool> answers; // per device: the first entry met decides
};

VolumeBoundary::VolumeBoundary(QByteArray rootPath, dev_t rootDevice)
    : m_rootPath(std::move(rootPath)), m_rootDevice(rootDevice), m_platform(new Platform)
{
    @autoreleasepool {
        m_platform->rootVolume = volumeOf(std::string(m_rootPath.constData(), size_t(m_rootPath.size())));
    }
}

VolumeBoundary::~VolumeBoundary()
{
    delete m_platform;
}

bool VolumeBoundary::contains(dev_t device, std::string_view parentPath, std::string_view name) const
{
    if (device == m_rootDevice)
        return true;
    // Without a volume for the root the test never fires.
    if (!m_platform->rootVolume)
        return true;
    const std::lock_guard guard(m_platform->lock);
    if (const auto known = m_platform->answers.find(device); known != m_platform->answers.end())
        return known->second;
    bool same = true;
    @autoreleasepool {
        std::string path(parentPath);
        if (path.size() > 1)
            path.push_back('/');
        path.append(name);
        NSURL* volume = volumeOf(path);
        // Either missing: keep the entry.
        same = !volume || [volume isEqual:m_platform->rootVolume];
    }
    m_platform->answers.emplace(device, same);
    return same;
}

} // namespace tw

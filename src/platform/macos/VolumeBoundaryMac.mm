// On macOS a volume is what Foundation names as the entry's volume URL: the
// firmlinked system folders share a device with the data volume but are
// named as the system volume, so each entry on another device is asked about
// by itself. The decisions live in VolumeBoundary.cpp.

#include "platform/VolumeBoundary.h"

#import <Foundation/Foundation.h>

namespace tw {

VolumeNames systemVolumeNames(const std::string&)
{
    VolumeNames names;
    names.volumeOf = [](const std::string& path) -> std::optional<std::string> {
        @autoreleasepool {
            NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path.c_str()
                                                                                         length:path.size()];
            if (!text)
                return std::nullopt;
            NSURL* volume = nil;
            if (![[NSURL fileURLWithPath:text] getResourceValue:&volume forKey:NSURLVolumeURLKey error:nil] || !volume)
                return std::nullopt;
            const char* bytes = volume.fileSystemRepresentation;
            if (!bytes)
                return std::nullopt;
            return std::string(bytes);
        }
    };
    // Every macOS volume has a device of its own: nothing to list here.
    return names;
}

} // namespace tw

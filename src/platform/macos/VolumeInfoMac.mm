// Volume facts from Foundation, DiskArbitration and IOKit. Compiled with ARC;
// Core Foundation and IOKit objects are released by hand on every path.

#include "platform/VolumeFacts.h"

#import <Foundation/Foundation.h>
#include <DiskArbitration/DiskArbitration.h>
#include <IOKit/IOKitLib.h>

#include <string>

namespace tw {

namespace {

NSURL* fileURL(const QByteArray& path)
{
    NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path.constData()
                                                                                 length:NSUInteger(path.size())];
    return text ? [NSURL fileURLWithPath:text] : nil;
}

std::optional<qint64> numberFor(NSDictionary* values, NSURLResourceKey key)
{
    id value = values[key];
    if ([value isKindOfClass:[NSNumber class]])
        return qint64([value longLongValue]);
    return std::nullopt;
}

std::optional<std::string> bsdNameOf(NSURL* url)
{
    DASessionRef session = DASessionCreate(kCFAllocatorDefault);
    if (!session)
        return std::nullopt;
    NSURL* volume = nil;
    [url getResourceValue:&volume forKey:NSURLVolumeURLKey error:nil];
    NSURL* target = volume ? volume : url;
    std::optional<std::string> name;
    DADiskRef disk = DADiskCreateFromVolumePath(kCFAllocatorDefault, session, (__bridge CFURLRef)target);
    if (disk) {
        if (const char* bsd = DADiskGetBSDName(disk))
            name = std::string(bsd);
        CFRelease(disk);
    }
    CFRelease(session);
    return name;
}

VolumeInfo::Medium mediumOfBsdName(const std::string& name)
{
    // The matching dictionary is consumed by IOServiceGetMatchingService.
    CFMutableDictionaryRef matching = IOBSDNameMatching(kIOMainPortDefault, 0, name.c_str());
    if (!matching)
        return VolumeInfo::Medium::unknown;
    io_service_t service = IOServiceGetMatchingService(kIOMainPortDefault, matching);
    if (!service)
        return VolumeInfo::Medium::unknown;
    // The characteristics sit on a device above the media object.
    CFTypeRef characteristics = IORegistryEntrySearchCFProperty(
        service, kIOServicePlane, CFSTR("Device Characteristics"), kCFAllocatorDefault,
        kIORegistryIterateRecursively | kIORegistryIterateParents);
    IOObjectRelease(service);
    VolumeInfo::Medium medium = VolumeInfo::Medium::unknown;
    if (characteristics && CFGetTypeID(characteristics) == CFDictionaryGetTypeID()) {
        CFTypeRef type = CFDictionaryGetValue(static_cast<CFDictionaryRef>(characteristics), CFSTR("Medium Type"));
        if (type && CFGetTypeID(type) == CFStringGetTypeID())
            medium = VolumeInfo::mediumFromType(QString::fromCFString(static_cast<CFStringRef>(type)));
    }
    if (characteristics)
        CFRelease(characteristics);
    return medium;
}

class MacVolumeFacts final : public VolumeFacts {
public:
    std::optional<VolumeInfo::Capacity> capacity(const QByteArray& path) const override
    {
        @autoreleasepool {
            NSURL* url = fileURL(path);
            if (!url)
                return std::nullopt;
            NSDictionary* values = [url resourceValuesForKeys:@[
                NSURLVolumeTotalCapacityKey, NSURLVolumeAvailableCapacityKey,
                NSURLVolumeAvailableCapacityForImportantUsageKey
            ] error:nil];
            if (!values)
                return std::nullopt;
            return VolumeInfo::capacityFrom(numberFor(values, NSURLVolumeTotalCapacityKey),
                                            numberFor(values, NSURLVolumeAvailableCapacityKey),
                                            numberFor(values, NSURLVolumeAvailableCapacityForImportantUsageKey));
        }
    }

    std::optional<VolumeInfo::MountUsage> mountUsage(const QByteArray& path) const override
    {
        @autoreleasepool {
            NSURL* url = fileURL(path);
            if (!url)
                return std::nullopt;
            NSDictionary* values = [url resourceValuesForKeys:@[
                NSURLVolumeURLKey, NSURLVolumeTotalCapacityKey, NSURLVolumeAvailableCapacityKey,
                NSURLVolumeAvailableCapacityForImportantUsageKey
            ] error:nil];
            NSURL* volume = values[NSURLVolumeURLKey];
            if (!volume || ![volume.path isEqualToString:url.path])
                return std::nullopt;
            const auto available = numberFor(values, NSURLVolumeAvailableCapacityKey);
            const auto important = numberFor(values, NSURLVolumeAvailableCapacityForImportantUsageKey);
            const auto capacity =
                VolumeInfo::capacityFrom(numberFor(values, NSURLVolumeTotalCapacityKey), available, important);
            if (!capacity)
                return std::nullopt;
            return VolumeInfo::MountUsage{*capacity, VolumeInfo::purgeableFrom(available, important), std::nullopt};
        }
    }

    VolumeInfo::Medium medium(const QByteArray& path) const override
    {
        @autoreleasepool {
            NSURL* url = fileURL(path);
            if (!url)
                return VolumeInfo::Medium::unknown;
            NSNumber* isLocal = nil;
            // Known and false: a network volume, without asking the disk layer.
            if ([url getResourceValue:&isLocal forKey:NSURLVolumeIsLocalKey error:nil] && isLocal
                && ![isLocal boolValue])
                return VolumeInfo::Medium::network;
            const auto name = bsdNameOf(url);
            return name ? mediumOfBsdName(*name) : VolumeInfo::Medium::unknown;
        }
    }
};

} // namespace

const VolumeFacts& systemVolumeFacts()
{
    static const MacVolumeFacts facts;
    return facts;
}

} // namespace tw

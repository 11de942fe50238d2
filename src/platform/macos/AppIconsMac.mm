#include "platform/AppIcons.h"

#import <AppKit/AppKit.h>

#include <QPainter>

namespace tw {

QImage applicationIcon(const QByteArray& bundlePath, const QByteArray&, const QSize& size)
{
    if (size.isEmpty())
        return {};
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    @autoreleasepool {
        NSString* path = [NSFileManager.defaultManager stringWithFileSystemRepresentation:bundlePath.constData()
                                                                                    length:NSUInteger(bundlePath.size())];
        NSImage* icon = [NSWorkspace.sharedWorkspace iconForFile:path];
        icon.size = NSMakeSize(size.width(), size.height());
        NSRect rect = NSMakeRect(0, 0, size.width(), size.height());
        CGImageRef cgImage = [icon CGImageForProposedRect:&rect context:nil hints:nil];
        if (!cgImage)
            return image;
        CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
        CGContextRef context = CGBitmapContextCreate(image.bits(), size_t(size.width()), size_t(size.height()), 8,
                                                     size_t(image.bytesPerLine()), space,
                                                     CGBitmapInfo(kCGImageAlphaPremultipliedFirst) | kCGBitmapByteOrder32Host);
        CGColorSpaceRelease(space);
        if (context) {
            CGContextDrawImage(context, CGRectMake(0, 0, size.width(), size.height()), cgImage);
            CGContextRelease(context);
        }
    }
    return image;
}

} // namespace tw

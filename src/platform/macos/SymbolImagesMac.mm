#include "platform/SymbolImages.h"

#import <AppKit/AppKit.h>

#include <QPainter>

namespace tw {

void ensureIconTheme() {}

QImage renderSymbol(const QString& name, const QSize& size, const QColor& color)
{
    if (size.isEmpty())
        return {};
    @autoreleasepool {
        NSImage* symbol = [NSImage imageWithSystemSymbolName:name.toNSString() accessibilityDescription:nil];
        if (!symbol)
            return {};
        NSImageSymbolConfiguration* config =
            [NSImageSymbolConfiguration configurationWithPointSize:size.height() weight:NSFontWeightRegular];
        symbol = [symbol imageWithSymbolConfiguration:config];
        NSRect rect = NSMakeRect(0, 0, size.width(), size.height());
        CGImageRef cgImage = [symbol CGImageForProposedRect:&rect context:nil hints:nil];
        if (!cgImage)
            return {};
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
        CGContextRef context = CGBitmapContextCreate(image.bits(), size_t(size.width()), size_t(size.height()), 8,
                                                     size_t(image.bytesPerLine()), space,
                                                     kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Host);
        CGColorSpaceRelease(space);
        if (!context)
            return {};
        // Symbols are template images: draw the shape, keep its aspect.
        const double scale = std::min(size.width() / rect.size.width, size.height() / rect.size.height);
        const CGRect target = CGRectMake((size.width() - rect.size.width * scale) / 2,
                                         (size.height() - rect.size.height * scale) / 2, rect.size.width * scale,
                                         rect.size.height * scale);
        CGContextDrawImage(context, target, cgImage);
        CGContextRelease(context);
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
        return image;
    }
}

} // namespace tw

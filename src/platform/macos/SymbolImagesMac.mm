#include "platform/SymbolImages.h"

#include "platform/MacAnswers.h"

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
        // Symbols are template images: draw the shape at its own proportions.
        const NSSize own = symbol.size;
        const QRectF fit = symbolFitRect(QSizeF(own.width, own.height), QSizeF(size));
        if (fit.isEmpty())
            return {};
        NSRect proposed = NSMakeRect(0, 0, fit.width(), fit.height());
        CGImageRef cgImage = [symbol CGImageForProposedRect:&proposed context:nil hints:nil];
        if (!cgImage)
            return {};
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
        CGContextRef context = CGBitmapContextCreate(image.bits(), size_t(size.width()), size_t(size.height()), 8,
                                                     size_t(image.bytesPerLine()), space,
                                                     CGBitmapInfo(kCGImageAlphaPremultipliedFirst) | kCGBitmapByteOrder32Host);
        CGColorSpaceRelease(space);
        if (!context)
            return {};
        // Core Graphics counts from the bottom edge.
        CGContextDrawImage(context,
                           CGRectMake(fit.x(), size.height() - fit.bottom(), fit.width(), fit.height()), cgImage);
        CGContextRelease(context);
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
        return image;
    }
}

} // namespace tw

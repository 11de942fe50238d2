#include "platform/AppIcons.h"
#include "platform/SymbolImages.h"
#include "scan/RawFiles.h"

#include <QBuffer>
#include <QIcon>
#include <QImageReader>
#include <QPainter>

namespace tw {

namespace {
QImage fitted(const QImage& image, const QSize& size)
{
    QImage canvas(size, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    // The theme hands out bitmaps marked with the screen's pixel ratio; the
    // caller asked for device pixels, so draw them as plain pixels.
    QImage source = image;
    source.setDevicePixelRatio(1);
    const QImage scaled = source.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&canvas);
    painter.drawImage((size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2,
                      scaled);
    return canvas;
}
} // namespace

QImage applicationIcon(const QByteArray&, const QByteArray& iconFile, const QSize& size)
{
    if (size.isEmpty())
        return {};
    if (!iconFile.isEmpty()) {
        QByteArray data = readFileBytes(iconFile, 64 * 1024 * 1024).value_or(QByteArray());
        QBuffer buffer(&data);
        QImageReader reader(&buffer, "icns");
        // .icns holds several sizes; Qt reads the largest first.
        const QImage image = reader.read();
        if (!image.isNull())
            return fitted(image, size);
    }
    ensureIconTheme();
    const QIcon generic = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    QImage image = generic.pixmap(size).toImage();
    if (image.isNull()) {
        image = QImage(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(0x9a, 0xa3, 0xad));
    }
    return fitted(image, size);
}

} // namespace tw

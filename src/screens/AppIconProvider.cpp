#include "screens/AppIconProvider.h"

#include "platform/AppIcons.h"
#include "uninstaller/AppDiscovery.h"

namespace tw {

AppIconProvider::AppIconProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage AppIconProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const QByteArray path = QByteArray::fromPercentEncoding(id.toLatin1());
    const QSize wanted =
        requestedSize.isValid() && !requestedSize.isEmpty() ? requestedSize : QSize(48, 48);
    QImage image = applicationIcon(path, AppDiscovery::bundleIconFile(path), wanted);
    if (size)
        *size = image.size();
    return image;
}

} // namespace tw

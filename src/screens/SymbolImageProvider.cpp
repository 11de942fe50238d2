#include "screens/SymbolImageProvider.h"

#include "platform/SymbolImages.h"

#include <QColor>
#include <QUrl>

namespace tw {

SymbolImageProvider::SymbolImageProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage SymbolImageProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const qsizetype slash = id.indexOf(u'/');
    const QString name = slash < 0 ? id : id.left(slash);
    QColor color(Qt::black);
    if (slash >= 0) {
        const QColor given(QUrl::fromPercentEncoding(id.mid(slash + 1).toUtf8()));
        if (given.isValid())
            color = given;
    }
    const QSize wanted =
        requestedSize.isValid() && !requestedSize.isEmpty() ? requestedSize : QSize(16, 16);
    QImage image = renderSymbol(name, wanted, color);
    if (size)
        *size = image.size();
    return image;
}

} // namespace tw

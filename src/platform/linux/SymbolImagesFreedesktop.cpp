#include "platform/SymbolImages.h"

#include <QIcon>
#include <QPainter>

namespace tw {

void ensureIconTheme()
{
    // Offscreen and bare X servers name no theme and search only ":/icons".
    static const bool done = [] {
        QStringList paths = QIcon::themeSearchPaths();
        if (!paths.contains(QStringLiteral("/usr/share/icons")))
            paths.append(QStringLiteral("/usr/share/icons"));
        QIcon::setThemeSearchPaths(paths);
        if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
            QIcon::setThemeName(QStringLiteral("Adwaita"));
        return true;
    }();
    (void)done;
}

QImage renderSymbol(const QString& name, const QSize& size, const QColor& color)
{
    const QString iconName = freedesktopIconName(name);
    if (iconName.isEmpty() || size.isEmpty())
        return {};
    ensureIconTheme();
    const QIcon icon = QIcon::fromTheme(iconName);
    if (icon.isNull())
        return {};
    QImage image = icon.pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return {};
    // Keep the icon's shape, paint it in the symbol's colour.
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

} // namespace tw

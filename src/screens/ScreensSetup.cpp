#include "screens/ScreensSetup.h"

#include "screens/AppIconProvider.h"
#include "screens/AppearanceQml.h"
#include "screens/SymbolImageProvider.h"

#include <QQmlEngine>
#include <QQuickView>

namespace tw {

void installScreens(QQmlEngine& engine, SystemAppearance* appearance)
{
    AppearanceQml::setSource(engine, appearance);
    engine.addImportPath(QStringLiteral("qrc:/"));
    engine.addImageProvider(QStringLiteral("symbol"), new SymbolImageProvider);
    engine.addImageProvider(QStringLiteral("appicon"), new AppIconProvider);
}

void loadContentView(QQuickView& view, const QVariantMap& properties, SystemAppearance* appearance)
{
    installScreens(*view.engine(), appearance);
    view.setInitialProperties(properties);
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(1080, 720);
    view.setSource(QUrl(QStringLiteral("qrc:/Tidewick/ContentView.qml")));
}

} // namespace tw

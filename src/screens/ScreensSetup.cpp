#include "screens/ScreensSetup.h"

#include "network/RequestLimits.h"
#include "screens/AppIconProvider.h"
#include "screens/AppearanceQml.h"
#include "screens/SymbolImageProvider.h"

#include <QQmlEngine>
#include <QQmlNetworkAccessManagerFactory>
#include <QQuickView>

namespace tw {

namespace {
// The sponsored bar's icon and banner come from the feed's server: every
// image the screens load from the web is held to the image limits. Called on
// Qt Quick's loader threads; it keeps no state.
class LimitedImageNetwork final : public QQmlNetworkAccessManagerFactory {
public:
    QNetworkAccessManager* create(QObject* parent) override
    {
        return new LimitedNetworkAccessManager(RequestLimits::image(), parent);
    }
};
} // namespace

void installScreens(QQmlEngine& engine, SystemAppearance* appearance)
{
    // Outlives every engine: the engine does not own its factory.
    static LimitedImageNetwork network;
    engine.setNetworkAccessManagerFactory(&network);
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

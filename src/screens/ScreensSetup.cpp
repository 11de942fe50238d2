#include "screens/ScreensSetup.h"

#include "screens/AppIconProvider.h"
#include "screens/SymbolImageProvider.h"

#include <QQmlEngine>

namespace tw {

void installScreens(QQmlEngine& engine)
{
    engine.addImportPath(QStringLiteral("qrc:/"));
    engine.addImageProvider(QStringLiteral("symbol"), new SymbolImageProvider);
    engine.addImageProvider(QStringLiteral("appicon"), new AppIconProvider);
}

} // namespace tw

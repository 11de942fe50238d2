#pragma once

#include <QVariantMap>

class QQmlEngine;
class QQuickView;

namespace tw {

// What every engine that shows Tidewick's screens needs: the module's
// resources on the import path, the `image://symbol/` and
// `image://appicon/` providers, and web images under the image request
// limits. Used by
// the application, the screenshot tool and the tests alike.
void installScreens(QQmlEngine& engine);

// Loads the window's content (ContentView) into `view` at the window's
// default 1080 by 720, sized with the view, with `properties` (at least
// "appState") set before it is built. Does not show it. For the tools, the
// tests and the benchmarks that drive the real screens.
void loadContentView(QQuickView& view, const QVariantMap& properties);

} // namespace tw

#pragma once

#include <QVariantMap>

class QQmlEngine;
class QQuickView;

namespace tw {

class SystemAppearance;

// What every engine that shows Tidewick's screens needs: the module's
// resources on the import path, the `image://symbol/` and
// `image://appicon/` providers, web images under the image request limits,
// and the appearance the screens follow (light when none; it must outlive the
// engine). Used by the application, the screenshot tool and the tests alike.
void installScreens(QQmlEngine& engine, SystemAppearance* appearance = nullptr);

// Loads the window's content (ContentView) into `view` at the window's
// default 1080 by 720, sized with the view, with `properties` (at least
// "appState") set before it is built, in `appearance`. Does not show it. For
// the tools, the tests and the benchmarks that drive the real screens.
void loadContentView(QQuickView& view, const QVariantMap& properties, SystemAppearance* appearance = nullptr);

} // namespace tw

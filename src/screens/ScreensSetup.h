#pragma once

class QQmlEngine;

namespace tw {

// What every engine that shows Tidewick's screens needs: the module's
// resources on the import path and the `image://symbol/` and
// `image://appicon/` providers. Used by
// the application, the screenshot tool and the tests alike.
void installScreens(QQmlEngine& engine);

} // namespace tw

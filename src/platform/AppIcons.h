#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

namespace tw {

// The icon of the application bundle at `bundlePath`, fitted into `size`.
// macOS asks the workspace; elsewhere the bundle's own icon file
// (`iconFile`, an .icns read through Qt's image plugins) or, failing that,
// the icon theme's generic application icon. Never null for a positive size.
// GUI or image-provider threads.
[[nodiscard]] QImage applicationIcon(const QByteArray& bundlePath, const QByteArray& iconFile, const QSize& size);

} // namespace tw

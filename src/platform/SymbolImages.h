#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

namespace tw {

// Draws the symbol `name` (an SF Symbol name, as the screens use them) as a
// template image: its shape in `color` on transparency, fitted into `size`.
// Null image when the platform has no picture for the name. GUI thread.
// macOS: the system symbol itself. Elsewhere: an icon of the freedesktop
// icon theme, picked by freedesktopIconName().
[[nodiscard]] QImage renderSymbol(const QString& name, const QSize& size, const QColor& color);

// Names the freedesktop icon theme where the platform names none (offscreen
// and bare X servers do not), and adds the system's icon folders. Once per
// process; elsewhere a no-op.
void ensureIconTheme();

// The freedesktop icon that stands in for a symbol, or empty for a name we
// have no mapping for. One table for every screen.
[[nodiscard]] QString freedesktopIconName(const QString& symbol);

} // namespace tw

#pragma once

class QWindow;

namespace tw {

// Dresses the main window the platform's way and returns how many points at
// the leading edge of the top row the content must leave free.
// macOS: the content reaches under a transparent title bar, so the top row
// shares its line with the window buttons (78 points kept free for them),
// over the under-window visual effect, which becomes the window's content
// view with the window's own view on it. Elsewhere: the window keeps its
// system frame and a plain background, nothing to keep free. GUI thread.
int applyWindowChrome(QWindow& window);

// Asks for what applyWindowChrome() needs before the first window exists
// (macOS: windows with an alpha channel, or the material cannot show
// through). Elsewhere a no-op. Once, right after the application object.
void prepareWindowChrome();

} // namespace tw

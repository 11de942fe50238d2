#pragma once

class QWindow;

namespace tw {

// Dresses the main window the platform's way and returns how many points at
// the leading edge of the top row the content must leave free.
// macOS: the content reaches under a transparent title bar, so the top row
// shares its line with the window buttons (78 points kept free for them);
// Qt's view stays the window's content view. Elsewhere: the window keeps its
// system frame, nothing to keep free. Either way the content draws the
// window's background itself, in the system's window colour. GUI thread.
int applyWindowChrome(QWindow& window);

} // namespace tw

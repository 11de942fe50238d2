#pragma once

class QWindow;

namespace tw {

// Dresses the main window the platform's way and returns how many points at
// the leading edge of the top row the content must leave free.
// macOS: the content reaches under a transparent title bar, so the top row
// shares its line with the window buttons (78 points kept free for them),
// over the under-window visual effect. Elsewhere: the window keeps its
// system frame and a plain background, nothing to keep free. GUI thread.
int applyWindowChrome(QWindow& window);

} // namespace tw

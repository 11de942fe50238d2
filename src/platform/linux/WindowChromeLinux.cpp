#include "platform/WindowChrome.h"

namespace tw {

int applyWindowChrome(QWindow&)
{
    // The window manager draws the frame; the content starts below it.
    return 0;
}

} // namespace tw

#include "platform/WindowChrome.h"

#import <AppKit/AppKit.h>

#include <QWindow>

namespace tw {

int applyWindowChrome(QWindow& window)
{
    NSView* qtView = (__bridge NSView*)reinterpret_cast<void*>(window.winId());
    NSWindow* nsWindow = qtView.window;
    if (!nsWindow)
        return 0;
    // A deliberate change from the translucent under-window material: the
    // material can only lie behind Qt's view by taking the content view from
    // Qt (which then sends showing, hiding, flags, the title-bar buttons and
    // geometry to its view instead of the window) or by adding a view to
    // AppKit's own frame view, which AppKit warns against. The window is
    // opaque and the content paints the system's window colour, which follows
    // the appearance as the material did.
    nsWindow.titleVisibility = NSWindowTitleHidden;
    nsWindow.titlebarAppearsTransparent = YES;
    nsWindow.styleMask |= NSWindowStyleMaskFullSizeContentView;
    return 78;
}

} // namespace tw

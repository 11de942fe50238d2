#include "platform/WindowChrome.h"

#import <AppKit/AppKit.h>

#include <QWindow>

namespace tw {

int applyWindowChrome(QWindow& window)
{
    NSView* contentView = reinterpret_cast<NSView*>(window.winId());
    NSWindow* nsWindow = contentView.window;
    if (!nsWindow)
        return 0;
    nsWindow.titleVisibility = NSWindowTitleHidden;
    nsWindow.titlebarAppearsTransparent = YES;
    nsWindow.styleMask |= NSWindowStyleMaskFullSizeContentView;
    nsWindow.opaque = NO;
    nsWindow.backgroundColor = NSColor.clearColor;

    // What lies behind shows faintly through, and stays so when the window
    // is not key: material 21, blending 0 (behind window), state 1 (active).
    NSVisualEffectView* effect = [[NSVisualEffectView alloc] initWithFrame:nsWindow.contentView.bounds];
    effect.material = NSVisualEffectMaterialUnderWindowBackground;
    effect.blendingMode = NSVisualEffectBlendingModeBehindWindow;
    effect.state = NSVisualEffectStateActive;
    effect.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
    NSView* frameView = nsWindow.contentView.superview;
    [frameView addSubview:effect positioned:NSWindowBelow relativeTo:nsWindow.contentView];
    return 78;
}

} // namespace tw

#include "platform/WindowChrome.h"

#import <AppKit/AppKit.h>

#include <QQuickWindow>
#include <QWindow>

namespace tw {

void prepareWindowChrome()
{
    // Without an alpha channel Qt's window is opaque and hides the material.
    QQuickWindow::setDefaultAlphaBuffer(true);
}

int applyWindowChrome(QWindow& window)
{
    NSView* qtView = (__bridge NSView*)reinterpret_cast<void*>(window.winId());
    NSWindow* nsWindow = qtView.window;
    if (!nsWindow)
        return 0;
    nsWindow.titleVisibility = NSWindowTitleHidden;
    nsWindow.titlebarAppearsTransparent = YES;
    nsWindow.styleMask |= NSWindowStyleMaskFullSizeContentView;
    nsWindow.opaque = NO;
    nsWindow.backgroundColor = NSColor.clearColor;

    // What lies behind shows faintly through, and stays so when the window
    // is not key. The material becomes the window's content view and Qt's
    // view lies on it, filling it: AppKit's frame view above is not ours.
    NSView* content = nsWindow.contentView;
    NSVisualEffectView* effect = [[NSVisualEffectView alloc] initWithFrame:content.frame];
    effect.material = NSVisualEffectMaterialUnderWindowBackground;
    effect.blendingMode = NSVisualEffectBlendingModeBehindWindow;
    effect.state = NSVisualEffectStateActive;
    nsWindow.contentView = effect;
    content.frame = effect.bounds;
    content.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
    [effect addSubview:content];
    return 78;
}

} // namespace tw

#include "platform/SystemAppearance.h"

#import <AppKit/AppKit.h>

#include <QString>

#include <functional>

// Key-value observing needs an object to tell; it only passes the news on.
@interface TidewickAppearanceObserver : NSObject {
@public
    std::function<void()> onChange;
}
@end

@implementation TidewickAppearanceObserver
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(void*)context
{
    (void)keyPath;
    (void)object;
    (void)change;
    (void)context;
    if (onChange)
        onChange();
}
@end

namespace tw {

namespace {

// The application's effective appearance, observed: AppKit changes it when
// the user switches between light and dark, and when the accent colour
// changes; the system colours' notification covers the accent as well.
class MacAppearance final : public SystemAppearance {
public:
    MacAppearance()
    {
        m_observer = [[TidewickAppearanceObserver alloc] init];
        m_observer->onChange = [this] { Q_EMIT changed(); };
        [NSApp addObserver:m_observer forKeyPath:@"effectiveAppearance" options:0 context:nullptr];
        m_colours = [NSNotificationCenter.defaultCenter addObserverForName:NSSystemColorsDidChangeNotification
                                                                    object:nil
                                                                     queue:nil
                                                                usingBlock:^(NSNotification* note) {
                                                                  (void)note;
                                                                  Q_EMIT changed();
                                                                }];
        // Reduce motion is among the accessibility display options.
        NSNotificationCenter* workspace = NSWorkspace.sharedWorkspace.notificationCenter;
        m_motion = [workspace addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                                          object:nil
                                           queue:nil
                                      usingBlock:^(NSNotification* note) {
                                        (void)note;
                                        Q_EMIT changed();
                                      }];
    }
    ~MacAppearance() override
    {
        [NSApp removeObserver:m_observer forKeyPath:@"effectiveAppearance"];
        [NSNotificationCenter.defaultCenter removeObserver:m_colours];
        [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:m_motion];
    }

    Appearance current() const override
    {
        NSAppearance* appearance = NSApp.effectiveAppearance;
        NSAppearanceName name =
            [appearance bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
        // The accent is a dynamic colour: resolve it in the application's appearance.
        __block CGFloat red = -1, green = -1, blue = -1;
        [appearance performAsCurrentDrawingAppearance:^{
          NSColor* accent = [NSColor.controlAccentColor colorUsingColorSpace:NSColorSpace.sRGBColorSpace];
          if (accent) {
              red = accent.redComponent;
              green = accent.greenComponent;
              blue = accent.blueComponent;
          }
        }];
        return {isDarkAppearanceName(name ? QString::fromNSString(name) : QString()),
                accentFromComponents(red, green, blue),
                bool(NSWorkspace.sharedWorkspace.accessibilityDisplayShouldReduceMotion)};
    }

private:
    TidewickAppearanceObserver* m_observer = nil;
    id m_colours = nil;
    id m_motion = nil;
};

} // namespace

std::unique_ptr<SystemAppearance> makeSystemAppearance()
{
    return std::make_unique<MacAppearance>();
}

} // namespace tw

#include "platform/RunningApplications.h"

#import <AppKit/AppKit.h>

namespace tw {

QSet<QString> runningBundleIdentifiers()
{
    QSet<QString> identifiers;
    @autoreleasepool {
        for (NSRunningApplication* app in NSWorkspace.sharedWorkspace.runningApplications) {
            if (app.bundleIdentifier)
                identifiers.insert(QString::fromNSString(app.bundleIdentifier));
        }
    }
    return identifiers;
}

} // namespace tw

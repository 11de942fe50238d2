#include "platform/RunningApplications.h"

#import <AppKit/AppKit.h>

namespace tw {

namespace {

NSRunningApplication* firstRunning(const QString& bundleID)
{
    for (NSRunningApplication* app in NSWorkspace.sharedWorkspace.runningApplications) {
        if (app.bundleIdentifier && QString::fromNSString(app.bundleIdentifier) == bundleID)
            return app;
    }
    return nil;
}

class MacRunningApplications final : public RunningApplications {
public:
    bool isRunning(const QString& bundleID, const QByteArray&) const override
    {
        @autoreleasepool {
            return firstRunning(bundleID) != nil;
        }
    }
    bool terminate(const QString& bundleID, const QByteArray&) override
    {
        @autoreleasepool {
            NSRunningApplication* app = firstRunning(bundleID);
            return app != nil && [app terminate];
        }
    }
};

} // namespace

RunningApplications& systemRunningApplications()
{
    static MacRunningApplications running;
    return running;
}

} // namespace tw

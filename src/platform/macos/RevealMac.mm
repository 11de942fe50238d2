// Reveal in Finder through NSWorkspace. Compiled with ARC.

#include "platform/FileReveal.h"

#import <AppKit/AppKit.h>

namespace tw {

namespace {
class WorkspaceReveal final : public FileReveal {
public:
    void reveal(const QByteArray& path) override
    {
        @autoreleasepool {
            NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path.constData()
                                                                                         length:NSUInteger(path.size())];
            if (!text)
                return;
            [[NSWorkspace sharedWorkspace] activateFileViewerSelectingURLs:@[ [NSURL fileURLWithPath:text] ]];
        }
    }
};
} // namespace

FileReveal& systemFileReveal()
{
    static WorkspaceReveal reveal;
    return reveal;
}

} // namespace tw

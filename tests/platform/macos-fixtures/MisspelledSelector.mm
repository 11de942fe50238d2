// Refused: NSWorkspace has no such selector (it is ...SelectingURLs:).
#import <AppKit/AppKit.h>

void reveal(NSURL* url)
{
    [NSWorkspace.sharedWorkspace activateFileViewerSelectingURL:@[ url ]];
}

#include "platform/Trash.h"

#import <AppKit/AppKit.h>

#include <QFile>

namespace tw {

namespace {
class WorkspaceTrash : public Trash {
public:
    Answer recycle(const QList<QByteArray>& paths) override
    {
        Answer answer;
        @autoreleasepool {
            NSMutableArray<NSURL*>* urls = [NSMutableArray arrayWithCapacity:NSUInteger(paths.size())];
            NSMutableDictionary<NSURL*, NSData*>* given = [NSMutableDictionary dictionary];
            for (const QByteArray& path : paths) {
                NSURL* url = [NSURL fileURLWithFileSystemRepresentation:path.constData() isDirectory:NO relativeToURL:nil];
                [urls addObject:url];
                given[url] = [NSData dataWithBytes:path.constData() length:NSUInteger(path.size())];
            }
            // The completion may come on any thread; wait for it here, on our worker.
            dispatch_semaphore_t done = dispatch_semaphore_create(0);
            __block NSDictionary<NSURL*, NSURL*>* moved = nil;
            __block NSError* failure = nil;
            [NSWorkspace.sharedWorkspace recycleURLs:urls
                                   completionHandler:^(NSDictionary<NSURL*, NSURL*>* newURLs, NSError* error) {
                                       moved = newURLs;
                                       failure = error;
                                       dispatch_semaphore_signal(done);
                                   }];
            dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
            for (NSURL* url in moved) {
                NSData* original = given[url];
                if (!original)
                    continue;
                const QByteArray from(static_cast<const char*>(original.bytes), qsizetype(original.length));
                answer.moved.insert(from, QByteArray(moved[url].fileSystemRepresentation));
            }
            if (failure)
                answer.error = QString::fromNSString(failure.localizedDescription);
        }
        return answer;
    }
};
} // namespace

Trash& systemTrash()
{
    static WorkspaceTrash trash;
    return trash;
}

} // namespace tw

#include "platform/Trash.h"

#include "platform/MacAnswers.h"

#import <AppKit/AppKit.h>

namespace tw {

namespace {
class WorkspaceTrash : public Trash {
public:
    Answer recycle(const QList<QByteArray>& paths) override
    {
        Answer answer;
        @autoreleasepool {
            NSMutableArray<NSURL*>* urls = [NSMutableArray arrayWithCapacity:NSUInteger(paths.size())];
            for (const QByteArray& path : paths)
                [urls addObject:[NSURL fileURLWithFileSystemRepresentation:path.constData()
                                                               isDirectory:NO
                                                             relativeToURL:nil]];
            // NSWorkspace takes this call from a block on a dispatch queue and
            // answers on that queue; our worker waits for the answer.
            dispatch_semaphore_t done = dispatch_semaphore_create(0);
            __block NSDictionary<NSURL*, NSURL*>* moved = nil;
            __block NSError* failure = nil;
            dispatch_async(dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0), ^{
                [NSWorkspace.sharedWorkspace recycleURLs:urls
                                       completionHandler:^(NSDictionary<NSURL*, NSURL*>* newURLs, NSError* error) {
                                           moved = newURLs;
                                           failure = error;
                                           dispatch_semaphore_signal(done);
                                       }];
            });
            dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
            QList<QPair<QByteArray, QByteArray>> answered;
            for (NSURL* url in moved)
                answered.append({QByteArray(url.fileSystemRepresentation),
                                 QByteArray(moved[url].fileSystemRepresentation)});
            answer.moved = movedAsAsked(paths, answered);
            if (failure)
                answer.error = QString::fromNSString(failure.localizedDescription);
        }
        return answer;
    }

    // From the URL the Trash answered back to the original place; the file
    // manager refuses when something stands there, so nothing is replaced.
    std::optional<QString> restore(const QByteArray& place, const QByteArray& original) override
    {
        @autoreleasepool {
            NSURL* from = [NSURL fileURLWithFileSystemRepresentation:place.constData()
                                                         isDirectory:NO
                                                       relativeToURL:nil];
            NSURL* to = [NSURL fileURLWithFileSystemRepresentation:original.constData()
                                                       isDirectory:NO
                                                     relativeToURL:nil];
            NSError* error = nil;
            if ([NSFileManager.defaultManager moveItemAtURL:from toURL:to error:&error])
                return std::nullopt;
            return QString::fromNSString(error.localizedDescription);
        }
    }
};
} // namespace

Trash& systemTrash()
{
    static WorkspaceTrash trash;
    return trash;
}

} // namespace tw

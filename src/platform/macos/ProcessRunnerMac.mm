// Tools started with NSTask, output and errors through one NSPipe. Compiled
// with ARC.

#include "platform/ProcessRunner.h"

#import <Foundation/Foundation.h>

namespace tw {

namespace {
class TaskRunner final : public ProcessRunner {
public:
    std::optional<QByteArray> run(const QString& program, const QStringList& arguments) const override
    {
        @autoreleasepool {
            NSTask* task = [[NSTask alloc] init];
            task.executableURL = [NSURL fileURLWithPath:program.toNSString()];
            NSMutableArray<NSString*>* list = [NSMutableArray arrayWithCapacity:NSUInteger(arguments.size())];
            for (const QString& argument : arguments)
                [list addObject:argument.toNSString()];
            task.arguments = list;
            NSPipe* pipe = [NSPipe pipe];
            task.standardOutput = pipe;
            task.standardError = pipe;
            NSError* error = nil;
            if (![task launchAndReturnError:&error])
                return std::nullopt;
            // The reading call that reports a failure; the older one raises an exception.
            NSData* said = [pipe.fileHandleForReading readDataToEndOfFileAndReturnError:&error];
            [task waitUntilExit];
            if (!said)
                return std::nullopt;
            return QByteArray(static_cast<const char*>(said.bytes), qsizetype(said.length));
        }
    }
};
} // namespace

const ProcessRunner& systemProcessRunner()
{
    // Never destroyed: a tool call on a worker thread may still be running
    // when the process exits.
    static const TaskRunner* const runner = new TaskRunner;
    return *runner;
}

} // namespace tw

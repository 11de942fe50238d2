#include "platform/ElevatedRunner.h"

#include "platform/MacAnswers.h"
#include "removal/PrivilegedRemoval.h"

#import <Foundation/Foundation.h>

namespace tw {

namespace {
// "/usr/bin/osascript -e SOURCE", the source one argument, no shell between.
class OsascriptRunner : public ElevatedRunner {
public:
    QByteArray trashDirectory() const override
    {
        return QByteArray(NSHomeDirectory().fileSystemRepresentation) + "/.Trash";
    }
    ScriptTools tools() const override { return macScriptTools(); }

    // What the script leaves in ~/.Trash is already what the Finder shows.
    Result run(const QByteArray& script, const std::vector<StagedItem>&) override
    {
        Result result;
        @autoreleasepool {
            const QByteArray source = appleScriptFor(script);
            NSTask* task = [[NSTask alloc] init];
            task.executableURL = [NSURL fileURLWithPath:@"/usr/bin/osascript"];
            NSString* argument = [[NSString alloc] initWithBytes:source.constData()
                                                          length:NSUInteger(source.size())
                                                        encoding:NSUTF8StringEncoding];
            if (!argument) {
                // Names that are not UTF-8 cannot travel through AppleScript text.
                result.launchError = QStringLiteral("the script is not valid UTF-8");
                return result;
            }
            task.arguments = @[ @"-e", argument ];
            NSPipe* errorPipe = [NSPipe pipe];
            task.standardError = errorPipe;
            // Nobody reads the script's result: a pipe left unread could fill and stall it.
            task.standardOutput = [NSFileHandle fileHandleWithNullDevice];
            NSError* launchError = nil;
            if (![task launchAndReturnError:&launchError]) {
                result.launchError = QString::fromNSString(launchError.localizedDescription);
                return result;
            }
            result.launched = true;
            // The reading call that reports a failure; the older one raises an exception.
            NSData* said = [errorPipe.fileHandleForReading readDataToEndOfFileAndReturnError:nil];
            [task waitUntilExit];
            result.errorOutput = QByteArray(static_cast<const char*>(said.bytes), qsizetype(said.length));
            result.dismissed = osascriptReportsCancel(result.errorOutput);
        }
        return result;
    }
};
} // namespace

ElevatedRunner& systemElevatedRunner()
{
    static OsascriptRunner runner;
    return runner;
}

} // namespace tw

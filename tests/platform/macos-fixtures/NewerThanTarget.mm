// Refused: a call introduced after the deployment target (macOS 13), made
// without an availability check.
#import <Foundation/Foundation.h>

extern "C" int laterCall(void) TW_MACOS(14.0);

int useIt()
{
    return laterCall();
}

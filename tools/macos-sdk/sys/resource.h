// For the check on Linux only: the system's header, plus what macOS adds to
// it (setiopolicy_np). On a Mac the SDK's own <sys/resource.h> is used.
#include_next <sys/resource.h>
#import "../AppleDeclarations.h"

// For the check on Linux only: on a Mac the SDK's own <sys/attr.h> is used.
#import "../AppleDeclarations.h"

// The target Qt's headers look for: macOS. See AppleDeclarations.h.
#pragma once
#define TARGET_OS_MAC 1
#define TARGET_OS_OSX 1
#define TARGET_OS_IPHONE 0

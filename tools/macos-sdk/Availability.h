// Qt's headers ask for the deployment target; ours is macOS 13.
#pragma once
#define __MAC_13_0 130000
#define __MAC_OS_X_VERSION_MIN_REQUIRED __MAC_13_0
#define __MAC_OS_X_VERSION_MAX_ALLOWED __MAC_13_0

#include "platform/FileProbe.h"

namespace tw {

// Linux has no per-application privacy permission for folders.
bool systemHasPrivacyPermissions()
{
    return false;
}

} // namespace tw

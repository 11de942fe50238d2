#include "platform/FileProbe.h"

namespace tw {

// Mail, Safari, Messages and the TCC folder are closed without Full Disk Access.
bool systemHasPrivacyPermissions()
{
    return true;
}

} // namespace tw

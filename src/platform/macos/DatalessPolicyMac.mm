// The policy call alone; what a refused listing means is decided in
// scan/Dataless.cpp.

#include "platform/DatalessPolicy.h"

#include <sys/resource.h>

namespace tw {

bool keepDatalessFilesRemote()
{
    return ::setiopolicy_np(IOPOL_TYPE_VFS_MATERIALIZE_DATALESS_FILES, IOPOL_SCOPE_PROCESS,
                            IOPOL_MATERIALIZE_DATALESS_FILES_OFF) == 0;
}

} // namespace tw

#include "platform/BulkLister.h"
#include "platform/DatalessPolicy.h"

namespace tw {

// No bulk listing on Linux: readdir and fstatat.
const BulkLister* systemBulkLister()
{
    return nullptr;
}

// No file provider evicts files here.
bool keepDatalessFilesRemote()
{
    return true;
}

} // namespace tw

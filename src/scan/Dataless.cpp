#include "scan/Dataless.h"

#include "scan/BulkRecords.h"

#include <cerrno>

namespace tw {

EntryOutcome datalessOutcome(bool isFolder, std::uint32_t flags, int listingError)
{
    // A flagged folder is never opened: should the policy not hold (an older
    // system), listing it would bring it down from the network.
    if (flags & bulk::kDatalessFlag)
        return EntryOutcome::inCloud;
    if (listingError == 0 || !isFolder)
        return EntryOutcome::usual;
    // With materialisation off, the system answers a dataless folder with
    // EDEADLK ("resource deadlock avoided") rather than fetch it.
    return listingError == EDEADLK ? EntryOutcome::inCloud : EntryOutcome::unreadable;
}

} // namespace tw

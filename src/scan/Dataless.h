#pragma once

#include <cstdint>

namespace tw {

// What the walk makes of an entry that a file provider (iCloud Drive and
// the like) may have evicted to the cloud. Reading such an entry would
// download it, filling the disk the user is trying to free, so the process
// turns that off (keepDatalessFilesRemote) and the system then refuses the
// listing instead.
enum class EntryOutcome {
    usual,      // a file charged as usual, or a folder to enter / entered
    inCloud,    // kept with its local allocated size, marked, never listed: not an error
    unreadable, // a folder whose listing failed for another reason
};

// `flags`: the entry's file flags (0 where the platform has none);
// `listingError`: 0, or the errno with which opening or listing the folder
// failed.
[[nodiscard]] EntryOutcome datalessOutcome(bool isFolder, std::uint32_t flags, int listingError);

} // namespace tw

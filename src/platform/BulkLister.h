#pragma once

#include <cstddef>

namespace tw {

// Lists a folder in batches of attribute records, laid out as macOS's
// getattrlistbulk returns them (see scan/BulkRecords.h), asking for
// bulk::kRequested. One call brings the names and attributes of many
// entries, where readdir needs a further stat for each.
class BulkLister {
public:
    virtual ~BulkLister() = default;
    // Fills `buffer` with the records of the next entries of the folder open
    // at `fd`. Returns how many, 0 once the folder is exhausted, -1 with
    // errno set on failure. Any thread; a thread lists one folder at a time,
    // to its end or until it gives the folder up.
    [[nodiscard]] virtual int fill(int fd, unsigned char* buffer, std::size_t size) const = 0;
};

// The running system's bulk listing, or null where it has none (Linux:
// the walk uses readdir and a stat for each entry). Lives for the process.
[[nodiscard]] const BulkLister* systemBulkLister();

} // namespace tw

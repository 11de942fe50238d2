// Any bytes as a bulk listing's buffer, the first byte giving the record
// count: reading must never crash nor read outside the buffer, and every
// name it gives must be one component that a walk can open again.

#include "scan/BulkRecords.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    // A copy of exactly the buffer's length, so that ASan sees any overrun.
    const std::vector<unsigned char> buffer(data + 1, data + size);
    tw::bulk::RecordReader reader(buffer.data(), buffer.size(), data[0]);
    tw::bulk::Entry entry;
    int read = 0;
    while (reader.next(entry)) {
        ++read;
        const auto* begin = reinterpret_cast<const unsigned char*>(entry.name.data());
        if (entry.name.empty() || begin < buffer.data() || begin + entry.name.size() >= buffer.data() + buffer.size()
            || entry.name.find('/') != std::string_view::npos || entry.name.find('\0') != std::string_view::npos)
            std::abort();
        (void)entry.complete();
    }
    if (read > data[0])
        std::abort();
    return 0;
}

#pragma once

// Internal to the scan subsystem: what a ScanTree owns besides its root.

#include "scan/Arena.h"
#include "scan/FileNode.h"
#include "scan/TreeGate.h"

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace tw {

// Names are kept as a LEB128 length, the bytes, and a NUL, so a stored name
// goes straight to the system calls.
inline const unsigned char* storeName(Arena& arena, const char* name, std::size_t length)
{
    unsigned char prefix[10];
    std::size_t prefixLength = 0;
    std::size_t rest = length;
    do {
        prefix[prefixLength++] = static_cast<unsigned char>((rest & 0x7f) | (rest > 0x7f ? 0x80 : 0));
        rest >>= 7;
    } while (rest);
    auto* out = static_cast<unsigned char*>(arena.allocate(prefixLength + length + 1, 1));
    // Almost every name is shorter than 128 bytes: one length byte.
    if (prefixLength == 1)
        out[0] = prefix[0];
    else
        std::memcpy(out, prefix, prefixLength);
    std::memcpy(out + prefixLength, name, length);
    out[prefixLength + length] = 0;
    return out;
}

inline std::string_view readStoredName(const unsigned char* at)
{
    std::size_t length = 0;
    int shift = 0;
    while (*at & 0x80) {
        length |= std::size_t(*at++ & 0x7f) << shift;
        shift += 7;
    }
    length |= std::size_t(*at++) << shift;
    return {reinterpret_cast<const char*>(at), length};
}

struct ScanTree::Arenas {
    std::vector<Arena> arenas;
    qint64 nodeCount = 1;
    std::vector<ScanTree::Excluded> excluded;
    TreeGate gate;
    // Walks of single folders whose nodes now hang in this tree.
    std::vector<std::shared_ptr<ScanTree>> grafts;
};

} // namespace tw

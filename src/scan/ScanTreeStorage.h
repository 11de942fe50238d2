#pragma once

// Internal to the scan subsystem: what a ScanTree owns besides its root.

#include "scan/Arena.h"
#include "scan/FileNode.h"

#include <vector>

namespace tw {

struct ScanTree::Arenas {
    std::vector<Arena> arenas;
    qint64 nodeCount = 1;
};

} // namespace tw

#pragma once

#include "scan/FileNode.h"

#include <QByteArray>

#include <vector>

namespace tw::scanfile {

// What changed between two scans of one folder, entry by entry, matched by
// name from the roots down (the roots' own paths may differ: a scan made on
// another machine). A file that changed, or a folder that came or went as a
// whole, is one change; a folder that only holds changes is none itself.
struct Change {
    enum class Kind { grown, shrunk, added, removed };
    QByteArray path; // below the roots, "/"-separated, raw bytes
    qint64 before = 0;
    qint64 after = 0;
    Kind kind = Kind::grown;
    bool isDirectory = false;
    [[nodiscard]] qint64 delta() const { return after - before; }
};

struct Diff {
    std::vector<Change> changes; // largest |delta| first; equal ones by path
    qint64 before = 0;           // the roots' sizes
    qint64 after = 0;
};

// Compares the trees below `before` and `after`. Reads both trees: call it
// where nobody changes them (the GUI thread, or a worker holding both).
[[nodiscard]] Diff diffTrees(const FileNode& before, const FileNode& after);

} // namespace tw::scanfile

#pragma once

#include <QByteArrayList>

#include <cstdio>
#include <optional>

#include <QString>

namespace tw {
class ScanTree;
}

namespace tw::cli {

// `scan PATH [--workers N] [--json] [--depth N] [--quiet] [--find PATTERN]`: walks PATH with the
// real Scanner, shows progress on stderr when that is a terminal, then prints
// the totals and the tree (as `key: value` lines and an indented tree, or as
// JSON; with --find, only the matching items, largest first). A root that is missing or cannot be read is an error. `args` are
// argv's own bytes. Returns the exit code.
int runScan(const QByteArrayList& args);

// `text` as a JSON string.
void writeJsonString(std::FILE* out, const QString& text);

// Prints a finished tree as `scan --json` does. `live` for a tree walked just
// now on this machine, which alone may say what its volume could not show.
void printTreeJson(std::FILE* out, const tw::ScanTree& tree, int workers, std::optional<int> depth, bool live);

} // namespace tw::cli

#pragma once

#include <QStringList>

namespace tw::cli {

// `scan PATH [--workers N] [--json] [--depth N] [--quiet]`: walks PATH with the
// real Scanner, shows progress on stderr, then prints the totals and the tree
// (as `key: value` lines and an indented tree, or as JSON). Returns the exit code.
int runScan(const QStringList& args);

} // namespace tw::cli

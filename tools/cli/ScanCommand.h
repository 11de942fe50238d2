#pragma once

#include <QByteArrayList>

namespace tw::cli {

// `scan PATH [--workers N] [--json] [--depth N] [--quiet] [--find PATTERN]`: walks PATH with the
// real Scanner, shows progress on stderr when that is a terminal, then prints
// the totals and the tree (as `key: value` lines and an indented tree, or as
// JSON; with --find, only the matching items, largest first). A root that is missing or cannot be read is an error. `args` are
// argv's own bytes. Returns the exit code.
int runScan(const QByteArrayList& args);

} // namespace tw::cli

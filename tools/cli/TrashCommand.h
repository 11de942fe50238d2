#pragma once

#include <QByteArrayList>

namespace tw::cli {

// `trash [--json] PATH…`: moves the paths to the Trash with recycleBatch,
// exactly as the uninstaller would (missing items first, the administrator
// prompt for what needs it), and prints one outcome per item. Paths are the
// raw bytes of the command line. Returns 0 when every item moved, 1 if any
// failed, 2 on bad usage.
int runTrash(const QByteArrayList& args);

} // namespace tw::cli

#pragma once

#include <QByteArrayList>

namespace tw::cli {

// tidewick-cli uninstall BUNDLE [--home DIR] [--system-library DIR]
//     [--include-shared] [--dry-run] [--json]
// The uninstall dialog's plan with its default choices (shared items left
// unless --include-shared) and the same move to the Trash. Exit status 0
// when every chosen item went (or, dry, would be chosen), 1 when something
// stayed, 2 on bad usage.
int runUninstall(const QByteArrayList& args);

} // namespace tw::cli

#pragma once

#include <QByteArrayList>

namespace tw::cli {

// `open FILE [--json] [--depth N]`: reads a saved scan (Tidewick's, or
// another tool's in the same format, plain or zstd) and prints it as `scan`
// would. A file that cannot be read is an error with its reason.
int runOpen(const QByteArrayList& args);

// `diff OLD NEW [--top N] [--json]`: what changed from the saved scan OLD
// to NEW, largest change first.
int runDiff(const QByteArrayList& args);

} // namespace tw::cli

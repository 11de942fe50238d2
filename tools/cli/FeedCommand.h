#pragma once

#include <QStringList>

namespace tw::cli {

// `feed [--base URL] [--locale CODE]`: asks the sponsored feed for its current
// item, as the app would, and prints it as JSON, or why there is none.
// Exit status: 0 with an item, 1 without, 2 for a wrong command line.
int runFeed(const QStringList& args);

} // namespace tw::cli

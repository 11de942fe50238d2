#pragma once

#include <QSet>
#include <QString>

namespace tw {

// The bundle identifiers of the applications running now (entries without
// one left out). macOS asks the workspace; elsewhere no application bundle
// runs, so the set is empty. Any thread.
[[nodiscard]] QSet<QString> runningBundleIdentifiers();

} // namespace tw

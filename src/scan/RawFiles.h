#pragma once

#include <QByteArrayList>

namespace tw {

// The names in `folder`, hidden ones included, "." and ".." left out, in the
// order the file system gives them; raw bytes. Empty when it cannot be
// listed. Any thread.
[[nodiscard]] QByteArrayList directoryEntries(const QByteArray& folder);

} // namespace tw

#pragma once

// Files and folders by the raw bytes of their paths (names need not be
// UTF-8, so nothing here goes through QString). Any thread.

#include <QByteArray>
#include <QByteArrayList>
#include <QDateTime>
#include <optional>

namespace tw {

// The names in `folder`, hidden ones included, "." and ".." left out, in the
// order the file system gives them. Empty when it cannot be listed.
[[nodiscard]] QByteArrayList directoryEntries(const QByteArray& folder);

// The whole content of the regular file at `path` (links followed), or
// nothing when it cannot be read, is not a regular file, or is larger than
// `limit` bytes.
[[nodiscard]] std::optional<QByteArray> readFileBytes(const QByteArray& path, qint64 limit);

// When the file at `path` (links followed) was last read, to the second, or
// nothing when it cannot be examined. Whole seconds because POSIX names only
// those alike on both systems (`st_atime`); the finer field has a name of
// its own on each, and no date we show needs it.
[[nodiscard]] std::optional<QDateTime> lastAccess(const QByteArray& path);

} // namespace tw

#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

namespace tw {

// The platform's Trash: one call for a list of items, answering where each
// moved item went and, if anything went wrong, one error for the call (the
// operating system's own sentence). An item missing from `moved` stayed in
// place. Paths are raw bytes. Blocks until the platform answers; call from a
// worker thread only. Never deletes: every removal is a move.
class Trash {
public:
    struct Answer {
        QHash<QByteArray, QByteArray> moved; // old place -> new place
        std::optional<QString> error;
    };
    virtual ~Trash() = default;
    [[nodiscard]] virtual Answer recycle(const QList<QByteArray>& paths) = 0;
};

// The running system's Trash; lives for the whole process.
[[nodiscard]] Trash& systemTrash();

} // namespace tw

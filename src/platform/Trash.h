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
    // Why one item stayed, where the platform can tell items apart.
    struct Failure {
        QString message; // the system's sentence
        // The item's volume has no Trash that may safely be used (say, a
        // link planted by another user): no rights would help, so such an
        // item never goes to the administrator prompt. `trash` names it.
        bool noUsableTrash = false;
        QByteArray trash;
    };
    struct Answer {
        QHash<QByteArray, QByteArray> moved; // old place -> new place
        std::optional<QString> error;
        // Per item, where known; an unmoved item missing here takes `error`.
        QHash<QByteArray, Failure> failures;
    };
    virtual ~Trash() = default;
    [[nodiscard]] virtual Answer recycle(const QList<QByteArray>& paths) = 0;
    // Moves an item this Trash took back to `original`, never replacing
    // anything that stands there, and forgets the Trash's own record of it.
    // `place` is where recycle() said the item went. Answers the system's
    // sentence for a failure, or nothing once the item is back.
    [[nodiscard]] virtual std::optional<QString> restore(const QByteArray& place,
                                                         const QByteArray& original) = 0;
};

// The running system's Trash; lives for the whole process.
[[nodiscard]] Trash& systemTrash();

} // namespace tw

#pragma once

// Moving files and folders to the Trash, item by item. Free functions that
// hold no state; both block until the platform has answered, so call them
// from a worker thread, never the GUI thread. Paths are raw bytes, kept exact
// from the listing to the Trash. Nothing here deletes: every removal is a move.

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <exception>
#include <utility>

namespace tw {

class Trash;
class ElevatedRunner;

// A failed move, with the message to show.
class TrashError : public std::exception {
public:
    enum class Kind { failed, partial };

    static TrashError failed(QString message);
    static TrashError partial(QList<QByteArray> succeeded,
                              QList<std::pair<QByteArray, QString>> failed);

    [[nodiscard]] Kind kind() const { return m_kind; }
    // `failed`: the message. `partial`: "Deleted: N. Failed: M." and one
    // "• name: message" line per failed item (fixed English on purpose).
    [[nodiscard]] QString errorDescription() const;
    [[nodiscard]] const char* what() const noexcept override { return "TrashError"; }

private:
    Kind m_kind = Kind::failed;
    QString m_message;
    QList<QByteArray> m_succeeded;
    QList<std::pair<QByteArray, QString>> m_failed;
};

// Per item: exactly one of the two lists. `succeeded` holds the paths that
// were given, not their places in the Trash.
struct BatchOutcome {
    QList<QByteArray> succeeded;
    QList<std::pair<QByteArray, QString>> failed;
    // Where the Trash put each item of `succeeded` that it moved itself, so
    // the move can be taken back; items moved with administrator rights
    // have no entry.
    QHash<QByteArray, QByteArray> places = {};
};

// Moves one item and returns its place in the Trash; throws TrashError
// (kind `failed`) with the platform's sentence or "trash.needsAdmin". No
// escalation: the caller shows the failure.
[[nodiscard]] QByteArray recycle(const QByteArray& path, Trash& trash);
[[nodiscard]] QByteArray recycle(const QByteArray& path);

// Moves a list of items in one platform call and never throws. Missing items
// (dangling links too) fail first without reaching the platform; items that
// failed for want of permission go, all at once, through the administrator
// prompt. Order: successes, then privileged successes; failures: missing,
// others, privileged; input order within each group.
[[nodiscard]] BatchOutcome recycleBatch(const QList<QByteArray>& paths, Trash& trash,
                                        ElevatedRunner& runner);
[[nodiscard]] BatchOutcome recycleBatch(const QList<QByteArray>& paths);

} // namespace tw

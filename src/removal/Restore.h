#pragma once

// Taking a removal back: each item goes from the Trash to where it was. The
// decisions live here, on every platform; the platform's Trash only makes the
// move. Blocks on the disk: call from a worker thread.

#include <QByteArray>
#include <QList>
#include <QString>
#include <utility>

namespace tw {

class Trash;

// One item the app moved: where it was, and where the Trash put it. `place`
// is empty for an item that went through the administrator prompt.
struct TrashedItem {
    QByteArray original;
    QByteArray place;
    bool operator==(const TrashedItem&) const = default;
};

struct RestoreOutcome {
    QList<QByteArray> restored; // originals, in input order
    QList<std::pair<QByteArray, QString>> failed; // original and why it stayed
};

// Puts back what it can. Nothing is ever replaced: an item whose place is
// taken, or that has left the Trash, stays where it is and is named with
// the reason. Items moved with administrator rights are not put back (see
// the key "restore.adminMoved" and restoreFromTrash's comment).
[[nodiscard]] RestoreOutcome restoreFromTrash(const QList<TrashedItem>& items, Trash& trash);

// The failures as lines "• name: message", names decoded for display.
[[nodiscard]] QString restoreFailureLines(const QList<std::pair<QByteArray, QString>>& failed);

} // namespace tw

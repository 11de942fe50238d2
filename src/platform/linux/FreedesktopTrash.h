#pragma once

#include "platform/Trash.h"

#include <QByteArray>
#include <functional>
#include <optional>

namespace tw {

// The freedesktop.org Trash: items on the home's file system go to the home
// trash ($XDG_DATA_HOME/Trash, else ~/.local/share/Trash); items on other
// mounts to that mount's own trash, so nothing is ever copied across devices.
// Every item gets an info/NAME.trashinfo (the escaped original path and the
// date) written before the move, so file managers list it and can put it
// back; names never collide. A move is a rename and nothing else: a failure
// leaves the item where it was, with strerror's sentence.
//
// A mount's trash is shared ground: another user may have planted a link or
// a folder of their own where ours should be. Trash folders are therefore
// made and opened without following links and checked for owner and mode;
// one that fails the checks is never used, and its items stay in place with
// a message that does not lead to the administrator prompt.
class FreedesktopTrash : public Trash {
public:
    // `homeTrash`: the home trash directory; `topdirOf`: the top of the mount
    // holding a path. Both default to the running system's.
    explicit FreedesktopTrash(std::optional<QByteArray> homeTrash = std::nullopt,
                              std::function<QByteArray(const QByteArray&)> topdirOf = {});

    [[nodiscard]] Answer recycle(const QList<QByteArray>& paths) override;
    // As file managers' "Restore" does: the entry's info file names where it
    // goes back (Path=, relative to the mount's top for a mount's trash),
    // and is removed once the item is back. An entry whose record names
    // another place than `original`, or has none, stays.
    [[nodiscard]] std::optional<QString> restore(const QByteArray& place,
                                                 const QByteArray& original) override;
    // The original path an entry's info file records, or nothing.
    [[nodiscard]] static std::optional<QByteArray> recordedPath(const QByteArray& place);

    [[nodiscard]] const QByteArray& homeTrash() const { return m_homeTrash; }

    // The home trash with files/ and info/, made (0700, with parents) where
    // missing; its own folders must be real folders of ours. Returns 0 or an
    // errno.
    static int prepareHome(const QByteArray& trash);
    // The home trash as the running user's environment names it.
    static QByteArray defaultHomeTrash();
    // The top directory of the mount that holds `path`, found from the
    // item's real parent folder (links along the way resolved).
    static QByteArray mountTopdir(const QByteArray& path);
    // Path= value: bytes percent-escaped, "/" kept.
    static QByteArray escapePath(const QByteArray& path);
    // The entry name for an item called `base`, at the `attempt`-th try
    // (1, 2, …): the name itself, then "name.2", "name.3"… A name too long to
    // carry ".trashinfo" within the file system's 255 bytes is cut, keeping
    // its extension, and always numbered ("stem~1.ext").
    static QByteArray entryName(const QByteArray& base, int attempt);

    // Moves `item` to `name` inside the folder `directory` unless something
    // stands there already (EEXIST then, nothing replaced). Returns 0 or an
    // errno.
    static int moveWithoutReplacing(const QByteArray& item, int directory, const QByteArray& name);

private:
    QByteArray m_homeTrash;
    std::function<QByteArray(const QByteArray&)> m_topdirOf;
};

} // namespace tw

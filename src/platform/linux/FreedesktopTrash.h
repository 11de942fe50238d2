#pragma once

#include "platform/Trash.h"

#include <QByteArray>
#include <functional>
#include <optional>

namespace tw {

// The freedesktop.org Trash: items on the home's file system go to the home
// trash ($XDG_DATA_HOME/Trash, else ~/.local/share/Trash); items on other
// mounts to that mount's own $topdir/.Trash-$UID, so nothing is ever copied
// across devices. Every item gets an info/NAME.trashinfo (the escaped
// original path and the date) written before the move, so file managers list
// it and can put it back; names never collide. A move is a rename and nothing
// else: a failure leaves the item where it was, with strerror's sentence.
class FreedesktopTrash : public Trash {
public:
    // `homeTrash`: the home trash directory; `topdirOf`: the top of the mount
    // holding a path. Both default to the running system's.
    explicit FreedesktopTrash(std::optional<QByteArray> homeTrash = std::nullopt,
                              std::function<QByteArray(const QByteArray&)> topdirOf = {});

    [[nodiscard]] Answer recycle(const QList<QByteArray>& paths) override;

    [[nodiscard]] const QByteArray& homeTrash() const { return m_homeTrash; }
    // Puts `item` into `trash` (which has files/ and info/) as an entry for
    // `originalPath`, written as `infoPath` in the info file. Returns the new
    // place, or the errno of the failure.
    static std::pair<QByteArray, int> place(const QByteArray& trash, const QByteArray& item,
                                            const QByteArray& infoPath);

    // `trash` with files/ and info/, made (0700, with parents) where missing.
    // Returns 0 or the errno of the failure.
    static int prepare(const QByteArray& trash);
    // The home trash as the running user's environment names it.
    static QByteArray defaultHomeTrash();
    // The top directory of the mount that holds `path`.
    static QByteArray mountTopdir(const QByteArray& path);
    // Path= value: bytes percent-escaped, "/" kept.
    static QByteArray escapePath(const QByteArray& path);

private:
    QByteArray m_homeTrash;
    std::function<QByteArray(const QByteArray&)> m_topdirOf;
};

} // namespace tw

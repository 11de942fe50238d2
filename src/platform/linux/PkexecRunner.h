#pragma once

#include "platform/ElevatedRunner.h"

#include <QByteArrayList>

namespace tw {

// The elevated run on Linux: `pkexec /bin/sh -s` with the script on its
// standard input, polkit's prompt asking for the password. The script moves
// items into staging folders in the home trash's files/; an exit handler set
// up before it, in the same elevated shell, then gives each moved item its
// own entry there and its .trashinfo, so it shows in the Trash like any
// other (only root may move a folder owned by someone else on).
// `prefix` is the command that raises rights; empty runs the script as the
// current user (what the tests do).
class PkexecRunner : public ElevatedRunner {
public:
    explicit PkexecRunner(QByteArrayList prefix = {"/usr/bin/pkexec"}, QByteArray homeTrash = {});

    [[nodiscard]] QByteArray trashDirectory() const override;
    [[nodiscard]] ScriptTools tools() const override;
    [[nodiscard]] Result run(const QByteArray& script,
                             const std::vector<StagedItem>& items) override;
    // The shell text that runs at the script's exit and files each staged
    // item as a Trash entry; names are chosen now, free in files/ and info/,
    // and go to `entries` in item order if given.
    [[nodiscard]] QByteArray entryHandler(const std::vector<StagedItem>& items,
                                          QList<QByteArray>* entries = nullptr) const;

private:
    QByteArrayList m_prefix;
    QByteArray m_homeTrash;
};

} // namespace tw

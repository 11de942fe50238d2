#pragma once

#include "platform/ElevatedRunner.h"

#include <QByteArrayList>

namespace tw {

// The elevated run on Linux: `pkexec /bin/sh -s` with the script on its
// standard input, polkit's prompt
// asking for the password. The script moves items into staging folders in
// the home trash's files/; adopt() then gives each its .trashinfo and its
// own place there, as the user, so it shows in the Trash like any other.
// `prefix` is the command that raises rights; empty runs the script as the
// current user (what the tests do).
class PkexecRunner : public ElevatedRunner {
public:
    explicit PkexecRunner(QByteArrayList prefix = {"/usr/bin/pkexec"}, QByteArray homeTrash = {});

    [[nodiscard]] QByteArray trashDirectory() const override;
    [[nodiscard]] ScriptTools tools() const override;
    [[nodiscard]] Result run(const QByteArray& script) override;
    void adopt(const QByteArray& stagingDirectory, const QByteArray& originalPath) override;

private:
    QByteArrayList m_prefix;
    QByteArray m_homeTrash;
};

} // namespace tw

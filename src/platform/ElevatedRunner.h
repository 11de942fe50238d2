#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <vector>

namespace tw {

// The absolute paths of the tools the privileged script calls; they differ
// between systems.
struct ScriptTools {
    QByteArray mkdir;
    QByteArray chown;
    QByteArray mv;
};

// Runs the privileged Trash script with administrator rights, behind the
// system's own password prompt. Blocks until the tool has ended: call from a
// worker thread only, never the GUI thread.
class ElevatedRunner {
public:
    struct Result {
        bool launched = false;
        QString launchError;    // why the tool could not start
        bool dismissed = false; // the tool says the user dismissed its prompt
        QByteArray errorOutput; // the tool's standard error, as it came
        // Items that left their place but did not become whole Trash entries,
        // with where they are now (Linux, where the run files them itself).
        QHash<QByteArray, QByteArray> unfiled;
    };
    // One item of the script: the fresh folder it is moved into, and where
    // it came from.
    struct StagedItem {
        QByteArray stagingDirectory;
        QByteArray originalPath;
    };
    virtual ~ElevatedRunner() = default;
    // Where the script moves items: the user's Trash (on Linux its files/).
    [[nodiscard]] virtual QByteArray trashDirectory() const = 0;
    [[nodiscard]] virtual ScriptTools tools() const = 0;
    // Runs `script` as it is. `items` say what it stages where, for a
    // platform whose Trash needs more than the move itself (Linux gives each
    // item its own entry and .trashinfo in the same elevated run).
    [[nodiscard]] virtual Result run(const QByteArray& script,
                                     const std::vector<StagedItem>& items) = 0;
};

// The running system's runner ("/usr/bin/osascript" on macOS, pkexec
// elsewhere); lives for the whole process.
[[nodiscard]] ElevatedRunner& systemElevatedRunner();

} // namespace tw

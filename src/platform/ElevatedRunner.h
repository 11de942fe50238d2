#pragma once

#include <QByteArray>
#include <QString>

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
        QString launchError;     // why the tool could not start
        bool dismissed = false;  // the tool says the user dismissed its prompt
        QByteArray errorOutput;  // the tool's standard error, as it came
    };
    virtual ~ElevatedRunner() = default;
    // Where the script moves items: the user's Trash (on Linux its files/).
    [[nodiscard]] virtual QByteArray trashDirectory() const = 0;
    [[nodiscard]] virtual ScriptTools tools() const = 0;
    [[nodiscard]] virtual Result run(const QByteArray& script) = 0;
    // An item now lies in `stagingDirectory`, moved there by the script from
    // `originalPath`: make it an ordinary Trash entry where the platform
    // needs more than the move itself. Runs as the user.
    virtual void adopt(const QByteArray& stagingDirectory, const QByteArray& originalPath) = 0;
};

// The running system's runner ("/usr/bin/osascript" on macOS, pkexec
// elsewhere); lives for the whole process.
[[nodiscard]] ElevatedRunner& systemElevatedRunner();

} // namespace tw

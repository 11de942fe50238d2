#pragma once

#include <QByteArray>
#include <QString>

namespace tw {

// Which installed applications run now, and asking one to quit. macOS asks
// the workspace by bundle identifier; Linux has no application registry, so
// an application runs there when some process's executable lies inside its
// bundle. Any thread.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;
    [[nodiscard]] virtual bool isRunning(const QString& bundleID, const QByteArray& bundlePath) const = 0;
    // Asks the application to quit, as the user's Quit would: no force.
    // Returns whether anything was asked; nothing running answers false.
    virtual bool terminate(const QString& bundleID, const QByteArray& bundlePath) = 0;
};

// The running system's.
[[nodiscard]] RunningApplications& systemRunningApplications();

} // namespace tw

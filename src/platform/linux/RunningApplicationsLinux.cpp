#include "platform/RunningApplications.h"

#include "scan/RawFiles.h"

#include <QList>
#include <csignal>
#include <sys/types.h>
#include <unistd.h>

namespace tw {

namespace {

// The processes whose executable lies inside the bundle. Processes of other
// users hide their executable from us; those are not ours to quit anyway.
QList<pid_t> processesInside(const QByteArray& bundlePath)
{
    QByteArray inside = bundlePath;
    while (inside.size() > 1 && inside.endsWith('/'))
        inside.chop(1);
    inside += '/';
    QList<pid_t> found;
    for (const QByteArray& entry : directoryEntries("/proc")) {
        bool isNumber = false;
        const long pid = entry.toLong(&isNumber);
        if (!isNumber || pid <= 0)
            continue;
        char target[4096];
        const QByteArray link = "/proc/" + entry + "/exe";
        const ssize_t length = ::readlink(link.constData(), target, sizeof target);
        if (length <= 0 || std::size_t(length) >= sizeof target)
            continue;
        if (QByteArray(target, length).startsWith(inside))
            found.append(pid_t(pid));
    }
    return found;
}

class LinuxRunningApplications final : public RunningApplications {
public:
    bool isRunning(const QString&, const QByteArray& bundlePath) const override
    {
        return !processesInside(bundlePath).isEmpty();
    }
    bool terminate(const QString&, const QByteArray& bundlePath) override
    {
        bool asked = false;
        for (pid_t pid : processesInside(bundlePath))
            asked = ::kill(pid, SIGTERM) == 0 || asked;
        return asked;
    }
};

} // namespace

RunningApplications& systemRunningApplications()
{
    static LinuxRunningApplications running;
    return running;
}

} // namespace tw

#include "platform/linux/PkexecRunner.h"

#include "platform/linux/FreedesktopTrash.h"
#include "removal/PrivilegedRemoval.h"
#include "scan/RawFiles.h"

#include <QDateTime>
#include <QSet>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace tw {

namespace {
// pkexec's exit status when the user dismissed its dialog.
constexpr int kDismissed = 126;

// Whether the info file at `infoFile` is ours for `original`: one planted
// under the same name describes something else.
bool describes(const QByteArray& infoFile, const QByteArray& original)
{
    const std::optional<QByteArray> info = readFileBytes(infoFile, 64 * 1024);
    const QByteArray line = "\nPath=" + FreedesktopTrash::escapePath(original) + '\n';
    return info && info->contains(line);
}
} // namespace

PkexecRunner::PkexecRunner(QByteArrayList prefix, QByteArray homeTrash)
    : m_prefix(std::move(prefix)),
      m_homeTrash(homeTrash.isEmpty() ? FreedesktopTrash::defaultHomeTrash() : homeTrash)
{
}

QByteArray PkexecRunner::trashDirectory() const
{
    return m_homeTrash + "/files";
}

ScriptTools PkexecRunner::tools() const
{
    return {"/bin/mkdir", "/bin/chown", "/bin/mv"};
}

QByteArray PkexecRunner::entryHandler(const std::vector<StagedItem>& items,
                                      QList<QByteArray>* entries) const
{
    const QByteArray files = m_homeTrash + "/files/";
    const QByteArray info = m_homeTrash + "/info/";
    const QByteArray owner = QByteArray::number(::getuid()) + ':' + QByteArray::number(::getgid());
    const QByteArray date =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss")).toLatin1();
    const auto taken = [](const QByteArray& path) {
        struct stat facts {};
        return ::lstat(path.constData(), &facts) == 0;
    };
    QSet<QByteArray> chosen;
    QByteArray handler = "tidewick_file_entries() {\n";
    for (const StagedItem& item : items) {
        const QByteArray name = item.originalPath.mid(item.originalPath.lastIndexOf('/') + 1);
        QByteArray entry;
        for (int attempt = 1;; ++attempt) {
            entry = FreedesktopTrash::entryName(name, attempt);
            if (!chosen.contains(entry) && !taken(files + entry) &&
                !taken(info + entry + ".trashinfo"))
                break;
        }
        chosen.insert(entry);
        if (entries)
            entries->append(entry);
        const QByteArray staged = shellQuoted(item.stagingDirectory + '/' + name);
        const QByteArray target = shellQuoted(files + entry);
        const QByteArray infoFile = shellQuoted(info + entry + ".trashinfo");
        // Moved on first, described second: nothing here ever removes a file.
        // The staging folder goes only once the entry is whole, so an item
        // whose info could not be written is found where it waits.
        handler += "  if [ -e " + staged + " ] || [ -L " + staged +
                   " ]; then\n"
                   "    if /bin/mv -n " +
                   staged + ' ' + target + " && { [ -e " + target + " ] || [ -L " + target +
                   " ]; }; then\n"
                   "      (set -C; printf '%s\\n' '[Trash Info]' " +
                   shellQuoted("Path=" + FreedesktopTrash::escapePath(item.originalPath)) + ' ' +
                   shellQuoted("DeletionDate=" + date) + " > " + infoFile + ") && /bin/chown " +
                   owner + ' ' + infoFile + " && /bin/rmdir " + shellQuoted(item.stagingDirectory) +
                   "\n"
                   "    fi\n"
                   "  fi\n";
    }
    handler += "  :\n}\ntrap tidewick_file_entries EXIT\n";
    return handler;
}

ElevatedRunner::Result PkexecRunner::run(const QByteArray& script,
                                         const std::vector<StagedItem>& items)
{
    Result result;
    // The staging folders go into files/, which must exist as for any entry.
    (void)FreedesktopTrash::prepareHome(m_homeTrash);

    // Started directly, no shell of the user's in between. The script goes
    // in on standard input, its bytes exactly as built: an argument would
    // limit a batch to 128 KiB of script.
    QByteArrayList arguments = m_prefix;
    arguments << "/bin/sh"
              << "-s";
    std::vector<char*> argv;
    for (QByteArray& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    int input[2];
    int errors[2];
    if (::pipe2(input, O_CLOEXEC) != 0) {
        result.launchError = QString::fromLocal8Bit(std::strerror(errno));
        return result;
    }
    if (::pipe2(errors, O_CLOEXEC) != 0) {
        result.launchError = QString::fromLocal8Bit(std::strerror(errno));
        ::close(input[0]);
        ::close(input[1]);
        return result;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned = ::posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(errors[1]);
    if (spawned != 0) {
        ::close(input[1]);
        ::close(errors[0]);
        result.launchError = QString::fromLocal8Bit(std::strerror(spawned));
        return result;
    }
    result.launched = true;

    // Feed the script and drain the error output together, so neither side
    // can stall the other on a full pipe. A shell that quits early must not
    // take us down with SIGPIPE: it is held back on this thread meanwhile.
    sigset_t pipeSignal;
    sigset_t previous;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);
    ::fcntl(input[1], F_SETFL, O_NONBLOCK);
    QList<QByteArray> entries;
    const QByteArray text = entryHandler(items, &entries) + script + '\n';
    qsizetype sent = 0;
    int writeFd = input[1];
    int readFd = errors[0];
    while (writeFd >= 0 || readFd >= 0) {
        pollfd fds[2]{{writeFd, POLLOUT, 0}, {readFd, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        if (writeFd >= 0 && (fds[0].revents & (POLLOUT | POLLERR | POLLHUP))) {
            const ssize_t n = ::write(writeFd, text.constData() + sent, size_t(text.size() - sent));
            if (n > 0)
                sent += n;
            if ((n < 0 && errno != EAGAIN && errno != EINTR) || sent == text.size()) {
                ::close(writeFd);
                writeFd = -1;
            }
        }
        if (readFd >= 0 && (fds[1].revents & (POLLIN | POLLERR | POLLHUP))) {
            char buffer[4096];
            const ssize_t n = ::read(readFd, buffer, sizeof buffer);
            if (n > 0) {
                result.errorOutput.append(buffer, n);
            } else if (n == 0 || errno != EINTR) {
                ::close(readFd);
                readFd = -1;
            }
        }
    }
    if (writeFd >= 0)
        ::close(writeFd);
    if (readFd >= 0)
        ::close(readFd);
    const timespec now{0, 0};
    while (sigtimedwait(&pipeSignal, nullptr, &now) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    result.dismissed =
        !m_prefix.isEmpty() && WIFEXITED(status) && WEXITSTATUS(status) == kDismissed;

    // Whatever left its place must now be a whole entry: its file and its
    // info. Anything short of that is said, with where the item waits.
    const auto present = [](const QByteArray& path) {
        struct stat facts {};
        return ::lstat(path.constData(), &facts) == 0;
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        const StagedItem& item = items[i];
        if (present(item.originalPath))
            continue;
        const QByteArray entry = m_homeTrash + "/files/" + entries[qsizetype(i)];
        const QByteArray name = item.originalPath.mid(item.originalPath.lastIndexOf('/') + 1);
        if (present(item.stagingDirectory + '/' + name))
            result.unfiled.insert(item.originalPath, item.stagingDirectory + '/' + name);
        else if (!describes(m_homeTrash + "/info/" + entries[qsizetype(i)] + ".trashinfo",
                            item.originalPath))
            result.unfiled.insert(item.originalPath, entry);
    }
    return result;
}

ElevatedRunner& systemElevatedRunner()
{
    static PkexecRunner runner;
    return runner;
}

} // namespace tw

#include "platform/linux/FreedesktopTrash.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {
bool makeDirectory(const QByteArray& path, mode_t mode)
{
    return ::mkdir(path.constData(), mode) == 0 || errno == EEXIST;
}

} // namespace

// `trash` with files/ and info/, created (0700, parents too) as needed.
int FreedesktopTrash::prepare(const QByteArray& trash)
{
    for (qsizetype slash = trash.indexOf('/', 1); slash > 0;
         slash = trash.indexOf('/', slash + 1)) {
        if (!makeDirectory(trash.left(slash), 0700))
            return errno;
    }
    if (!makeDirectory(trash, 0700) || !makeDirectory(trash + "/files", 0700) ||
        !makeDirectory(trash + "/info", 0700))
        return errno;
    return 0;
}

namespace {

bool writeAll(int fd, const QByteArray& data)
{
    qsizetype written = 0;
    while (written < data.size()) {
        const ssize_t n = ::write(fd, data.constData() + written, size_t(data.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        written += n;
    }
    return true;
}

QByteArray absolute(const QByteArray& path)
{
    return path.startsWith('/') ? path : QFile::encodeName(QDir::currentPath()) + '/' + path;
}
} // namespace

FreedesktopTrash::FreedesktopTrash(std::optional<QByteArray> homeTrash,
                                   std::function<QByteArray(const QByteArray&)> topdirOf)
    : m_homeTrash(homeTrash ? *homeTrash : defaultHomeTrash()), m_topdirOf(std::move(topdirOf))
{
    if (!m_topdirOf)
        m_topdirOf = &FreedesktopTrash::mountTopdir;
}

QByteArray FreedesktopTrash::defaultHomeTrash()
{
    const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    if (dataHome.startsWith('/'))
        return dataHome + "/Trash";
    return QFile::encodeName(QDir::homePath()) + "/.local/share/Trash";
}

QByteArray FreedesktopTrash::mountTopdir(const QByteArray& path)
{
    QByteArray at = absolute(path);
    struct stat facts {};
    if (::lstat(at.constData(), &facts) != 0)
        return "/";
    const dev_t device = facts.st_dev;
    while (at.size() > 1) {
        const qsizetype slash = at.lastIndexOf('/');
        const QByteArray parent = slash <= 0 ? QByteArray("/") : at.left(slash);
        struct stat parentFacts {};
        if (::stat(parent.constData(), &parentFacts) != 0 || parentFacts.st_dev != device)
            return at;
        at = parent;
    }
    return "/";
}

QByteArray FreedesktopTrash::escapePath(const QByteArray& path)
{
    return path.toPercentEncoding("/");
}

std::pair<QByteArray, int> FreedesktopTrash::place(const QByteArray& trash, const QByteArray& item,
                                                   const QByteArray& infoPath)
{
    if (const int error = prepare(trash))
        return {{}, error};
    QByteArray base = item.mid(item.lastIndexOf('/') + 1);
    if (base.isEmpty())
        base = "item";
    const QByteArray info =
        "[Trash Info]\nPath=" + escapePath(infoPath) + "\nDeletionDate=" +
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss")).toLatin1() +
        '\n';
    for (int attempt = 1; attempt < 100000; ++attempt) {
        const QByteArray name = attempt == 1 ? base : base + '.' + QByteArray::number(attempt);
        const QByteArray infoFile = trash + "/info/" + name + ".trashinfo";
        // The info file is claimed first and exclusively: that is what keeps
        // two entries from ever sharing a name.
        const int fd = ::open(infoFile.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return {{}, errno};
        }
        const QByteArray target = trash + "/files/" + name;
        struct stat facts {};
        const bool taken = ::lstat(target.constData(), &facts) == 0;
        const bool written = !taken && writeAll(fd, info);
        const int writeError = errno;
        ::close(fd);
        if (taken) {
            ::unlink(infoFile.constData()); // our own claim, not a user's file
            continue;
        }
        if (!written) {
            ::unlink(infoFile.constData());
            return {{}, writeError ? writeError : EIO};
        }
        if (::rename(item.constData(), target.constData()) != 0) {
            const int moveError = errno;
            ::unlink(infoFile.constData());
            return {{}, moveError};
        }
        return {target, 0};
    }
    return {{}, EEXIST};
}

Trash::Answer FreedesktopTrash::recycle(const QList<QByteArray>& paths)
{
    Answer answer;
    struct stat home {};
    const bool haveHome = prepare(m_homeTrash) == 0 && ::stat(m_homeTrash.constData(), &home) == 0;
    for (const QByteArray& given : paths) {
        const QByteArray path = absolute(given);
        struct stat facts {};
        int error = 0;
        QByteArray moved;
        if (::lstat(path.constData(), &facts) != 0) {
            error = errno;
        } else if (haveHome && facts.st_dev == home.st_dev) {
            std::tie(moved, error) = place(m_homeTrash, path, path);
        } else {
            // Another file system: its own trash at the top of the mount.
            const QByteArray topdir = m_topdirOf(path);
            const QByteArray trash = (topdir.endsWith('/') ? topdir : topdir + '/') + ".Trash-" +
                                     QByteArray::number(::getuid());
            const QByteArray relative =
                path.mid(topdir.endsWith('/') ? topdir.size() : topdir.size() + 1);
            std::tie(moved, error) = place(trash, path, relative);
        }
        if (error) {
            if (!answer.error)
                answer.error = QString::fromLocal8Bit(std::strerror(error));
        } else {
            answer.moved.insert(given, moved);
        }
    }
    return answer;
}

Trash& systemTrash()
{
    static FreedesktopTrash trash;
    return trash;
}

} // namespace tw

#include "platform/OwnFile.h"

#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

Fd::~Fd()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool writeAll(int fd, const QByteArray& data)
{
    qsizetype written = 0;
    while (written < data.size()) {
        const ssize_t n = ::write(fd, data.constData() + written, size_t(data.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (n == 0)
                errno = EIO;
            return false;
        }
        written += n;
    }
    return true;
}

namespace OwnFile {

namespace {
Fd openFolder(const QByteArray& folder)
{
    return Fd(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}
} // namespace

Contents read(const QByteArray& folder, const QByteArray& name, qint64 maxBytes)
{
    const Fd dir = openFolder(folder);
    if (!dir.valid())
        return {errno, {}};
    // Non-blocking, so that a FIFO put there cannot hold the open.
    const Fd file(::openat(dir.get(), name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.valid())
        return {errno, {}};
    struct stat facts {};
    if (::fstat(file.get(), &facts) != 0)
        return {errno, {}};
    if (!S_ISREG(facts.st_mode))
        return {EINVAL, {}};
    if (facts.st_size > maxBytes)
        return {EFBIG, {}};
    // The file may grow while it is read; never past the limit.
    QByteArray bytes(qsizetype(maxBytes) + 1, Qt::Uninitialized);
    qsizetype have = 0;
    while (have < bytes.size()) {
        const ssize_t n = ::read(file.get(), bytes.data() + have, size_t(bytes.size() - have));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return {errno, {}};
        if (n == 0)
            break;
        have += n;
    }
    if (have > maxBytes)
        return {EFBIG, {}};
    bytes.truncate(have);
    return {0, bytes};
}

int replace(const QByteArray& folder, const QByteArray& name, const QByteArray& bytes)
{
    const Fd dir = openFolder(folder);
    if (!dir.valid())
        return errno;
    struct stat facts {};
    if (::fstatat(dir.get(), name.constData(), &facts, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(facts.st_mode))
        return ELOOP;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QByteArray temporary =
            '.' + name + '.' + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
        const int fd = ::openat(dir.get(), temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return errno;
        }
        const bool written = writeAll(fd, bytes) && ::fsync(fd) == 0;
        int error = written ? 0 : errno;
        if (::close(fd) != 0 && !error)
            error = errno;
        // A rename replaces a link rather than following it, so a link that
        // appeared since the look above is all this can ever overwrite.
        if (!error && ::renameat(dir.get(), temporary.constData(), dir.get(), name.constData()) != 0)
            error = errno;
        if (error)
            ::unlinkat(dir.get(), temporary.constData(), 0); // our own, never renamed
        return error;
    }
    return EEXIST;
}

} // namespace OwnFile
} // namespace tw

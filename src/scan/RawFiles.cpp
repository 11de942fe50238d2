#include "scan/RawFiles.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

QByteArrayList directoryEntries(const QByteArray& folder)
{
    QByteArrayList names;
    if (DIR* dir = ::opendir(folder.constData())) {
        while (const dirent* entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                names.append(name);
        }
        ::closedir(dir);
    }
    return names;
}

std::optional<QByteArray> readFileBytes(const QByteArray& path, qint64 limit)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    struct stat facts {};
    if (::fstat(fd, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size > limit) {
        ::close(fd);
        return std::nullopt;
    }
    QByteArray data;
    data.resize(qsizetype(facts.st_size));
    qsizetype got = 0;
    while (got < data.size()) {
        const ssize_t n = ::read(fd, data.data() + got, size_t(data.size() - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += n;
    }
    ::close(fd);
    data.truncate(got);
    return data;
}

std::optional<QDateTime> lastAccess(const QByteArray& path)
{
    struct stat facts;
    if (::stat(path.constData(), &facts) != 0)
        return std::nullopt;
    return QDateTime::fromSecsSinceEpoch(qint64(facts.st_atime));
}

} // namespace tw

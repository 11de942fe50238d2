#pragma once

// Helpers for tests that build real file trees on disk.

#include "scan/FileNode.h"

#include <QByteArray>
#include <QFile>
#include <QtTest>

#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {

// Writes `bytes` bytes of non-zero data, so every block is really allocated.
inline void writeFile(const QByteArray& path, qint64 bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    QVERIFY2(fd >= 0, path.constData());
    QByteArray chunk(64 * 1024, 'x');
    qint64 left = bytes;
    while (left > 0) {
        const auto n = ::write(fd, chunk.constData(), size_t(std::min<qint64>(left, chunk.size())));
        QVERIFY(n > 0);
        left -= n;
    }
    ::close(fd);
}

inline void makeDir(const QByteArray& path)
{
    QVERIFY2(::mkdir(path.constData(), 0755) == 0, path.constData());
}

// What the file system says the file occupies: the figure a scan must report.
inline qint64 allocatedBytes(const QByteArray& path)
{
    struct stat facts {};
    if (::lstat(path.constData(), &facts) != 0)
        return -1;
    return qint64(facts.st_blocks) * 512;
}

// Removes a test's own tree by its bytes, links not followed.
inline void removeTree(const QByteArray& path)
{
    ::nftw(
        path.constData(),
        [](const char* at, const struct stat*, int type, FTW*) {
            return type == FTW_DP ? ::rmdir(at) : ::unlink(at), 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
}

inline const FileNode* childNamed(const FileNode& parent, std::string_view name)
{
    for (const FileNode& child : parent.children())
        if (child.name() == name)
            return &child;
    return nullptr;
}

} // namespace tw::test

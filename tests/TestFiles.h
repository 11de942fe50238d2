#pragma once

// Helpers for tests that build real file trees on disk.

#include "scan/FileNode.h"
#include "scan/Scanner.h"

#include <QByteArray>
#include <QDir>
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

// Writes exactly `data`, making the missing parent folders first.
inline void writeBytes(const QByteArray& path, const QByteArray& data)
{
    QVERIFY(QDir().mkpath(QFile::decodeName(path.left(path.lastIndexOf('/')))));
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    QVERIFY2(fd >= 0, path.constData());
    QCOMPARE(::write(fd, data.constData(), size_t(data.size())), ssize_t(data.size()));
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

// Makes each entry under `root` with its missing parents: a folder when its
// size is below zero, else a file of that many bytes. Returns `root`.
struct TreeEntry {
    const char* path;
    qint64 bytes = -1;
};
inline QByteArray makeTree(const QByteArray& root, std::initializer_list<TreeEntry> entries)
{
    QDir().mkpath(QFile::decodeName(root));
    for (const auto& [path, bytes] : entries) {
        const QByteArray at = root + '/' + path;
        QDir().mkpath(QFile::decodeName(bytes < 0 ? at : at.left(at.lastIndexOf('/'))));
        if (bytes >= 0)
            writeFile(at, bytes);
    }
    return root;
}

// `depth` folders named `name`, each in the one before, under `root`; the deepest.
inline QByteArray makeChain(QByteArray root, int depth, const QByteArray& name)
{
    for (int i = 0; i < depth; ++i)
        root += '/' + name;
    QDir().mkpath(QFile::decodeName(root));
    return root;
}

// One walk on one worker, nothing reported on the way.
inline std::shared_ptr<ScanTree> scanTree(const QByteArray& path)
{
    Scanner::Options options;
    options.workers = 1;
    return Scanner({}, options).scan(path);
}

} // namespace tw::test

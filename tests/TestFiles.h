#pragma once

// Helpers for tests that build real file trees on disk.

#include "scan/FileNode.h"
#include "scan/RawFiles.h"
#include "scan/Scanner.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QtTest>

#include <atomic>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {

// Writes `bytes` bytes of non-zero data, so every block is really allocated.
inline void writeFile(const QByteArray& path, qint64 bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    QVERIFY2(fd >= 0, path.constData());
    const QByteArray chunk(qsizetype(std::min<qint64>(bytes, 64 * 1024)), 'x');
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

inline void symlinkAt(const QByteArray& target, const QByteArray& path)
{
    QVERIFY2(::symlink(target.constData(), path.constData()) == 0, path.constData());
}

// Whether anything, a dangling link too, stands at `path`.
inline bool present(const QByteArray& path)
{
    struct stat facts {};
    return ::lstat(path.constData(), &facts) == 0;
}

// A file's bytes; empty when it cannot be read.
inline QByteArray contents(const QByteArray& path)
{
    return readFileBytes(path, 1 << 30).value_or(QByteArray());
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
            (void)(type == FTW_DP ? ::rmdir(at) : ::unlink(at));
            return 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
}

inline QByteArray nameOf(const FileNode& node)
{
    return QByteArray(node.name().data(), qsizetype(node.name().size()));
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

// One walk on `workers` workers, nothing reported on the way.
inline std::shared_ptr<ScanTree> scanTree(const QByteArray& path, int workers = 1)
{
    Scanner::Options options;
    options.workers = workers;
    return Scanner({}, options).scan(path);
}

// A walk cancelled at the first report for which `stop` holds.
inline std::shared_ptr<ScanTree> scanUntil(const QByteArray& path, Scanner::Options options,
                                           std::function<bool(const ScanProgress&)> stop)
{
    Scanner* self = nullptr;
    Scanner scanner([&](const ScanProgress& p) {
        if (stop(p))
            self->cancel();
    }, options);
    self = &scanner;
    return scanner.scan(path);
}

// A clock that moves `step` at every look, so that no report is held back.
inline ScanMonitor::Now steppingClock(std::chrono::milliseconds step)
{
    auto at = std::make_shared<std::atomic<long long>>(0);
    return [at, step] { return ScanMonitor::Clock::time_point(std::chrono::milliseconds(*at += step.count())); };
}

// The sum of what the file system allocates to each of `paths` under `root`.
inline qint64 allocatedSum(const QByteArray& root, const QByteArrayList& paths)
{
    qint64 sum = 0;
    for (const QByteArray& path : paths)
        sum += allocatedBytes(root + '/' + path);
    return sum;
}

// Every node of `a` has its twin in `b`: same bytes of name, sizes, count,
// flags and link facts, to any depth.
inline bool sameTree(const FileNode& a, const FileNode& b)
{
    const auto links = [](const FileNode& node) {
        const FileNode::LinkFacts* facts = node.linkFacts();
        return facts ? std::pair(facts->inode, facts->linkCount) : std::pair(std::uint64_t(0), std::uint32_t(0));
    };
    if (a.name() != b.name() || a.size() != b.size() || a.fileCount() != b.fileCount()
        || a.apparentSize() != b.apparentSize() || a.isDirectory() != b.isDirectory()
        || a.isInaccessible() != b.isInaccessible() || a.childCount() != b.childCount()
        || links(a) != links(b))
        return false;
    for (const FileNode& child : a.children()) {
        const FileNode* other = childNamed(b, child.name());
        if (!other || !sameTree(child, *other))
            return false;
    }
    return true;
}

// Children largest first and pointing back at their parent, to any depth.
inline bool sortedEverywhere(const FileNode& node)
{
    qint64 previous = std::numeric_limits<qint64>::max();
    for (const FileNode& child : node.children()) {
        if (child.size() > previous || child.parent() != &node || !sortedEverywhere(child))
            return false;
        previous = child.size();
    }
    return true;
}

} // namespace tw::test

#include "scan/Scanner.h"

#include "platform/VolumeBoundary.h"
#include "platform/VolumeFacts.h"
#include "scan/ScanTreeStorage.h"

#include <QDir>
#include <QThread>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <system_error>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

// The deepest folder entered is at depth 128; one level further is kept as an
// empty, flagged node.
constexpr int kDepthLimit = 129;
constexpr std::uint32_t kReportEvery = 500;
// Small enough that reports and the stall rule see headway promptly.
constexpr qint64 kCounterBatch = 64;

// A deep walk keeps one descriptor open per level and per worker.
void raiseDescriptorLimit()
{
    static std::once_flag once;
    std::call_once(once, [] {
        struct rlimit limit {};
        if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
            return;
        const rlim_t wanted = std::min<rlim_t>(limit.rlim_max, 16384);
        if (limit.rlim_cur < wanted) {
            limit.rlim_cur = wanted;
            ::setrlimit(RLIMIT_NOFILE, &limit);
        }
    });
}

QByteArray normalizedRoot(const QByteArray& given)
{
    QByteArray path = given;
    if (!path.startsWith('/'))
        path = QFile::encodeName(QDir::currentPath()) + (path.isEmpty() ? QByteArray() : "/" + path);
    while (path.size() >= 2 && path.endsWith('/'))
        path.chop(1);
    return path;
}

int activeProcessorCount()
{
    return std::max(1, QThread::idealThreadCount());
}

struct Descriptor {
    explicit Descriptor(DIR* d = nullptr) : dir(d) {}
    ~Descriptor()
    {
        if (dir)
            ::closedir(dir);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    DIR* dir;
};

} // namespace

// One thread's share of a walk: its own arena, path buffer and listing stack.
// Each folder node is written by exactly one walker.
class Walker {
public:
    Walker(Scanner& scanner, const VolumeBoundary& boundary, std::string rootPath)
        : m_scanner(scanner), m_boundary(boundary), m_path(std::move(rootPath))
    {
        m_listings.resize(kDepthLimit + 1);
    }

    // The root, or a first-level folder handed to a worker: `facts` are its
    // lstat facts, null when lstat failed.
    void walkEntry(FileNode& node, int parentFd, const char* name, const struct stat* facts, int depth);

    // Lists the root and charges its files, then walks its folders on up to
    // `workers` threads, each with a walker of its own kept in `helpers`.
    void walkRootInParallel(FileNode& root, const struct stat* facts, int workers,
                            std::vector<Walker>& helpers);

    Arena takeArena() { return std::move(m_arena); }
    [[nodiscard]] qint64 nodesMade() const { return m_nodesMade; }

private:
    struct Pending {
        std::uint32_t slot;
        struct stat facts;
    };
    bool listRoot(FileNode& root, DIR* dir, std::vector<Pending>& pending);
    void walkDirectory(FileNode& node, int fd, int depth);
    // Reads every name of the open folder into the arena; false if the listing failed.
    bool readNames(DIR* dir, std::vector<const unsigned char*>& names);
    // Whether a listed child is left out of the tree altogether.
    bool leftOut(const struct stat& facts, std::string_view name) const;
    FileNode* allocateSlots(std::size_t count);
    // Examines one listed entry. Returns the node made for it in slots[index],
    // with a file already charged, or null when the entry is left out. A
    // child that cannot be examined is kept as a file that costs nothing.
    FileNode* admitChild(int dirFd, const unsigned char* stored, FileNode& parent, FileNode* slots,
                         std::uint32_t index, struct stat& facts);
    void chargeFile(FileNode& node, const struct stat* facts);
    void finishFolder(FileNode& node, FileNode* slots, std::uint32_t kept);
    void reportPath()
    {
        flushCounters();
        m_scanner.m_monitor.reportPath(m_path);
    }

public:
    // Hands the files charged since the last flush to the shared counters.
    void flushCounters()
    {
        if (m_pendingFiles == 0)
            return;
        m_scanner.m_monitor.addToCounters(m_pendingBytes, m_pendingFiles);
        m_pendingBytes = 0;
        m_pendingFiles = 0;
    }

private:

    Scanner& m_scanner;
    const VolumeBoundary& m_boundary;
    std::string m_path;
    Arena m_arena;
    std::vector<std::vector<const unsigned char*>> m_listings; // one per depth, reused
    qint64 m_nodesMade = 0;
    // Charged files wait here and reach the shared counters in batches, so
    // that workers do not contend for one cache line a file.
    qint64 m_pendingBytes = 0;
    qint64 m_pendingFiles = 0;
};

bool Walker::readNames(DIR* dir, std::vector<const unsigned char*>& names)
{
    names.clear();
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        const char* n = entry->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)))
            continue;
        names.push_back(storeName(m_arena, n, std::strlen(n)));
    }
    return errno == 0;
}

bool Walker::leftOut(const struct stat& facts, std::string_view name) const
{
    // Links are never followed and never shown.
    if (S_ISLNK(facts.st_mode))
        return true;
    // Other volumes mounted below the root are not counted.
    if (facts.st_dev != m_boundary.rootDevice() && !m_boundary.contains(facts.st_dev, m_path, name))
        return true;
    return m_path == "/" && Scanner::isSkippedPath(std::string("/").append(name));
}

FileNode* Walker::allocateSlots(std::size_t count)
{
    if (count == 0)
        return nullptr;
    return static_cast<FileNode*>(m_arena.allocate(count * sizeof(FileNode), alignof(FileNode)));
}

FileNode* Walker::admitChild(int dirFd, const unsigned char* stored, FileNode& parent, FileNode* slots,
                             std::uint32_t index, struct stat& facts)
{
    const std::string_view name = readStoredName(stored);
    const bool known = ::fstatat(dirFd, name.data(), &facts, AT_SYMLINK_NOFOLLOW) == 0;
    if (known && leftOut(facts, name))
        return nullptr;
    const bool isDirectory = known && S_ISDIR(facts.st_mode);
    auto* child = new (&slots[index]) FileNode;
    child->m_name = stored;
    child->m_parent = &parent;
    child->m_bits = isDirectory ? std::uint32_t(FileNode::kDirectory) : 0u;
    ++m_nodesMade;
    if (!isDirectory)
        chargeFile(*child, known ? &facts : nullptr);
    return child;
}

void Walker::chargeFile(FileNode& node, const struct stat* facts)
{
    const qint64 size = facts ? m_scanner.m_allocation.allocatedSize(*facts) : 0;
    node.m_size = size;
    node.m_fileCount = 1;
    m_pendingBytes += size;
    if (++m_pendingFiles == kCounterBatch)
        flushCounters();
}

void Walker::finishFolder(FileNode& node, FileNode* slots, std::uint32_t kept)
{
    qint64 size = 0;
    qint64 files = 0;
    for (std::uint32_t i = 0; i < kept; ++i) {
        if (qAddOverflow(size, slots[i].m_size, &size))
            qFatal("a folder's size overflowed");
        files += slots[i].m_fileCount;
    }
    if (files > qint64(UINT32_MAX))
        qFatal("a folder holds more files than a tree can count");
    node.adoptChildren(slots, kept);
    node.m_size = size;
    node.m_fileCount = std::uint32_t(files);
    node.sortChildrenBySize();
}

void Walker::walkEntry(FileNode& node, int parentFd, const char* name, const struct stat* facts, int depth)
{
    ScanMonitor& monitor = m_scanner.m_monitor;
    if (monitor.isCancelled())
        return;
    if (monitor.skipRequested()) {
        node.setInaccessible();
        return;
    }
    reportPath();
    if (!node.isDirectory()) {
        chargeFile(node, facts);
        return;
    }
    if (depth >= kDepthLimit) {
        node.setInaccessible();
        return;
    }
    const auto claim = facts ? m_scanner.m_allocation.claimDirectory(*facts)
                             : FileAllocationTracker::Claim::unreadable;
    if (claim == FileAllocationTracker::Claim::unreadable)
        node.setInaccessible();
    if (claim != FileAllocationTracker::Claim::claimed)
        return;
    const int fd = ::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        node.setInaccessible();
        return;
    }
    walkDirectory(node, fd, depth);
}

void Walker::walkDirectory(FileNode& node, int fd, int depth)
{
    Descriptor dir(::fdopendir(fd));
    if (!dir.dir) {
        ::close(fd);
        node.setInaccessible();
        return;
    }
    std::vector<const unsigned char*>& names = m_listings[std::size_t(depth)];
    if (!readNames(dir.dir, names)) {
        node.setInaccessible();
        return;
    }
    const int dirFd = ::dirfd(dir.dir);
    ScanMonitor& monitor = m_scanner.m_monitor;
    const std::size_t pathLength = m_path.size();
    FileNode* slots = allocateSlots(names.size());
    std::uint32_t kept = 0;

    for (const unsigned char* stored : names) {
        if (monitor.isCancelled())
            break;
        if (monitor.skipRequested()) {
            node.setInaccessible();
            break;
        }
        struct stat facts {};
        FileNode* child = admitChild(dirFd, stored, node, slots, kept, facts);
        if (!child)
            continue;
        if (child->isDirectory()) {
            const std::string_view name = child->name();
            if (pathLength > 1)
                m_path.push_back('/');
            m_path.append(name);
            walkEntry(*child, dirFd, name.data(), &facts, depth + 1);
            m_path.resize(pathLength);
        }
        ++kept;
        if (kept % kReportEvery == 0) {
            m_path.append("/… (").append(std::to_string(kept)).append(")");
            reportPath();
            m_path.resize(pathLength);
        }
    }
    finishFolder(node, slots, kept);
    flushCounters();
    // The innermost folder that saw the request has honoured it.
    if (monitor.skipRequested())
        monitor.clearSkip();
}

bool Walker::listRoot(FileNode& root, DIR* dir, std::vector<Pending>& pending)
{
    std::vector<const unsigned char*>& names = m_listings[0];
    if (!readNames(dir, names)) {
        root.setInaccessible();
        return false;
    }
    const int dirFd = ::dirfd(dir);
    FileNode* slots = allocateSlots(names.size());
    std::uint32_t kept = 0;
    for (const unsigned char* stored : names) {
        if (m_scanner.m_monitor.isCancelled())
            break;
        struct stat facts {};
        FileNode* child = admitChild(dirFd, stored, root, slots, kept, facts);
        if (!child)
            continue;
        if (child->isDirectory())
            pending.push_back({kept, facts});
        ++kept;
    }
    // Stored now; the totals are taken once the workers are done.
    root.adoptChildren(slots, kept);
    return true;
}

void Walker::walkRootInParallel(FileNode& root, const struct stat* facts, int workers,
                                std::vector<Walker>& helpers)
{
    ScanMonitor& monitor = m_scanner.m_monitor;
    if (monitor.isCancelled() || Scanner::isSkippedPath(m_path))
        return;
    const auto claim = facts ? m_scanner.m_allocation.claimDirectory(*facts)
                             : FileAllocationTracker::Claim::unreadable;
    if (claim == FileAllocationTracker::Claim::unreadable)
        root.setInaccessible();
    if (claim != FileAllocationTracker::Claim::claimed)
        return;
    reportPath();
    const int fd = ::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    Descriptor dir(fd < 0 ? nullptr : ::fdopendir(fd));
    if (!dir.dir) {
        if (fd >= 0)
            ::close(fd);
        root.setInaccessible();
        return;
    }
    std::vector<Pending> pending;
    if (!listRoot(root, dir.dir, pending))
        return;

    // The root's descriptor stays open while the workers open its folders.
    const int parentFd = ::dirfd(dir.dir);
    FileNode* const slots = root.m_children;
    const int threads = std::min<int>(workers, int(pending.size()));
    helpers.reserve(std::size_t(threads));
    for (int i = 0; i < threads; ++i)
        helpers.emplace_back(m_scanner, m_boundary, m_path);
    std::atomic<std::size_t> next{0};
    auto work = [&](Walker& own) {
        // Folders start in listing order, no more than `workers` at once,
        // and none after a cancellation.
        while (!monitor.isCancelled()) {
            const std::size_t at = next.fetch_add(1);
            if (at >= pending.size())
                break;
            FileNode& child = slots[pending[at].slot];
            const std::string_view name = child.name();
            own.m_path.assign(m_path);
            if (m_path.size() > 1)
                own.m_path.push_back('/');
            own.m_path.append(name);
            try {
                own.walkEntry(child, parentFd, name.data(), &pending[at].facts, 1);
                own.flushCounters();
            } catch (const std::exception&) {
                // Out of memory in this branch: keep the rest of the scan.
                child.setInaccessible();
            }
        }
    };
    std::vector<std::thread> running;
    running.reserve(std::size_t(threads));
    for (int i = 0; i < threads; ++i) {
        try {
            running.emplace_back([&work, &helpers, i] { work(helpers[std::size_t(i)]); });
        } catch (const std::system_error&) {
            break; // the system will not give more threads; walk with those we have
        }
    }
    if (running.empty() && !helpers.empty())
        work(helpers.front());
    for (std::thread& thread : running)
        thread.join();
    // Totals once, after every worker has ended.
    finishFolder(root, slots, root.slotCount());
}

Scanner::Scanner(ScanMonitor::Handler progressHandler, Options options)
    : m_options(std::move(options)), m_monitor(std::move(progressHandler), m_options.now)
{
    m_monitor.setStallThreshold(m_options.stallThreshold);
}

Scanner::Scanner(ScanMonitor::Handler progressHandler) : Scanner(std::move(progressHandler), Options{}) {}

Scanner::~Scanner()
{
    stopWatchdog();
}

void Scanner::cancel()
{
    m_monitor.cancel();
    // Wakes the watchdog, which ends on seeing the cancellation.
    m_watchdogWake.notify_all();
}

int Scanner::workerCount(VolumeInfo::Medium medium, int cpus)
{
    switch (medium) {
    case VolumeInfo::Medium::solidState:
        return std::clamp(cpus, 4, 8);
    case VolumeInfo::Medium::rotational:
    case VolumeInfo::Medium::network:
        return 1;
    case VolumeInfo::Medium::unknown:
        return cpus >= 4 ? std::min(cpus / 2, 4) : 2;
    }
    return 1;
}

bool Scanner::isSkippedPath(std::string_view path)
{
    while (path.size() >= 2 && path.back() == '/')
        path.remove_suffix(1);
    return path == "/.vol" || path == "/.nofollow" || path == "/.resolve";
}

void Scanner::startWatchdog()
{
    m_monitor.start();
    {
        const std::lock_guard guard(m_watchdogLock);
        m_watchdogStop = false;
    }
    m_watchdog = std::thread([this] {
        std::unique_lock lock(m_watchdogLock);
        while (true) {
            if (m_watchdogWake.wait_for(lock, m_options.watchdogInterval,
                                        [this] { return m_watchdogStop || m_monitor.isCancelled(); }))
                return;
            m_monitor.checkStall();
        }
    });
}

void Scanner::stopWatchdog()
{
    {
        const std::lock_guard guard(m_watchdogLock);
        m_watchdogStop = true;
    }
    m_watchdogWake.notify_all();
    if (m_watchdog.joinable())
        m_watchdog.join();
}

std::shared_ptr<ScanTree> Scanner::scan(const QByteArray& givenPath)
{
    const QByteArray path = normalizedRoot(givenPath);
    const VolumeFacts& volumes = m_options.volumeFacts ? *m_options.volumeFacts : systemVolumeFacts();
    const int workers = m_options.workers ? std::max(1, *m_options.workers)
                                          : workerCount(volumes.medium(path), activeProcessorCount());
    m_workersUsed = workers;
    raiseDescriptorLimit();

    struct stat rootFacts {};
    const bool rootKnown = ::lstat(path.constData(), &rootFacts) == 0;
    const VolumeBoundary boundary(path, rootKnown ? rootFacts.st_dev : dev_t(-1));

    startWatchdog();
    // A root that cannot be examined is taken for a folder: it then ends up as
    // one flagged, empty node.
    struct stat followed {};
    const bool isDirectory = ::stat(path.constData(), &followed) != 0 || S_ISDIR(followed.st_mode);
    std::shared_ptr<ScanTree> tree(new ScanTree(path, isDirectory));
    FileNode& root = *tree->root();

    const std::string rootPath(path.constData(), std::size_t(path.size()));
    Walker walker(*this, boundary, rootPath);
    std::vector<Walker> helpers;
    try {
        if (isDirectory && workers >= 2)
            walker.walkRootInParallel(root, rootKnown ? &rootFacts : nullptr, workers, helpers);
        else if (!isSkippedPath(rootPath))
            walker.walkEntry(root, AT_FDCWD, path.constData(), rootKnown ? &rootFacts : nullptr, 0);
    } catch (const std::exception&) {
        // A scan never fails: what could not be walked is flagged.
        root.setInaccessible();
    }

    walker.flushCounters();
    m_monitor.reportFinal();
    stopWatchdog();

    tree->m_arenas->arenas.push_back(walker.takeArena());
    qint64 nodes = 1 + walker.nodesMade();
    for (Walker& helper : helpers) {
        tree->m_arenas->arenas.push_back(helper.takeArena());
        nodes += helper.nodesMade();
    }
    tree->m_arenas->nodeCount = nodes;
    return tree;
}

} // namespace tw

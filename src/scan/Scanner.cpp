#include "scan/Scanner.h"

#include "platform/BulkLister.h"
#include "platform/DatalessPolicy.h"
#include "platform/VolumeBoundary.h"
#include "platform/VolumeFacts.h"
#include "scan/BulkRecords.h"
#include "scan/Dataless.h"
#include "scan/ScanTreeStorage.h"

#include <QDir>
#include <QThread>

#include <algorithm>
#include <deque>
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
// Small enough that reports see headway promptly.
constexpr qint64 kCounterBatch = 64;
// Within one listing, how many names go by between looks at cancel and
// between signs of headway for the stall rule.
constexpr std::size_t kListingStride = 1024;
// macOS refuses a descriptor limit above OPEN_MAX; Linux takes what the hard
// limit allows.
constexpr rlim_t kDescriptorCeiling = 10240;
// Room for a few hundred bulk records a call; one buffer a walker.
constexpr std::size_t kBulkBufferSize = 64 * 1024;

// A deep walk keeps one descriptor open per level and per worker; when the
// limit is reached anyway, the walk lets go of its descriptors and goes on
// by path.
void raiseDescriptorLimit()
{
    static std::once_flag once;
    std::call_once(once, [] {
        struct rlimit limit {};
        if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
            return;
        for (rlim_t wanted = std::min<rlim_t>(limit.rlim_max, kDescriptorCeiling); wanted > limit.rlim_cur;
             wanted /= 2) {
            struct rlimit raised = limit;
            raised.rlim_cur = wanted;
            if (::setrlimit(RLIMIT_NOFILE, &raised) == 0)
                return;
        }
    });
}

// The absolute root, without trailing slashes; `followLink` tells whether the
// user ended it with one, which asks for a symbolic link to be followed.
QByteArray normalizedRoot(const QByteArray& given, bool& followLink)
{
    QByteArray path = given;
    if (!path.startsWith('/'))
        path = QFile::encodeName(QDir::currentPath()) + (path.isEmpty() ? QByteArray() : "/" + path);
    followLink = path.size() >= 2 && path.endsWith('/');
    while (path.size() >= 2 && path.endsWith('/'))
        path.chop(1);
    return path;
}

int activeProcessorCount()
{
    return std::max(1, QThread::idealThreadCount());
}

bool outOfDescriptors()
{
    return errno == EMFILE || errno == ENFILE;
}

// Whether a listed child is a folder still to be entered.
bool awaitsWalk(const FileNode& node)
{
    return node.isDirectory() && !node.isInaccessible() && !node.isInCloud();
}

qint64 localBytes(const struct stat& facts)
{
    return facts.st_blocks < 0 ? 0 : qint64(facts.st_blocks) * 512;
}

// What a bulk record says of an entry, as the stat the walk would have made.
// Attributes that did not all come back leave it unknown: the entry is then
// examined by fstatat.
struct ListedFacts {
    struct stat facts;
    std::uint32_t flags;
    bool known;
};

ListedFacts factsOf(const bulk::Entry& entry)
{
    ListedFacts out{};
    out.flags = (entry.returned.common & bulk::kCommonFlags) ? entry.flags : 0;
    out.known = entry.complete();
    if (!out.known)
        return out;
    static constexpr mode_t kModes[] = {0, S_IFREG, S_IFDIR, S_IFBLK, S_IFCHR, S_IFLNK, S_IFSOCK, S_IFIFO};
    struct stat& facts = out.facts;
    facts.st_mode = kModes[entry.objectType];
    // Taken as the unsigned 32 bits the walk keeps of a device everywhere.
    facts.st_dev = dev_t(std::uint32_t(entry.device));
    facts.st_ino = ino_t(entry.fileId);
    facts.st_nlink = entry.objectType == bulk::kRegular ? nlink_t(entry.linkCount) : 1;
    // Allocated bytes are whole blocks; st_blocks counts 512-byte units.
    facts.st_blocks = blkcnt_t((std::max<std::int64_t>(entry.allocatedSize, 0) + 511) / 512);
    // The bulk listing is not asked for the logical length: a saved scan
    // made from it gives the allocated bytes in its place.
    facts.st_size = off_t(std::max<std::int64_t>(entry.allocatedSize, 0));
    return out;
}

} // namespace

// A folder whose totals wait for work that other workers do: folders handed
// out, or folders below it that handed some out. The last to finish adds up
// the totals and passes the news up.
struct Join {
    FileNode* node = nullptr;
    Join* parent = nullptr;
    std::atomic<int> outstanding{0};
    Join* nextFree = nullptr;
};

// A folder handed out for any idle worker to walk.
struct Task {
    FileNode* node;
    Join* parentJoin; // null for the root
    int depth;
};

// What the workers of one walk share: the folders handed out, the joins, and
// how many workers wait for work. Lock-guarded; the busy workers only look
// at the two atomics, once a folder.
class WorkShare {
public:
    std::atomic<int> hungry{0};
    std::atomic<std::size_t> queued{0};

    void push(const Task* tasks, std::size_t count)
    {
        {
            const std::lock_guard guard(m_lock);
            m_tasks.insert(m_tasks.end(), tasks, tasks + count);
            m_live += count;
            queued.store(m_tasks.size() - m_head, std::memory_order_relaxed);
        }
        m_wake.notify_all();
    }

    // The next folder to walk, or nothing when the walk is over.
    std::optional<Task> take()
    {
        std::unique_lock lock(m_lock);
        if (m_head == m_tasks.size()) {
            hungry.fetch_add(1, std::memory_order_relaxed);
            m_wake.wait(lock, [this] { return m_head < m_tasks.size() || m_live == 0; });
            hungry.fetch_sub(1, std::memory_order_relaxed);
            if (m_head == m_tasks.size())
                return std::nullopt;
        }
        // Oldest first: handed out from the shallowest levels, they hold the most.
        const Task task = m_tasks[m_head++];
        if (m_head == m_tasks.size()) {
            m_tasks.clear();
            m_head = 0;
        }
        queued.store(m_tasks.size() - m_head, std::memory_order_relaxed);
        return task;
    }

    void taskDone()
    {
        bool over = false;
        {
            const std::lock_guard guard(m_lock);
            over = --m_live == 0;
        }
        if (over)
            m_wake.notify_all();
    }

    Join* makeJoin(FileNode& node, Join* parent, int outstanding)
    {
        const std::lock_guard guard(m_lock);
        Join* join = m_free;
        if (join)
            m_free = join->nextFree;
        else
            join = &m_joins.emplace_back();
        join->node = &node;
        join->parent = parent;
        join->nextFree = nullptr;
        join->outstanding.store(outstanding, std::memory_order_relaxed);
        return join;
    }

    void freeJoin(Join* join)
    {
        const std::lock_guard guard(m_lock);
        join->nextFree = m_free;
        m_free = join;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_wake;
    std::vector<Task> m_tasks;
    std::size_t m_head = 0;
    std::size_t m_live = 0; // handed out and not yet finished
    std::deque<Join> m_joins;
    Join* m_free = nullptr;
};

// One thread's share of a walk: its own arena, path buffer and a frame per
// level. Each folder node is written by one walker at a time. A folder is
// walked in two passes: its listing is read and every child examined (files
// charged), then its folders are entered; folders not yet entered can be
// handed to an idle worker from any level.
class Walker {
public:
    Walker(Scanner& scanner, const VolumeBoundary& boundary, WorkShare& share, const BulkLister* bulk)
        : m_scanner(scanner), m_boundary(boundary), m_share(share), m_bulk(bulk)
    {
        m_frames.resize(kDepthLimit + 1);
        m_listings.resize(kDepthLimit + 1);
        if (m_bulk) {
            m_listedFacts.resize(kDepthLimit + 1);
            m_bulkBuffer.resize(kBulkBufferSize);
        }
    }

    // A root that is not a folder.
    void runFile(FileNode& node, const std::string& path, const struct stat& facts)
    {
        m_path = path;
        reportPath();
        chargeFile(node, &facts);
        flushCounters();
    }
    // Walks folders handed out until the walk is over.
    void work();
    // Walks one folder or the root; `rootPath` and the root's own facts for the root.
    void runTask(const Task& task, const std::string* rootPath = nullptr, bool followRoot = false);

    Arena takeArena() { return std::move(m_arena); }
    std::vector<ScanTree::Excluded> takeExcluded() { return std::move(m_excluded); }
    [[nodiscard]] qint64 nodesMade() const { return m_nodesMade; }
    [[nodiscard]] std::uint64_t headway() const { return m_headway.load(std::memory_order_relaxed); }

    // Hands the files charged since the last flush to the shared counters.
    void flushCounters()
    {
        if (m_pendingFiles == 0)
            return;
        m_scanner.m_monitor.addToCounters(m_pendingBytes, m_pendingFiles);
        m_pendingBytes = 0;
        m_pendingFiles = 0;
    }

    // Between the two passes a folder's node holds its identity where its
    // totals will go; the second pass takes it back out.
    static void keepIdentity(FileNode& node, const struct stat& facts)
    {
        const FileAllocationTracker::Identity id = FileAllocationTracker::identityOf(facts);
        node.m_size = qint64(id.inode);
        node.m_fileCount = id.device;
    }

private:
    struct Frame {
        FileNode* node = nullptr;
        Join* join = nullptr;
        DIR* dir = nullptr;        // the folder's listing, while it is held
        int fd = -1;               // its descriptor (or one opened again by path), -1 once let go
        std::uint32_t next = 0;    // the next child to enter
        std::uint32_t end = 0;     // children from here on were handed out
        FileNode* slots = nullptr; // the children, adopted by the node once all are examined
        dev_t device = 0;
        FileAllocationTracker::Identity identity;
        std::size_t pathLength = 0;
    };

    static FileAllocationTracker::Identity takeIdentity(FileNode& node)
    {
        const FileAllocationTracker::Identity id{node.m_fileCount, std::uint64_t(node.m_size)};
        node.m_size = 0;
        node.m_fileCount = 0;
        return id;
    }

    // Walks one folder. True when its totals are left to a join, to be
    // taken by whoever finishes last; false when they are complete already
    // (or the folder was not entered).
    bool walkFolder(FileNode& node, int depth, const FileAllocationTracker::Identity& identity,
                    bool openByPath, bool followLink);
    int openFolder(FileNode& node, int depth, const FileAllocationTracker::Identity& identity,
                   bool openByPath, bool followLink);
    int openByFullPath(const FileAllocationTracker::Identity& identity, bool followLink);
    // Closes every descriptor the walk holds above `depth`; they are opened
    // again by path if needed.
    void letGoOfDescriptors(int depth);
    static void closeFrame(Frame& frame)
    {
        if (frame.dir)
            ::closedir(frame.dir);
        else if (frame.fd >= 0)
            ::close(frame.fd);
        frame.dir = nullptr;
        frame.fd = -1;
    }
    int parentDescriptor(int depth);
    // Reads every name of the open folder into the arena: 0, or the errno
    // of a failed listing.
    int readNames(DIR* dir, std::vector<const unsigned char*>& names);
    // The same through the bulk lister, with what each record says of its entry.
    int readRecords(int fd, std::vector<const unsigned char*>& names, std::vector<ListedFacts>& listed);
    // A folder that could not be opened (fd -1) or listed, for `error`.
    void markUnlisted(FileNode& node, int error, int fd);
    // Whether a listed child is left out of the tree altogether; the
    // entries a saved scan should name as skipped go to m_excluded.
    bool leftOut(const struct stat& facts, std::string_view name, dev_t parentDevice);
    FileNode* allocateSlots(std::size_t count);
    // Examines one listed entry. Returns the node made for it in slots[index],
    // with a file already charged, or null when the entry is left out. A
    // child that cannot be examined is kept as a file that costs nothing.
    FileNode* admitChild(int dirFd, const unsigned char* stored, const ListedFacts* listed, FileNode& parent,
                         FileNode* slots, std::uint32_t index, dev_t parentDevice, int depth);
    void chargeFile(FileNode& node, const struct stat* facts);
    static void finishFolder(FileNode& node);
    void enterChildren(int depth);
    void maybeShare(int depth);
    Join* joinFor(int depth);
    void release(Join* join);
    void noteHeadway() { m_headway.store(m_headway.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }
    void setPathTo(const FileNode& node);
    // The counters reach the monitor in batches of files, not once a
    // folder: a folder is entered far more often than a report is due.
    void reportPath() { m_scanner.m_monitor.reportPath(m_path); }

    Scanner& m_scanner;
    const VolumeBoundary& m_boundary;
    WorkShare& m_share;
    std::string m_path;
    Arena m_arena;
    std::vector<Frame> m_frames;                               // one per depth, reused
    std::vector<std::vector<const unsigned char*>> m_listings; // one per depth, reused
    const BulkLister* m_bulk;                                  // null: readdir and fstatat
    std::vector<std::vector<ListedFacts>> m_listedFacts;       // beside m_listings, bulk listing only
    std::vector<unsigned char> m_bulkBuffer;
    std::vector<const FileNode*> m_chain;                      // reused to rebuild a handed-out folder's path
    std::vector<Task> m_handing;                               // reused to hand folders out
    std::vector<ScanTree::Excluded> m_excluded;
    int m_baseDepth = 0;
    Join* m_taskJoin = nullptr;
    qint64 m_nodesMade = 0;
    // Charged files wait here and reach the shared counters in batches, so
    // that workers do not contend for one cache line a file.
    qint64 m_pendingBytes = 0;
    qint64 m_pendingFiles = 0;
    // Read by the stall watchdog: every charged file and every stretch of a
    // listing moves it, on a cache line of this walker's own.
    alignas(64) std::atomic<std::uint64_t> m_headway{0};
};

void Walker::work()
{
    while (const std::optional<Task> task = m_share.take()) {
        runTask(*task);
        m_share.taskDone();
    }
    flushCounters();
}

void Walker::setPathTo(const FileNode& node)
{
    m_chain.clear();
    for (const FileNode* at = &node; at; at = at->parent())
        m_chain.push_back(at);
    // The root's name is its whole path.
    const std::string_view root = readStoredName(m_chain.back()->m_name);
    m_path.assign(root);
    for (auto at = m_chain.rbegin() + 1; at != m_chain.rend(); ++at) {
        if (m_path.size() > 1)
            m_path.push_back('/');
        m_path.append((*at)->name());
    }
}

void Walker::runTask(const Task& task, const std::string* rootPath, bool followRoot)
{
    m_baseDepth = task.depth;
    m_taskJoin = task.parentJoin;
    if (rootPath)
        m_path = *rootPath;
    else
        setPathTo(*task.node);
    const FileAllocationTracker::Identity identity = takeIdentity(*task.node);
    if (!walkFolder(*task.node, task.depth, identity, true, followRoot))
        release(task.parentJoin);
    flushCounters();
}

int Walker::readNames(DIR* dir, std::vector<const unsigned char*>& names)
{
    names.clear();
    ScanMonitor& monitor = m_scanner.m_monitor;
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        const char* n = entry->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)))
            continue;
        names.push_back(storeName(m_arena, n, std::strlen(n)));
        // A long listing on a slow disk is moving, not stalled (a deliberate
        // change: the stall rule once counted charged files only, and gave up
        // whole a folder of 200,000 entries that was still being read).
        if (names.size() % kListingStride == 0) {
            noteHeadway();
            if (monitor.isCancelled())
                return 0;
        }
        errno = 0;
    }
    return errno;
}

int Walker::readRecords(int fd, std::vector<const unsigned char*>& names, std::vector<ListedFacts>& listed)
{
    names.clear();
    listed.clear();
    ScanMonitor& monitor = m_scanner.m_monitor;
    while (true) {
        const int count = m_bulk->fill(fd, m_bulkBuffer.data(), m_bulkBuffer.size());
        if (count <= 0)
            return count == 0 ? 0 : (errno ? errno : EIO);
        bulk::RecordReader reader(m_bulkBuffer.data(), m_bulkBuffer.size(), count);
        bulk::Entry entry;
        while (reader.next(entry)) {
            if (entry.name == "." || entry.name == "..")
                continue;
            names.push_back(storeName(m_arena, entry.name.data(), entry.name.size()));
            listed.push_back(factsOf(entry));
            if (names.size() % kListingStride == 0) {
                noteHeadway();
                if (monitor.isCancelled())
                    return 0;
            }
        }
        // What follows a broken record cannot be trusted, nor can the count.
        if (reader.malformed())
            return EIO;
    }
}

void Walker::markUnlisted(FileNode& node, int error, int fd)
{
    if (datalessOutcome(true, 0, error) != EntryOutcome::inCloud) {
        node.setInaccessible();
        return;
    }
    // Evicted by a file provider: a leaf that costs what it holds here.
    node.setInCloud();
    struct stat facts {};
    if (fd >= 0 && ::fstat(fd, &facts) == 0) {
        node.m_size = localBytes(facts);
        m_pendingBytes += node.m_size;
    }
}

bool Walker::leftOut(const struct stat& facts, std::string_view name, dev_t parentDevice)
{
    // Links are never followed and never shown.
    if (S_ISLNK(facts.st_mode))
        return true;
    const auto exclude = [&](ScanTree::Exclusion why) {
        m_excluded.push_back({QByteArray(m_path.data(), qsizetype(m_path.size())),
                              QByteArray(name.data(), qsizetype(name.size())), why});
        return true;
    };
    // Other volumes mounted below the root are not counted.
    if (!m_boundary.contains(m_path, parentDevice, name, facts.st_dev, S_ISDIR(facts.st_mode)))
        return exclude(ScanTree::Exclusion::otherVolume);
    if (m_path == "/" && Scanner::isSkippedPath(std::string("/").append(name)))
        return exclude(ScanTree::Exclusion::systemVirtual);
    return false;
}

FileNode* Walker::allocateSlots(std::size_t count)
{
    if (count == 0)
        return nullptr;
    return static_cast<FileNode*>(m_arena.allocate(count * sizeof(FileNode), alignof(FileNode)));
}

FileNode* Walker::admitChild(int dirFd, const unsigned char* stored, const ListedFacts* listed, FileNode& parent,
                             FileNode* slots, std::uint32_t index, dev_t parentDevice, int depth)
{
    const std::string_view name = readStoredName(stored);
    // Read only when known.
    struct stat facts;
    bool known = false;
    std::uint32_t flags = 0;
    if (listed) {
        flags = listed->flags;
        known = listed->known;
        if (known)
            facts = listed->facts;
    }
    if (!known)
        known = ::fstatat(dirFd, name.data(), &facts, AT_SYMLINK_NOFOLLOW) == 0;
    if (known && leftOut(facts, name, parentDevice))
        return nullptr;
    const bool isDirectory = known && S_ISDIR(facts.st_mode);
    auto* child = new (&slots[index]) FileNode;
    child->m_name = stored;
    child->m_parent = &parent;
    child->m_bits = isDirectory ? std::uint32_t(FileNode::kDirectory) : 0u;
    ++m_nodesMade;
    const bool inCloud = flags != 0 && datalessOutcome(isDirectory, flags, 0) == EntryOutcome::inCloud;
    if (inCloud)
        child->setInCloud();
    if (!isDirectory) {
        chargeFile(*child, known ? &facts : nullptr);
    } else if (inCloud) {
        // Never listed: a leaf with what it holds on this disk.
        child->m_size = localBytes(facts);
        m_pendingBytes += child->m_size;
    } else if (depth + 1 >= kDepthLimit)
        child->setInaccessible();
    else
        keepIdentity(*child, facts);
    return child;
}

void Walker::chargeFile(FileNode& node, const struct stat* facts)
{
    const qint64 size = facts ? m_scanner.m_allocation.allocatedSize(*facts) : 0;
    node.m_size = size;
    node.m_fileCount = 1;
    const qint64 length = facts && S_ISREG(facts->st_mode) ? std::max<qint64>(facts->st_size, 0) : 0;
    if (facts && S_ISREG(facts->st_mode) && facts->st_nlink > 1) {
        auto* link = new (m_arena.allocate(sizeof(FileNode::LinkFacts), alignof(FileNode::LinkFacts)))
            FileNode::LinkFacts{std::uint64_t(facts->st_ino), length,
                                FileAllocationTracker::identityOf(*facts).device, std::uint32_t(facts->st_nlink)};
        node.setLink(link);
    } else {
        node.setApparentSize(length);
    }
    noteHeadway();
    m_pendingBytes += size;
    if (++m_pendingFiles == kCounterBatch)
        flushCounters();
}

void Walker::finishFolder(FileNode& node)
{
    if (node.isInCloud())
        return; // a leaf, sized when it was met
    qint64 size = 0;
    qint64 files = 0;
    const FileNode* slots = node.m_children;
    for (std::uint32_t i = 0, count = node.slotCount(); i < count; ++i) {
        if (qAddOverflow(size, slots[i].m_size, &size))
            qFatal("a folder's size overflowed");
        files += slots[i].m_fileCount;
    }
    if (files > qint64(UINT32_MAX))
        qFatal("a folder holds more files than a tree can count");
    node.m_size = size;
    node.m_fileCount = std::uint32_t(files);
    node.sortChildrenBySize();
}

void Walker::letGoOfDescriptors(int depth)
{
    for (int at = m_baseDepth; at < depth; ++at) {
        closeFrame(m_frames[std::size_t(at)]);
    }
}

int Walker::openByFullPath(const FileAllocationTracker::Identity& identity, bool followLink)
{
    const int fd = ::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followLink ? 0 : O_NOFOLLOW));
    if (fd < 0)
        return fd;
    // Reached by path, so make sure it is still the folder that was listed.
    struct stat facts {};
    if (::fstat(fd, &facts) != 0 || FileAllocationTracker::identityOf(facts) != identity) {
        ::close(fd);
        errno = ENOENT;
        return -1;
    }
    return fd;
}

int Walker::parentDescriptor(int depth)
{
    Frame& parent = m_frames[std::size_t(depth - 1)];
    if (parent.fd < 0) {
        // Let go of for want of descriptors: open it again by its path.
        const std::size_t length = m_path.size();
        m_path.resize(parent.pathLength);
        parent.fd = openByFullPath(parent.identity, false);
        m_path.resize(length);
    }
    return parent.fd;
}

int Walker::openFolder(FileNode& node, int depth, const FileAllocationTracker::Identity& identity,
                       bool openByPath, bool followLink)
{
    if (!openByPath) {
        const int parentFd = parentDescriptor(depth);
        if (parentFd >= 0) {
            const int fd = ::openat(parentFd, node.name().data(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (fd >= 0 || !outOfDescriptors())
                return fd;
        }
    } else {
        const int fd = openByFullPath(identity, followLink);
        if (fd >= 0 || !outOfDescriptors())
            return fd;
    }
    // Out of descriptors: what this walker holds goes, and the folder is
    // reached by its path instead of being flagged.
    letGoOfDescriptors(depth);
    return openByFullPath(identity, followLink);
}

bool Walker::walkFolder(FileNode& node, int depth, const FileAllocationTracker::Identity& identity,
                        bool openByPath, bool followLink)
{
    ScanMonitor& monitor = m_scanner.m_monitor;
    if (monitor.isCancelled())
        return false;
    if (monitor.skipRequested()) {
        node.setInaccessible();
        monitor.clearSkip();
        return false;
    }
    if (m_scanner.m_allocation.claimDirectory(identity) != FileAllocationTracker::Claim::claimed)
        return false;
    Frame& frame = m_frames[std::size_t(depth)];
    frame = Frame{};
    frame.node = &node;
    frame.identity = identity;
    frame.device = dev_t(identity.device);
    frame.pathLength = m_path.size();
    try {
        reportPath();
        const int fd = openFolder(node, depth, identity, openByPath, followLink);
        if (fd >= 0 && m_bulk) {
            frame.fd = fd;
        } else if (fd >= 0) {
            frame.dir = ::fdopendir(fd);
            frame.fd = frame.dir ? ::dirfd(frame.dir) : -1;
        }
        if (frame.fd < 0) {
            const int error = errno;
            if (fd >= 0)
                ::close(fd);
            markUnlisted(node, error, -1);
            return false;
        }
        std::vector<const unsigned char*>& names = m_listings[std::size_t(depth)];
        std::vector<ListedFacts>* listed = m_bulk ? &m_listedFacts[std::size_t(depth)] : nullptr;
        if (const int error = listed ? readRecords(frame.fd, names, *listed) : readNames(frame.dir, names)) {
            markUnlisted(node, error, frame.fd);
        } else {
            FileNode* slots = frame.slots = allocateSlots(names.size());
            const std::size_t pathLength = m_path.size();
            for (std::size_t i = 0; i < names.size(); ++i) {
                if (monitor.isCancelled())
                    break;
                if (monitor.skipRequested()) {
                    node.setInaccessible();
                    break;
                }
                if (!admitChild(frame.fd, names[i], listed ? &(*listed)[i] : nullptr, node, slots, frame.end,
                                frame.device, depth))
                    continue;
                ++frame.end;
                if (frame.end % kReportEvery == 0) {
                    m_path.append("/… (").append(std::to_string(frame.end)).append(")");
                    reportPath();
                    m_path.resize(pathLength);
                }
            }
            node.adoptChildren(slots, frame.end);
            enterChildren(depth);
        }
    } catch (const std::exception&) {
        // Out of memory in this branch: keep the rest of the scan, and leave
        // no folder of this level holding its identity for totals.
        node.setInaccessible();
        if (frame.slots && node.m_children != frame.slots)
            node.adoptChildren(frame.slots, frame.end);
        for (std::uint32_t i = frame.next; i < frame.end; ++i)
            if (awaitsWalk(node.m_children[i]))
                (void)takeIdentity(node.m_children[i]);
        frame.end = frame.next;
    }
    closeFrame(frame);
    // The innermost folder that saw the request has honoured it.
    if (monitor.skipRequested()) {
        node.setInaccessible();
        monitor.clearSkip();
    }
    if (!frame.join) {
        finishFolder(node);
        return false;
    }
    release(frame.join);
    return true;
}

void Walker::enterChildren(int depth)
{
    Frame& frame = m_frames[std::size_t(depth)];
    FileNode& node = *frame.node;
    ScanMonitor& monitor = m_scanner.m_monitor;
    const std::size_t pathLength = m_path.size();
    bool stop = false;
    // `end` shrinks when folders of this level are handed out.
    for (; frame.next < frame.end; ++frame.next) {
        FileNode& child = node.m_children[frame.next];
        if (!awaitsWalk(child))
            continue;
        const FileAllocationTracker::Identity identity = takeIdentity(child);
        if (!stop && (monitor.isCancelled() || monitor.skipRequested()))
            stop = true;
        if (stop)
            continue; // the identity is cleared all the same
        if (m_share.hungry.load(std::memory_order_relaxed) > 0)
            maybeShare(depth);
        if (pathLength > 1)
            m_path.push_back('/');
        m_path.append(child.name());
        walkFolder(child, depth + 1, identity, false, false);
        m_path.resize(pathLength);
    }
}

// Another worker waits: hand it the unvisited folders of the shallowest
// level that has some, since those tend to hold the most. The folder about
// to be entered stays with this walker.
void Walker::maybeShare(int depth)
{
    if (m_share.queued.load(std::memory_order_relaxed) > 0)
        return;
    for (int at = m_baseDepth; at <= depth; ++at) {
        Frame& frame = m_frames[std::size_t(at)];
        const std::uint32_t first = frame.next + 1; // frame.next is in hand
        FileNode* children = frame.node->m_children;
        std::uint32_t waiting = 0;
        for (std::uint32_t i = first; i < frame.end; ++i)
            waiting += awaitsWalk(children[i]);
        if (waiting == 0)
            continue;
        // Half of them, the later ones, at least one.
        std::uint32_t give = (waiting + 1) / 2;
        m_handing.clear();
        Join* join = joinFor(at);
        std::uint32_t i = frame.end;
        while (give > 0) {
            --i;
            if (awaitsWalk(children[i])) {
                m_handing.push_back({&children[i], join, at + 1});
                --give;
            }
        }
        // Counted before anyone can finish them.
        join->outstanding.fetch_add(int(m_handing.size()), std::memory_order_relaxed);
        try {
            m_share.push(m_handing.data(), m_handing.size());
        } catch (...) {
            join->outstanding.fetch_sub(int(m_handing.size()), std::memory_order_relaxed);
            throw;
        }
        frame.end = i;
        return;
    }
}

Join* Walker::joinFor(int depth)
{
    Frame& frame = m_frames[std::size_t(depth)];
    if (frame.join)
        return frame.join;
    Join* up = depth > m_baseDepth ? joinFor(depth - 1) : m_taskJoin;
    // One for this walker's own pass over the folder.
    Join* join = m_share.makeJoin(*frame.node, up, 1);
    // The level above now waits for this one as for a handed-out folder.
    if (depth > m_baseDepth)
        up->outstanding.fetch_add(1, std::memory_order_relaxed);
    frame.join = join;
    return join;
}

void Walker::release(Join* join)
{
    while (join && join->outstanding.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        // Every part of this folder is done, whoever walked it.
        finishFolder(*join->node);
        Join* up = join->parent;
        m_share.freeJoin(join);
        join = up;
    }
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
        std::uint64_t lastHeadway = 0;
        while (true) {
            if (m_watchdogWake.wait_for(lock, m_options.watchdogInterval,
                                        [this] { return m_watchdogStop || m_monitor.isCancelled(); }))
                return;
            // Any walker that charged a file or read a stretch of names since
            // the last look has made headway.
            const std::uint64_t headway = m_headway ? m_headway() : 0;
            if (headway != lastHeadway) {
                lastHeadway = headway;
                m_monitor.noteHeadway();
            }
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
    bool followLink = false;
    const QByteArray path = normalizedRoot(givenPath, followLink);
    const VolumeFacts& volumes = m_options.volumeFacts ? *m_options.volumeFacts : systemVolumeFacts();
    const int workers = m_options.workers ? std::max(1, *m_options.workers)
                                          : workerCount(volumes.medium(path), activeProcessorCount());
    raiseDescriptorLimit();
    (void)keepDatalessFilesRemote(); // without it, the walk would download what it meets
    const BulkLister* bulk = m_options.bulkLister ? *m_options.bulkLister : systemBulkLister();

    // A root written with a trailing slash is followed if it is a link, as
    // `du` does: the user asked for what the link points to.
    struct stat rootFacts {};
    bool rootKnown = ::lstat(path.constData(), &rootFacts) == 0;
    if (rootKnown && followLink && S_ISLNK(rootFacts.st_mode))
        rootKnown = ::stat(path.constData(), &rootFacts) == 0;
    const std::string rootPath(path.constData(), std::size_t(path.size()));
    const VolumeBoundary boundary(rootPath, systemVolumeNames(rootPath));

    // A root that cannot be examined is taken for a folder: it then ends up as
    // one flagged, empty node.
    struct stat followed {};
    const bool isDirectory = ::stat(path.constData(), &followed) != 0 || S_ISDIR(followed.st_mode);
    std::shared_ptr<ScanTree> tree(new ScanTree(path, isDirectory));
    FileNode& root = *tree->root();

    WorkShare share;
    std::vector<std::unique_ptr<Walker>> walkers;
    walkers.reserve(std::size_t(workers));
    for (int i = 0; i < workers; ++i)
        walkers.push_back(std::make_unique<Walker>(*this, boundary, share, bulk));
    m_headway = [&walkers] {
        std::uint64_t sum = 0;
        for (const auto& walker : walkers)
            sum += walker->headway();
        return sum;
    };
    startWatchdog();

    Walker& first = *walkers.front();
    const bool enter = !isSkippedPath(rootPath) && !m_monitor.isCancelled();
    if (!enter) {
    } else if (!rootKnown) {
        root.setInaccessible();
    } else if (!isDirectory) {
        first.runFile(root, rootPath, rootFacts);
    } else if (!S_ISDIR(rootFacts.st_mode)) {
        // A link written without the slash: counted as what it is, a link.
    } else {
        Walker::keepIdentity(root, rootFacts);
        // The root is the first folder handed out; the other workers wait
        // for the folders its walker hands on.
        const Task rootTask{&root, nullptr, 0};
        share.push(&rootTask, 1);
        const std::optional<Task> task = share.take();
        std::vector<std::thread> running;
        running.reserve(std::size_t(workers - 1));
        for (int i = 1; i < workers; ++i) {
            try {
                running.emplace_back([&walkers, i] { walkers[std::size_t(i)]->work(); });
            } catch (const std::system_error&) {
                break; // the system will not give more threads; walk with those we have
            }
        }
        if (task) {
            first.runTask(*task, &rootPath, followLink);
            share.taskDone();
        }
        first.work();
        for (std::thread& thread : running)
            thread.join();
    }
    m_workersUsed = workers;

    first.flushCounters();
    m_monitor.reportFinal();
    stopWatchdog();
    m_headway = {};

    qint64 nodes = 1;
    auto& excluded = tree->m_arenas->excluded;
    for (auto& walker : walkers) {
        tree->m_arenas->arenas.push_back(walker->takeArena());
        nodes += walker->nodesMade();
        for (ScanTree::Excluded& entry : walker->takeExcluded())
            excluded.push_back(std::move(entry));
    }
    tree->m_arenas->nodeCount = nodes;
    return tree;
}

} // namespace tw

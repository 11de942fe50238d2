#include "scan/FileNode.h"

#include "scan/ScanTreeStorage.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace tw {

namespace {
std::string_view lastComponent(std::string_view path)
{
    if (path == "/")
        return path;
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}
} // namespace

std::string_view FileNode::name() const
{
    if (!m_name)
        return {};
    const std::string_view stored = readStoredName(m_name);
    return isRoot() ? lastComponent(stored) : stored;
}

QString FileNode::displayName() const
{
    const auto bytes = name();
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

QByteArray FileNode::path() const
{
    // Collect the chain first so the path is built with one allocation.
    std::vector<const FileNode*> chain;
    for (const FileNode* at = this; at; at = at->m_parent)
        chain.push_back(at);
    const FileNode* top = chain.back();
    std::string_view start = top->isRoot() ? readStoredName(top->m_name) : top->name();
    QByteArray out(start.data(), qsizetype(start.size()));
    for (auto it = chain.rbegin() + 1; it != chain.rend(); ++it) {
        if (!out.endsWith('/'))
            out.append('/');
        const auto part = (*it)->name();
        out.append(part.data(), qsizetype(part.size()));
    }
    return out;
}

QString FileNode::displayPath() const
{
    return QString::fromUtf8(path());
}

qint64 FileNode::inaccessibleCount() const
{
    qint64 count = isInaccessible() ? 1 : 0;
    for (const FileNode& child : children())
        count += child.inaccessibleCount();
    return count;
}

qsizetype FileNode::childCount() const
{
    qsizetype count = 0;
    for ([[maybe_unused]] const FileNode& child : children())
        ++count;
    return count;
}

bool FileNode::hasChildren() const
{
    const ChildRange range = children();
    return range.begin() != range.end();
}

bool FileNode::removeChild(const FileNode* child)
{
    if (!isDirectory())
        return false;
    FileNode* const first = m_children;
    FileNode* const last = m_children + slotCount();
    if (child < first || child >= last || (child->m_bits & kRemoved))
        return false;
    FileNode& removed = first[child - first];
    removed.m_bits |= kRemoved;
    for (FileNode* at = this; at; at = at->m_parent) {
        if (at->m_size < removed.m_size || at->m_fileCount < removed.m_fileCount)
            qFatal("removeChild: an ancestor is smaller than the removed child");
        at->m_size -= removed.m_size;
        at->m_fileCount -= removed.m_fileCount;
    }
    return true;
}

void FileNode::adoptChildren(FileNode* slots, std::uint32_t count)
{
    if (count > kSlotMask)
        qFatal("a folder has more children than a tree can hold");
    m_children = slots;
    m_bits = (m_bits & ~std::uint32_t(kSlotMask)) | count;
}

void FileNode::sortChildrenBySize()
{
    const std::uint32_t count = slotCount();
    // Many folders come out of the listing in order already (one file among
    // folders, files of one size).
    std::uint32_t unsorted = 1;
    while (unsorted < count && m_children[unsorted - 1].m_size >= m_children[unsorted].m_size)
        ++unsorted;
    if (unsorted >= count)
        return;
    // Sort keys, not nodes: a node is moved once, and only if it has to be.
    thread_local std::vector<std::pair<qint64, std::uint32_t>> order;
    order.clear();
    for (std::uint32_t i = 0; i < count; ++i)
        order.emplace_back(m_children[i].m_size, i);
    // Largest first; the index keeps equal sizes in listing order.
    std::sort(order.begin(), order.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    });
    thread_local std::vector<std::byte> scratch;
    scratch.resize(std::size_t(count) * sizeof(FileNode));
    std::memcpy(scratch.data(), static_cast<void*>(m_children), scratch.size());
    const auto* before = reinterpret_cast<const FileNode*>(scratch.data());
    for (std::uint32_t i = 0; i < count; ++i) {
        if (order[i].second == i)
            continue;
        std::memcpy(static_cast<void*>(&m_children[i]), &before[order[i].second], sizeof(FileNode));
        // The grandchildren still point at the old place.
        FileNode& child = m_children[i];
        for (std::uint32_t g = 0; g < child.slotCount(); ++g)
            child.m_children[g].m_parent = &child;
    }
}

ScanTree::ScanTree(const QByteArray& rootPath, bool isDirectory) : m_arenas(std::make_unique<Arenas>())
{
    // The root keeps its whole path where other nodes keep a name.
    Arena& arena = m_arenas->arenas.emplace_back();
    const unsigned char* stored = storeName(arena, rootPath.constData(), std::size_t(rootPath.size()));
    m_root.m_name = stored;
    m_root.m_bits = FileNode::kRoot | (isDirectory ? std::uint32_t(FileNode::kDirectory) : 0u);
}

ScanTree::~ScanTree() = default;

TreeGate& ScanTree::gate() const
{
    return m_arenas->gate;
}

std::size_t ScanTree::memoryBytes() const
{
    std::size_t total = sizeof(ScanTree) + sizeof(Arenas);
    for (const Arena& arena : m_arenas->arenas)
        total += arena.reservedBytes();
    return total;
}

const std::vector<ScanTree::Excluded>& ScanTree::excluded() const
{
    return m_arenas->excluded;
}

qint64 ScanTree::nodeCount() const
{
    return m_arenas->nodeCount;
}

FileNode* ScanTree::find(const QByteArray& target)
{
    FileNode* node = &m_root;
    QByteArray nodePath = node->path();
    while (true) {
        if (nodePath == target)
            return node;
        if (!nodePath.endsWith('/'))
            nodePath.append('/');
        if (!target.startsWith(nodePath))
            return nullptr;
        // Names in one folder are unique, so only one child can lead on.
        const qsizetype end = target.indexOf('/', nodePath.size());
        const QByteArray next = target.mid(nodePath.size(), end < 0 ? -1 : end - nodePath.size());
        FileNode* found = nullptr;
        for (FileNode& child : node->children()) {
            const auto name = child.name();
            if (next == QByteArrayView(name.data(), qsizetype(name.size()))) {
                found = &child;
                break;
            }
        }
        if (!found)
            return nullptr;
        node = found;
        nodePath.append(next);
    }
}

} // namespace tw

namespace tw {

void ScanTree::graft(FileNode& folder, std::shared_ptr<ScanTree> fresh)
{
    // Workers reading this tree (kinds, name search) step aside first.
    const TreeGate::Editing editing = gate().edit();
    FileNode& root = *fresh->root();
    const std::uint32_t count = root.slotCount();
    for (std::uint32_t i = 0; i < count; ++i)
        root.m_children[i].m_parent = &folder;
    folder.adoptChildren(root.m_children, count);
    if (root.isInaccessible())
        folder.setInaccessible();
    else
        folder.m_bits &= ~std::uint32_t(FileNode::kInaccessible);
    const qint64 sizeDelta = root.m_size - folder.m_size;
    const qint64 filesDelta = qint64(root.m_fileCount) - qint64(folder.m_fileCount);
    for (FileNode* at = &folder; at; at = at->m_parent) {
        qint64 size = 0;
        if (qAddOverflow(at->m_size, sizeDelta, &size) || size < 0)
            qFatal("graft: a folder's size left its range");
        at->m_size = size;
        at->m_fileCount = std::uint32_t(qint64(at->m_fileCount) + filesDelta);
    }
    m_arenas->nodeCount += fresh->m_arenas->nodeCount - 1;
    m_arenas->grafts.push_back(std::move(fresh));
}

} // namespace tw

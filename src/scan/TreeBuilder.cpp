#include "scan/TreeBuilder.h"

#include "scan/ScanTreeStorage.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_set>
#include <vector>

namespace tw {

namespace {
// A node's bytes while its folder is open; copied into the arena, as a
// whole level, when the folder closes.
struct Slot {
    alignas(FileNode) unsigned char bytes[sizeof(FileNode)];
};

struct IdentityHash {
    std::size_t operator()(const std::pair<std::uint32_t, std::uint64_t>& id) const
    {
        return std::hash<std::uint64_t>()(id.second * 31 + id.first);
    }
};
} // namespace

struct TreeBuilder::State {
    Arena arena;
    // levels[d]: the children gathered so far of the folder open at depth d.
    std::vector<std::vector<Slot>> levels{1};
    std::string path; // of the open folder, for exclusions
    std::vector<std::size_t> pathLengths;
    std::unordered_set<std::pair<std::uint32_t, std::uint64_t>, IdentityHash> linked;
    std::vector<std::string_view> names; // reused by the duplicate check
    std::vector<ScanTree::Excluded> excluded;
};

TreeBuilder::TreeBuilder(const QByteArray& rootPath, bool rootIsDirectory)
    : m_tree(new ScanTree(rootPath, rootIsDirectory)), m_state(std::make_unique<State>())
{
    m_state->path.assign(rootPath.constData(), std::size_t(rootPath.size()));
}

TreeBuilder::~TreeBuilder() = default;

FileNode& TreeBuilder::push(std::string_view name, bool isDirectory)
{
    std::vector<Slot>& level = m_state->levels[std::size_t(m_depth)];
    auto* node = new (level.emplace_back().bytes) FileNode;
    node->m_name = storeName(m_state->arena, name.data(), name.size());
    node->m_bits = isDirectory ? std::uint32_t(FileNode::kDirectory) : 0u;
    ++m_entries;
    return *node;
}

TreeBuilder::Fault TreeBuilder::addFile(const Entry& entry)
{
    FileNode* node = nullptr;
    if (m_depth == 0 && !m_tree->root()->isDirectory())
        node = m_tree->root();
    else
        node = &push(entry.name, false);
    node->m_size = entry.size;
    node->m_fileCount = 1;
    if (entry.inaccessible)
        node->setInaccessible();
    if (entry.link) {
        const bool first = m_state->linked.emplace(entry.link->device, entry.link->inode).second;
        if (!first)
            node->m_size = 0;
        auto* link = new (m_state->arena.allocate(sizeof(FileNode::LinkFacts), alignof(FileNode::LinkFacts)))
            FileNode::LinkFacts(*entry.link);
        link->apparentSize = entry.apparentSize;
        node->setLink(link);
    } else {
        node->setApparentSize(entry.apparentSize);
    }
    return Fault::none;
}

void TreeBuilder::openFolder(std::string_view name, bool inaccessible)
{
    FileNode& node = push(name, true);
    if (inaccessible)
        node.setInaccessible();
    ++m_depth;
    if (m_state->levels.size() <= std::size_t(m_depth))
        m_state->levels.emplace_back();
    m_state->levels[std::size_t(m_depth)].clear();
    m_state->pathLengths.push_back(m_state->path.size());
    if (m_state->path.empty() || m_state->path.back() != '/')
        m_state->path.push_back('/');
    m_state->path.append(name);
}

TreeBuilder::Fault TreeBuilder::close(FileNode& folder)
{
    std::vector<Slot>& level = m_state->levels[std::size_t(m_depth)];
    if (level.size() > FileNode::kSlotMask)
        return Fault::tooManyChildren;
    const auto count = std::uint32_t(level.size());
    FileNode* placed = nullptr;
    if (count) {
        placed = static_cast<FileNode*>(m_state->arena.allocate(count * sizeof(FileNode), alignof(FileNode)));
        std::memcpy(static_cast<void*>(placed), level.data(), count * sizeof(FileNode));
    }
    qint64 size = 0;
    qint64 files = 0;
    auto& names = m_state->names;
    names.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        FileNode& child = placed[i];
        child.m_parent = &folder;
        // The grandchildren were placed when this child closed; point them here.
        for (std::uint32_t g = 0; g < child.slotCount(); ++g)
            child.m_children[g].m_parent = &child;
        if (qAddOverflow(size, child.m_size, &size))
            return Fault::sizeOverflow;
        files += child.m_fileCount;
        names.push_back(child.name());
    }
    // Paths name one entry each: a tree with two children of one name
    // could not say which of them an action means.
    std::sort(names.begin(), names.end());
    if (std::adjacent_find(names.begin(), names.end()) != names.end())
        return Fault::duplicateName;
    if (files > qint64(UINT32_MAX))
        return Fault::sizeOverflow;
    folder.adoptChildren(placed, count);
    folder.m_size = size;
    folder.m_fileCount = std::uint32_t(files);
    folder.sortChildrenBySize();
    level.clear();
    return Fault::none;
}

TreeBuilder::Fault TreeBuilder::closeFolder()
{
    if (m_depth == 0)
        return Fault::none;
    std::vector<Slot>& parentLevel = m_state->levels[std::size_t(m_depth - 1)];
    auto* folder = reinterpret_cast<FileNode*>(parentLevel.back().bytes);
    const Fault fault = close(*folder);
    --m_depth;
    m_state->path.resize(m_state->pathLengths.back());
    m_state->pathLengths.pop_back();
    return fault;
}

void TreeBuilder::exclude(std::string_view name, ScanTree::Exclusion why)
{
    m_state->excluded.push_back({QByteArray(m_state->path.data(), qsizetype(m_state->path.size())),
                                 QByteArray(name.data(), qsizetype(name.size())), why});
}

void TreeBuilder::setRootInaccessible()
{
    m_tree->root()->setInaccessible();
}

std::shared_ptr<ScanTree> TreeBuilder::finish(Fault* fault)
{
    *fault = Fault::none;
    while (m_depth > 0 && *fault == Fault::none)
        *fault = closeFolder();
    FileNode* root = m_tree->root();
    if (*fault == Fault::none && root->isDirectory())
        *fault = close(*root);
    if (*fault != Fault::none)
        return nullptr;
    m_tree->m_arenas->arenas.push_back(std::move(m_state->arena));
    m_tree->m_arenas->nodeCount = m_entries + 1;
    m_tree->m_arenas->excluded = std::move(m_state->excluded);
    return std::move(m_tree);
}

} // namespace tw

#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>

#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

namespace tw {

class ScanTree;
class Scanner;
class TreeBuilder;
class TreeGate;
class Walker;

// One file or folder of a scan. Sizes are allocated bytes, already rolled up:
// a folder's size and fileCount are the sums over its children.
//
// Nodes live in their tree's arena: children are stored contiguously, names
// once, as the exact bytes the file system gave. A node's identity is its
// address, and it stays valid for as long as its ScanTree is alive; hold a
// NodeRef, not a bare pointer, anywhere that may outlive a rescan.
//
// A finished tree is read and changed on the GUI thread only.
class FileNode {
public:
    FileNode(const FileNode&) = delete;
    FileNode& operator=(const FileNode&) = delete;

    // The last path component as raw bytes; for a scan's root, the last
    // component of the scanned path ("/" for the root of the file system).
    [[nodiscard]] std::string_view name() const;
    // The name decoded for display; bytes that are not UTF-8 become U+FFFD.
    [[nodiscard]] QString displayName() const;

    [[nodiscard]] bool isDirectory() const { return m_bits & kDirectory; }
    // The walk could not finish this folder; it keeps what it gathered.
    [[nodiscard]] bool isInaccessible() const { return m_bits & kInaccessible; }
    // A file provider keeps this entry's contents in the cloud: its size is
    // what it holds on this disk, and a folder of that kind was not listed.
    [[nodiscard]] bool isInCloud() const { return m_bits & kInCloud; }
    [[nodiscard]] qint64 size() const { return m_size; }
    [[nodiscard]] qint64 fileCount() const { return m_fileCount; }

    // What a file with two or more names shares with its other names: saved
    // scans carry it so that a reader counts the blocks once.
    struct LinkFacts {
        std::uint64_t inode = 0;
        qint64 apparentSize = 0;
        std::uint32_t device = 0;
        std::uint32_t linkCount = 0;
    };
    // A file's logical length (what saved scans call its apparent size); 0
    // for a folder.
    [[nodiscard]] qint64 apparentSize() const
    {
        if (isDirectory())
            return 0;
        return (m_bits & kLinked) ? m_link->apparentSize : m_apparentSize;
    }
    // Null unless this is a file with more than one name.
    [[nodiscard]] const LinkFacts* linkFacts() const { return (m_bits & kLinked) ? m_link : nullptr; }

    // Null on a scan's root.
    [[nodiscard]] FileNode* parent() const { return m_parent; }
    [[nodiscard]] bool isRoot() const { return m_bits & kRoot; }

    // The full path as raw bytes, derived by walking to the root: use it on
    // single nodes, never in a loop over the tree.
    [[nodiscard]] QByteArray path() const;
    [[nodiscard]] QString displayPath() const;

    // Nodes at and below this one whose walk could not be finished.
    [[nodiscard]] qint64 inaccessibleCount() const;

    // Children in order: largest first after a scan, equal sizes in listing
    // order. Removed children are skipped.
    class ChildRange;
    [[nodiscard]] ChildRange children() const;
    [[nodiscard]] qsizetype childCount() const;
    [[nodiscard]] bool hasChildren() const;

    // Takes `child` out of this node's children and its size and fileCount out
    // of this node and every ancestor. Returns false, changing nothing, when
    // `child` is not a current child. The removed node stays readable (size,
    // fileCount, children, parent) for as long as the tree lives.
    bool removeChild(const FileNode* child);

private:
    friend class ScanTree;
    friend class Walker;
    friend class Scanner;
    friend class TreeBuilder;
    FileNode() = default;

    enum Bits : std::uint32_t {
        kInCloud = 1u << 27,
        kDirectory = 1u << 28,
        kInaccessible = 1u << 29,
        kRemoved = 1u << 30,
        kRoot = 1u << 31,
        kLinked = 1u << 26,          // a file whose m_link is set
        kSlotMask = (1u << 26) - 1, // 67 million children a folder
    };

    [[nodiscard]] std::uint32_t slotCount() const { return m_bits & kSlotMask; }
    void setInaccessible() { m_bits |= kInaccessible; }
    void setInCloud() { m_bits |= kInCloud; }
    // Sorts this node's children largest first (stable) and re-points the
    // grandchildren at their parents' new places. Only while nobody holds
    // handles into this level: the walker calls it as it closes a folder.
    void sortChildrenBySize();
    void adoptChildren(FileNode* slots, std::uint32_t count);
    // A file's length, or (with `link`) its shared facts, which must outlive the node.
    void setApparentSize(qint64 bytes) { m_apparentSize = bytes; }
    void setLink(const LinkFacts* link)
    {
        m_link = link;
        m_bits |= kLinked;
    }

    // 40 bytes a node, names apart; the benchmark holds the whole tree to 64
    // bytes an entry. fileCount fits 32 bits: a tree of 2^32 nodes would need
    // far more memory than any machine has. A file has no children, so the
    // children's place holds its length: saved scans cost a live tree no
    // byte more, except 24 for each file with several names.
    qint64 m_size = 0;
    FileNode* m_parent = nullptr;
    union {
        FileNode* m_children = nullptr; // folders
        qint64 m_apparentSize;          // files
        const LinkFacts* m_link;        // files with kLinked
    };
    const unsigned char* m_name = nullptr; // length-prefixed bytes in the arena
    std::uint32_t m_fileCount = 0;
    std::uint32_t m_bits = 0;              // flags above, slot count below
};

static_assert(sizeof(FileNode) == 40, "the tree's memory budget depends on this");

class FileNode::ChildRange {
public:
    class iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = FileNode;
        using difference_type = std::ptrdiff_t;
        using pointer = FileNode*;
        using reference = FileNode&;
        iterator() = default;
        iterator(FileNode* at, FileNode* end) : m_at(at), m_end(end) { skipRemoved(); }
        reference operator*() const { return *m_at; }
        pointer operator->() const { return m_at; }
        iterator& operator++() { ++m_at; skipRemoved(); return *this; }
        iterator operator++(int) { auto old = *this; ++*this; return old; }
        bool operator==(const iterator& other) const { return m_at == other.m_at; }
    private:
        void skipRemoved() { while (m_at != m_end && (m_at->m_bits & kRemoved)) ++m_at; }
        FileNode* m_at = nullptr;
        FileNode* m_end = nullptr;
    };
    ChildRange(FileNode* begin, FileNode* end) : m_begin(begin), m_end(end) {}
    [[nodiscard]] iterator begin() const { return {m_begin, m_end}; }
    [[nodiscard]] iterator end() const { return {m_end, m_end}; }
private:
    FileNode* m_begin;
    FileNode* m_end;
};

inline FileNode::ChildRange FileNode::children() const
{
    if (!isDirectory())
        return {nullptr, nullptr};
    return {m_children, m_children + slotCount()};
}

// Owns everything one scan built. Shared by whoever holds nodes of it: the
// tree, and every node in it, lives until the last holder lets go.
class ScanTree {
public:
    ~ScanTree();
    ScanTree(const ScanTree&) = delete;
    ScanTree& operator=(const ScanTree&) = delete;

    [[nodiscard]] FileNode* root() { return &m_root; }
    [[nodiscard]] const FileNode* root() const { return &m_root; }

    // Memory the tree holds, for the benchmark's bytes-per-entry figure.
    [[nodiscard]] std::size_t memoryBytes() const;
    [[nodiscard]] qint64 nodeCount() const;

    // Finds the node at `target` by following only the branch whose path is a
    // prefix of it. Null when there is none.
    [[nodiscard]] FileNode* find(const QByteArray& target);

    // Entries the walk saw and did not enter, kept by the path of their
    // folder so that a saved scan can say why they are missing. Few: the
    // mount points of other volumes and the system's virtual entries.
    enum class Exclusion : std::uint8_t { otherVolume, systemVirtual, pattern, firmlink };
    struct Excluded {
        QByteArray folder;
        QByteArray name;
        Exclusion why;
    };
    [[nodiscard]] const std::vector<Excluded>& excluded() const;
    // Keeps workers that read the finished tree apart from edits to it.
    [[nodiscard]] TreeGate& gate() const;
    // Puts the children of `fresh`'s root (a new walk of the folder at
    // `folder`'s path) in place of `folder`'s, and corrects the sizes and
    // counts of `folder` and every ancestor. The old children stay readable
    // for whoever holds them; `fresh` lives as long as this tree.
    void graft(FileNode& folder, std::shared_ptr<ScanTree> fresh);

private:
    friend class Walker;
    friend class Scanner;
    friend class TreeBuilder;
    struct Arenas;
    explicit ScanTree(const QByteArray& rootPath, bool isDirectory);

    FileNode m_root;
    std::unique_ptr<Arenas> m_arenas;
};

// A node together with shared ownership of its tree: safe to keep across a
// rescan or a reset. Equal when they name the same node.
class NodeRef {
public:
    NodeRef() = default;
    NodeRef(std::shared_ptr<ScanTree> tree, FileNode* node)
        : m_tree(std::move(tree)), m_node(m_tree ? node : nullptr) {}
    static NodeRef rootOf(std::shared_ptr<ScanTree> tree)
    {
        FileNode* root = tree ? tree->root() : nullptr;
        return {std::move(tree), root};
    }

    [[nodiscard]] FileNode* get() const { return m_node; }
    FileNode* operator->() const { return m_node; }
    FileNode& operator*() const { return *m_node; }
    explicit operator bool() const { return m_node != nullptr; }
    [[nodiscard]] const std::shared_ptr<ScanTree>& tree() const { return m_tree; }

    // Another node of the same tree.
    [[nodiscard]] NodeRef sibling(FileNode* node) const { return {m_tree, node}; }

    bool operator==(const NodeRef& other) const { return m_node == other.m_node; }

private:
    std::shared_ptr<ScanTree> m_tree;
    FileNode* m_node = nullptr;
};

} // namespace tw

Q_DECLARE_METATYPE(tw::NodeRef)

#pragma once

// Several items picked at once, so that a clean-up of many things is one
// confirmation and one trip to the Trash instead of one per item. The
// single-item flow stays as it is; this sits beside it.

#include "scan/FileNode.h"

#include <QString>
#include <vector>

namespace tw {

// The picked nodes of one tree, in the order they were picked. Holding
// NodeRefs keeps them valid across drilling, a refresh or a reset. GUI
// thread only, like the tree.
class NodeSelection {
public:
    [[nodiscard]] bool contains(const FileNode* node) const;
    // Adds the node, or takes it out when it is already picked.
    void toggle(const NodeRef& node);
    void add(const NodeRef& node);
    void clear() { m_items.clear(); }
    [[nodiscard]] bool isEmpty() const { return m_items.empty(); }
    // Forgets nodes that have left the tree (moved to the Trash elsewhere).
    void dropRemoved();

    // What a removal moves: the picked nodes without those inside another
    // picked folder (the folder carries them), in picking order.
    [[nodiscard]] std::vector<NodeRef> effective() const;
    // Bytes of `effective()`: every byte counted once.
    [[nodiscard]] qint64 totalSize() const;

private:
    std::vector<NodeRef> m_items;
};

// "3 items, 1.2 GB selected" in the current language.
[[nodiscard]] QString selectionSummary(qsizetype count, qint64 bytes);
// "3 items moved to the Trash" in the current language.
[[nodiscard]] QString movedSummary(qsizetype count);

} // namespace tw

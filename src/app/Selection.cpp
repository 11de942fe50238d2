#include "app/Selection.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

#include <algorithm>

namespace tw {

namespace {
// Whether the node is still part of its tree: reachable from the root
// through current children only.
bool inTree(const FileNode* node)
{
    for (const FileNode* at = node; at && !at->isRoot(); at = at->parent()) {
        const FileNode* parent = at->parent();
        if (!parent)
            return false;
        bool found = false;
        for (const FileNode& child : parent->children())
            found = found || &child == at;
        if (!found)
            return false;
    }
    return true;
}

QString text(const char* key)
{
    return LocalizationManager::shared().string(QString::fromLatin1(key));
}
} // namespace

bool NodeSelection::contains(const FileNode* node) const
{
    return std::any_of(m_items.begin(), m_items.end(),
                       [node](const NodeRef& item) { return item.get() == node; });
}

void NodeSelection::toggle(const NodeRef& node)
{
    const auto at = std::find(m_items.begin(), m_items.end(), node);
    if (at != m_items.end())
        m_items.erase(at);
    else if (node)
        m_items.push_back(node);
}

void NodeSelection::add(const NodeRef& node)
{
    if (node && !contains(node.get()))
        m_items.push_back(node);
}

void NodeSelection::dropRemoved()
{
    std::erase_if(m_items, [](const NodeRef& item) { return !inTree(item.get()); });
}

std::vector<NodeRef> NodeSelection::effective() const
{
    std::vector<NodeRef> kept;
    for (const NodeRef& item : m_items) {
        bool carried = false;
        for (const FileNode* at = item->parent(); at && !carried; at = at->parent())
            carried = contains(at);
        if (!carried)
            kept.push_back(item);
    }
    return kept;
}

qint64 NodeSelection::totalSize() const
{
    qint64 total = 0;
    for (const NodeRef& item : effective()) {
        if (__builtin_add_overflow(total, item->size(), &total))
            qFatal("selection size overflows");
    }
    return total;
}

QString selectionSummary(qsizetype count, qint64 bytes)
{
    const QString format = count == 1 ? text("selection.one") : text("selection.many");
    return fillText(fillCount(format, count), formatBytes(bytes));
}

QString movedSummary(qsizetype count)
{
    return fillCount(count == 1 ? text("undo.movedOne") : text("undo.movedMany"), count);
}

} // namespace tw

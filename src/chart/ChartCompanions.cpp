#include "chart/ChartCompanions.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

#include <algorithm>

namespace tw {

QString fileCountText(qint64 count)
{
    return QString::number(count) +
           (count == 1 ? QStringLiteral(" file") : QStringLiteral(" files"));
}

QString unreadableText(const FileNode& node)
{
    return node.isInaccessible()
               ? LocalizationManager::shared().string(QStringLiteral("scan.unreadable.mark"))
               : QString();
}

QString inCloudText(const FileNode& node)
{
    return node.isInCloud() ? LocalizationManager::shared().string(QStringLiteral("scan.inCloud.mark")) : QString();
}

TooltipText tooltipText(const FileNode& node, qint64 parentSize)
{
    TooltipText text;
    text.name = node.displayName();
    text.path = node.displayPath();
    text.size = formatBytes(node.size());
    text.share = percentText(double(node.size()), double(parentSize));
    text.isDirectory = node.isDirectory();
    if (node.isDirectory())
        text.files = fileCountText(node.fileCount());
    text.unreadable = unreadableText(node);
    text.inCloud = inCloudText(node);
    return text;
}

std::vector<FileNode*> breadcrumbPath(FileNode* focus)
{
    std::vector<FileNode*> path;
    for (FileNode* at = focus; at; at = at->parent())
        path.push_back(at);
    std::reverse(path.begin(), path.end());
    return path;
}

QString breadcrumbLabel(const FileNode& node)
{
    const QString name = node.displayName();
    return name.isEmpty() ? QStringLiteral("/") : name;
}

CrumbPlan planBreadcrumb(const std::vector<double>& natural, double available, double separator,
                         double ellipsis, double minimum)
{
    CrumbPlan plan{natural, -1};
    const std::size_t n = natural.size();
    const auto total = [&] {
        double sum = 0;
        int shown = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (plan.widths[i] >= 0) {
                sum += plan.widths[i];
                ++shown;
            }
        }
        if (plan.ellipsisAt >= 0) {
            sum += ellipsis;
            ++shown;
        }
        return sum + separator * std::max(shown - 1, 0);
    };
    if (n == 0 || total() <= available)
        return plan;
    // The middle shrinks, each element in proportion to what it can give.
    double excess = total() - available;
    double givable = 0;
    for (std::size_t i = 1; i + 1 < n; ++i)
        givable += std::max(0.0, natural[i] - minimum);
    if (givable >= excess) {
        for (std::size_t i = 1; i + 1 < n; ++i)
            plan.widths[i] -= std::max(0.0, natural[i] - minimum) * excess / givable;
        return plan;
    }
    for (std::size_t i = 1; i + 1 < n; ++i)
        plan.widths[i] = std::min(natural[i], minimum);
    // Then it folds, from the root's side, behind one "…".
    for (std::size_t i = 1; i + 1 < n && total() > available; ++i) {
        plan.widths[i] = -1;
        if (plan.ellipsisAt < 0)
            plan.ellipsisAt = int(i);
    }
    // Last the root, then the focus, each down to the minimum.
    for (const std::size_t i : {std::size_t(0), n - 1}) {
        excess = total() - available;
        if (excess <= 0)
            break;
        plan.widths[i] = std::max(std::min(natural[i], minimum), plan.widths[i] - excess);
    }
    return plan;
}

LargestChildrenModel::LargestChildrenModel(QObject* parent) : QAbstractListModel(parent)
{
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this,
            &LargestChildrenModel::rebuild);
}

LargestChildrenModel::LargestChildrenModel(AppState& state, QObject* parent)
    : LargestChildrenModel(parent)
{
    setState(&state);
}

void LargestChildrenModel::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        connect(&followed, &AppState::focusChanged, this, &LargestChildrenModel::rebuild);
        connect(&followed, &AppState::rootChanged, this, &LargestChildrenModel::rebuild);
        connect(&followed, &AppState::hoveredChanged, this, &LargestChildrenModel::refreshHover);
        connect(&followed, &AppState::selectionChanged, this, &LargestChildrenModel::refreshHover);
        connect(&followed, &QObject::destroyed, this, &LargestChildrenModel::rebuild);
    });
    if (!moved)
        return;
    rebuild();
    Q_EMIT stateChanged();
}

void LargestChildrenModel::rebuild()
{
    beginResetModel();
    m_rows.clear();
    m_anchor = -1;
    if (m_state && m_state->focus()) {
        const NodeRef& focus = m_state->focus();
        // Only the first twelve are touched, however many there are.
        for (FileNode& child : focus->children()) {
            if (int(m_rows.size()) == kMaximumRows)
                break;
            m_rows.push_back(&child);
        }
    }
    endResetModel();
}

void LargestChildrenModel::refreshHover()
{
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1),
                           {IsHoveredRole, IsSelectedRole, AccessibleTextRole});
}

int LargestChildrenModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant LargestChildrenModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows.size()))
        return {};
    const FileNode& node = *m_rows[std::size_t(index.row())];
    switch (role) {
    case NameRole:
        return node.displayName();
    case IsDirectoryRole:
        return node.isDirectory();
    case SizeTextRole:
        return formatBytes(node.size());
    case ShareTextRole:
        return percentText(double(node.size()),
                           double(m_state && m_state->focus() ? m_state->focus()->size() : 0));
    case CanDrillInRole:
        return node.isDirectory() && node.hasChildren();
    case IsHoveredRole:
        return m_state && m_state->hovered().get() == &node;
    case UnreadableRole:
        return unreadableText(node);
    case InCloudRole:
        return inCloudText(node);
    case IsSelectedRole:
        return m_state && m_state->isSelected(&node);
    case AccessibleTextRole: {
        QStringList parts{node.displayName(), data(index, SizeTextRole).toString(),
                          data(index, ShareTextRole).toString()};
        if (m_state && m_state->isSelected(&node))
            parts.append(LocalizationManager::shared().string(QStringLiteral("selection.selected")));
        for (const QString& mark : {unreadableText(node), inCloudText(node)})
            if (!mark.isEmpty())
                parts.append(mark);
        return parts.join(QStringLiteral(", "));
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> LargestChildrenModel::roleNames() const
{
    return {{NameRole, "name"},
            {IsDirectoryRole, "isDirectory"},
            {SizeTextRole, "sizeText"},
            {ShareTextRole, "shareText"},
            {CanDrillInRole, "canDrillIn"},
            {IsHoveredRole, "isHovered"},
            {UnreadableRole, "unreadable"},
            {InCloudRole, "inCloud"},
            {AccessibleTextRole, "accessibleText"},
            {IsSelectedRole, "isSelected"}};
}

NodeRef LargestChildrenModel::nodeAt(int row) const
{
    if (row < 0 || row >= int(m_rows.size()) || !m_state || !m_state->focus())
        return {};
    return m_state->focus().sibling(m_rows[std::size_t(row)]);
}

void LargestChildrenModel::enter(int row)
{
    if (const NodeRef node = nodeAt(row))
        m_state->setHovered(node);
}

void LargestChildrenModel::leave(int row)
{
    const NodeRef node = nodeAt(row);
    if (node && m_state->hovered() == node)
        m_state->setHovered({});
}

void LargestChildrenModel::toggleSelected(int row)
{
    if (const NodeRef node = nodeAt(row)) {
        m_anchor = row;
        m_state->toggleSelected(node);
    }
}

void LargestChildrenModel::selectRange(int row)
{
    if (!nodeAt(row))
        return;
    const int from = m_anchor < 0 ? row : m_anchor;
    QList<NodeRef> nodes;
    for (int at = std::min(from, row); at <= std::max(from, row); ++at)
        nodes.append(nodeAt(at));
    m_anchor = row;
    m_state->addToSelection(nodes);
}

void LargestChildrenModel::selectAll()
{
    QList<NodeRef> nodes;
    for (int at = 0; at < int(m_rows.size()); ++at)
        nodes.append(nodeAt(at));
    if (!nodes.isEmpty())
        m_state->addToSelection(nodes);
}

bool LargestChildrenModel::drillIn(int row)
{
    return m_state && m_state->focusOn(nodeAt(row));
}

} // namespace tw

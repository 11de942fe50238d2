#include "chart/ChartScreenModel.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "chart/ChartCompanions.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

#include <algorithm>

namespace tw {

ToolbarFigures toolbarFigures(qint64 focusSize, const std::optional<VolumeInfo::Capacity>& capacity)
{
    ToolbarFigures figures;
    figures.fileSizes =
        fillText(LocalizationManager::shared().string(QStringLiteral("toolbar.fileSizes")),
                 formatBytes(focusSize));
    if (capacity) {
        const qint64 used = std::max<qint64>(capacity->total - capacity->rawFree, 0);
        figures.showsInfo = used < focusSize;
        figures.capacity =
            formatBytes(capacity->free) + QStringLiteral(" / ") + formatBytes(capacity->total);
    }
    return figures;
}

ChartScreenModel::ChartScreenModel(QObject* parent) : QObject(parent)
{
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this,
            &ChartScreenModel::changed);
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this,
            &ChartScreenModel::tooltipChanged);
}

void ChartScreenModel::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        for (auto signal :
             {&AppState::focusChanged, &AppState::rootChanged, &AppState::volumeCapacityChanged})
            connect(&followed, signal, this, &ChartScreenModel::changed);
        // The tooltip's share is of the focus, so a focus change reaches it too.
        for (auto signal :
             {&AppState::hoveredChanged, &AppState::focusChanged, &AppState::rootChanged})
            connect(&followed, signal, this, &ChartScreenModel::tooltipChanged);
        connect(&followed, &QObject::destroyed, this, &ChartScreenModel::changed);
        connect(&followed, &QObject::destroyed, this, &ChartScreenModel::tooltipChanged);
    });
    if (!moved)
        return;
    Q_EMIT stateChanged();
    Q_EMIT changed();
    Q_EMIT tooltipChanged();
}

bool ChartScreenModel::hasFocus() const
{
    return m_state && m_state->focus();
}

QString ChartScreenModel::hubName() const
{
    return hasFocus() ? m_state->focus()->displayName() : QString();
}

QString ChartScreenModel::hubSize() const
{
    return hasFocus() ? formatBytes(m_state->focus()->size()) : QString();
}

QString ChartScreenModel::hubFiles() const
{
    return hasFocus() ? fileCountText(m_state->focus()->fileCount()) : QString();
}

bool ChartScreenModel::canGoUp() const
{
    return hasFocus() && m_state->focus()->parent();
}

QVariantList ChartScreenModel::crumbs() const
{
    QVariantList list;
    if (!hasFocus())
        return list;
    for (FileNode* node : breadcrumbPath(m_state->focus().get()))
        list.append(QVariantMap{{QStringLiteral("label"), breadcrumbLabel(*node)},
                                {QStringLiteral("isFocus"), node == m_state->focus().get()}});
    return list;
}

bool ChartScreenModel::selectCrumb(int index)
{
    if (!hasFocus() || index < 0)
        return false;
    const std::vector<FileNode*> path = breadcrumbPath(m_state->focus().get());
    if (std::size_t(index) >= path.size())
        return false;
    return m_state->focusOn(m_state->focus().sibling(path[std::size_t(index)]));
}

QVariantMap ChartScreenModel::planCrumbs(const QVariantList& natural, double available,
                                         double separator, double ellipsis, double minimum) const
{
    std::vector<double> widths;
    widths.reserve(std::size_t(natural.size()));
    for (const QVariant& width : natural)
        widths.push_back(width.toDouble());
    const CrumbPlan plan = planBreadcrumb(widths, available, separator, ellipsis, minimum);
    QVariantList planned;
    for (const double width : plan.widths)
        planned.append(width);
    return {{QStringLiteral("widths"), planned}, {QStringLiteral("ellipsisAt"), plan.ellipsisAt}};
}

void ChartScreenModel::clearHover()
{
    if (m_state)
        m_state->setHovered({});
}

bool ChartScreenModel::hasTooltip() const
{
    return m_state && m_state->hovered();
}

QVariantMap ChartScreenModel::tooltip() const
{
    if (!hasTooltip())
        return {};
    const TooltipText text =
        tooltipText(*m_state->hovered(), hasFocus() ? m_state->focus()->size() : 0);
    return {
        {QStringLiteral("name"), text.name},   {QStringLiteral("path"), text.path},
        {QStringLiteral("size"), text.size},   {QStringLiteral("share"), text.share},
        {QStringLiteral("files"), text.files}, {QStringLiteral("isDirectory"), text.isDirectory},
        {QStringLiteral("unreadable"), text.unreadable}, {QStringLiteral("inCloud"), text.inCloud}};
}

ToolbarFigures ChartScreenModel::figures() const
{
    if (!hasFocus())
        return {};
    return toolbarFigures(m_state->focus()->size(), m_state->volumeCapacity());
}

qint64 ChartScreenModel::inaccessibleCount() const
{
    return m_state ? m_state->inaccessibleCount() : 0;
}

} // namespace tw

// AppState: several items picked in the chart or the list, confirmed once and
// moved to the Trash in one batch. Users clean up many things at a time; one
// dialog and one administrator prompt for all of them beats one per item. The
// single-item flow (AppStateDelete.cpp) stays as it is beside this one.

#include "app/AppState.h"

#include "analytics/Analytics.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/ElevatedRunner.h"
#include "platform/Trash.h"
#include "scan/TreeGate.h"

#include <QMetaObject>
#include <QPointer>
#include <thread>

namespace tw {

Trash& AppState::trash() const
{
    return m_services.trash ? *m_services.trash : systemTrash();
}

QString AppState::selectionText() const
{
    const std::vector<NodeRef> items = m_selection.effective();
    return items.empty() ? QString() : selectionSummary(qsizetype(items.size()), m_selection.totalSize());
}

void AppState::toggleSelected(const NodeRef& node)
{
    if (!node)
        return;
    m_selection.toggle(node);
    Q_EMIT selectionChanged();
}

void AppState::addToSelection(const QList<NodeRef>& nodes)
{
    for (const NodeRef& node : nodes)
        m_selection.add(node);
    Q_EMIT selectionChanged();
}

void AppState::clearSelection()
{
    if (m_selection.isEmpty())
        return;
    m_selection.clear();
    Q_EMIT selectionChanged();
}

QVariantMap AppState::batchFacts() const
{
    if (!m_batchConfirmOpen)
        return {};
    const std::vector<NodeRef> items = m_selection.effective();
    QVariantList rows;
    bool anyFolder = false;
    for (const NodeRef& item : items) {
        anyFolder = anyFolder || item->isDirectory();
        rows.append(QVariantMap{{QStringLiteral("name"), item->displayName()},
                                {QStringLiteral("path"), item->displayPath()},
                                {QStringLiteral("size"), formatBytes(item->size())},
                                {QStringLiteral("isDirectory"), item->isDirectory()}});
    }
    const LocalizationManager& loc = LocalizationManager::shared();
    return {{QStringLiteral("title"), fillCount(loc.string(QStringLiteral("batch.title")), qint64(items.size()))},
            {QStringLiteral("body"), loc.string(anyFolder ? QStringLiteral("batch.bodyDir") : QStringLiteral("batch.bodyFile"))},
            {QStringLiteral("total"), formatBytes(m_selection.totalSize())},
            {QStringLiteral("items"), rows}};
}

void AppState::requestBatchDelete()
{
    if (m_selection.isEmpty() || m_batchConfirmOpen)
        return;
    m_batchConfirmOpen = true;
    Q_EMIT batchChanged();
}

void AppState::cancelBatchDelete()
{
    if (!m_batchConfirmOpen)
        return;
    m_batchConfirmOpen = false;
    Q_EMIT batchChanged();
}

void AppState::confirmBatchDelete()
{
    if (!m_batchConfirmOpen)
        return;
    std::vector<NodeRef> nodes = m_selection.effective();
    m_batchConfirmOpen = false;
    Q_EMIT batchChanged();
    QList<QByteArray> paths;
    for (const NodeRef& node : nodes)
        paths.append(node->path());

    // The nodes stay on the GUI thread: the worker sees paths only.
    auto* relay = new QObject;
    QPointer<AppState> self(this);
    auto move = m_services.recycleBatch;
    Trash* bin = &trash();
    ElevatedRunner* runner = m_services.elevated ? m_services.elevated : &systemElevatedRunner();
    std::thread([relay, self, move, bin, runner, paths, nodes = std::move(nodes)]() mutable {
        BatchOutcome outcome = move ? move(paths) : recycleBatch(paths, *bin, *runner);
        QMetaObject::invokeMethod(
            relay,
            [relay, self, nodes = std::move(nodes), outcome = std::move(outcome)] {
                if (self)
                    self->applyBatchResult(nodes, outcome);
                delete relay;
            },
            Qt::QueuedConnection);
    }).detach();
}

void AppState::applyBatchResult(const std::vector<NodeRef>& nodes, const BatchOutcome& outcome)
{
    QList<TrashedItem> moved;
    bool rootGone = false;
    for (const NodeRef& node : nodes) {
        const QByteArray path = node->path();
        if (!outcome.succeeded.contains(path))
            continue;
        moved.append({path, outcome.places.value(path)});
        Analytics::logEvent(AnalyticsEvent::itemDeleted, {{QStringLiteral("size_bytes"), node->size()},
                                                          {QStringLiteral("is_directory"), node->isDirectory()}});
        if (node.get() == m_root.get())
            rootGone = true;
        else
            detachFromTree(node);
    }
    // What stayed stays picked, to try again.
    m_selection.clear();
    if (rootGone) {
        resetToWelcome();
    } else {
        for (const NodeRef& node : nodes)
            if (!outcome.succeeded.contains(node->path()))
                m_selection.add(node);
        // One redraw for the whole batch.
        Q_EMIT rootChanged();
    }
    Q_EMIT selectionChanged();
    noteRemoval(std::move(moved));
    if (!outcome.failed.isEmpty()) {
        QString text = LocalizationManager::shared().string(QStringLiteral("trash.summary"));
        text = fillCount(text, outcome.succeeded.size());
        text = fillCount(text, outcome.failed.size());
        setErrorMessage(fillText(text, restoreFailureLines(outcome.failed)));
    }
    // What the Trash left behind in those folders is walked again.
    QList<QByteArray> touched;
    for (const TrashedItem& item : m_lastRemoval)
        touched.append(item.original.left(std::max<qsizetype>(item.original.lastIndexOf('/'), 1)));
    rescanFolders(touched);
    Q_EMIT batchFinished();
}

void AppState::detachFromTree(const NodeRef& node)
{
    FileNode* parent = node->parent();
    // A hover or a focus inside what has gone would name a ghost.
    for (const FileNode* at = m_hovered.get(); at; at = at->parent()) {
        if (at == node.get()) {
            setHovered({});
            break;
        }
    }
    for (const FileNode* at = m_focus.get(); at && parent; at = at->parent()) {
        if (at == node.get()) {
            setFocus(node.sibling(parent));
            break;
        }
    }
    if (parent) {
        // Workers reading this tree (kinds, name search) step aside first.
        const TreeGate::Editing editing = node.tree()->gate().edit();
        parent->removeChild(node.get());
    }
}

} // namespace tw

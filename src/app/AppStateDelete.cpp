// AppState: moving the confirmed item to the Trash and taking it out of the tree.

#include "app/AppState.h"

#include "analytics/Analytics.h"
#include "removal/Recycle.h"
#include "scan/TreeGate.h"

#include <QMetaObject>
#include <QPointer>
#include <thread>

namespace tw {

namespace {
// Carries the node across the worker's round trip without the worker ever
// holding a share of the tree: the tree is only touched and freed on the GUI
// thread.
class DeletionRelay : public QObject {
public:
    NodeRef node;
    qint64 size = 0;
    bool isDirectory = false;
};
std::optional<QString> recycleWithSystemTrash(const QByteArray& path)
{
    try {
        (void)recycle(path);
        return std::nullopt;
    } catch (const TrashError& error) {
        return error.errorDescription();
    }
}
} // namespace

void AppState::confirmDelete()
{
    if (!m_deleteCandidate)
        return;
    auto* relay = new DeletionRelay;
    relay->node = m_deleteCandidate;
    relay->size = m_deleteCandidate->size();
    relay->isDirectory = m_deleteCandidate->isDirectory();
    const QByteArray path = m_deleteCandidate->path();
    setDeleteCandidate({});

    QPointer<AppState> self(this);
    auto move = m_services.recycle ? m_services.recycle : recycleWithSystemTrash;
    std::thread([move, path, relay, self] {
        const std::optional<QString> failure = move(path);
        QMetaObject::invokeMethod(
            relay,
            [relay, self, failure] {
                if (self) {
                    if (failure)
                        self->setErrorMessage(*failure);
                    else
                        self->itemDeleted(relay->node, relay->size, relay->isDirectory);
                    Q_EMIT self->deletionFinished(!failure);
                }
                delete relay;
            },
            Qt::QueuedConnection);
    }).detach();
}

void AppState::itemDeleted(const NodeRef& node, qint64 size, bool isDirectory)
{
    Analytics::logEvent(AnalyticsEvent::itemDeleted,
                        {{QStringLiteral("size_bytes"), size}, {QStringLiteral("is_directory"), isDirectory}});
    // The whole scanned thing has gone: nothing is left to show.
    if (node.get() == m_root.get()) {
        resetToWelcome();
        return;
    }
    FileNode* parent = node->parent();
    // A hover inside what has gone would name a ghost.
    for (const FileNode* at = m_hovered.get(); at; at = at->parent()) {
        if (at == node.get()) {
            setHovered({});
            break;
        }
    }
    if (node.get() == m_focus.get() && parent)
        setFocus(node.sibling(parent));
    if (parent) {
        // Workers reading this tree (kinds, name search) step aside first.
        const TreeGate::Editing editing = node.tree()->gate().edit();
        parent->removeChild(node.get());
    }
    // Sizes changed in place; re-announcing the root redraws the chart and panels.
    Q_EMIT rootChanged();
}

} // namespace tw

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
    QByteArray path;
    QByteArray place; // where the Trash put it, for undo
};
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
    relay->path = path;
    setDeleteCandidate({});

    QPointer<AppState> self(this);
    auto move = m_services.recycle;
    Trash* bin = &trash();
    std::thread([move, bin, path, relay, self] {
        std::optional<QString> failure;
        if (move) {
            failure = move(path);
        } else {
            try {
                relay->place = recycle(path, *bin);
            } catch (const TrashError& error) {
                failure = error.errorDescription();
            }
        }
        QMetaObject::invokeMethod(
            relay,
            [relay, self, failure] {
                if (self) {
                    if (failure)
                        self->setErrorMessage(*failure);
                    else
                        self->itemDeleted(relay->node, relay->size, relay->isDirectory);
                    // Undo needs to know where the item went.
                    if (!failure)
                        self->noteRemoval(relay->place.isEmpty() ? QList<TrashedItem>()
                                                                 : QList<TrashedItem>{{relay->path, relay->place}});
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
    detachFromTree(node);
    m_selection.dropRemoved();
    Q_EMIT selectionChanged();
    // Sizes changed in place; re-announcing the root redraws the chart and panels.
    Q_EMIT rootChanged();
}

} // namespace tw

// AppState: taking the last removal back. Any removal from the app (one item,
// a batch, an uninstall) can be undone from the banner at the foot while it
// shows, item by item from the Trash; nothing is ever overwritten.

#include "app/AppState.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/Trash.h"

#include <QMetaObject>
#include <QPointer>
#include <thread>

namespace tw {

void AppState::noteRemoval(QList<TrashedItem> items)
{
    if (items.isEmpty() && m_lastRemoval.isEmpty())
        return;
    m_lastRemoval = std::move(items);
    Q_EMIT undoChanged();
}

QString AppState::undoText() const
{
    return m_lastRemoval.isEmpty() ? QString() : movedSummary(m_lastRemoval.size());
}

void AppState::dismissUndo()
{
    noteRemoval({});
}

void AppState::undoLastRemoval()
{
    if (m_lastRemoval.isEmpty() || m_undoRunning)
        return;
    const QList<TrashedItem> items = std::exchange(m_lastRemoval, {});
    m_undoRunning = true;
    Q_EMIT undoChanged();
    auto* relay = new QObject;
    QPointer<AppState> self(this);
    Trash* bin = &trash();
    std::thread([relay, self, bin, items] {
        const RestoreOutcome outcome = restoreFromTrash(items, *bin);
        QMetaObject::invokeMethod(
            relay,
            [relay, self, outcome] {
                if (self) {
                    self->m_undoRunning = false;
                    if (!outcome.failed.isEmpty()) {
                        const QString format = LocalizationManager::shared().string(QStringLiteral("restore.failed"));
                        self->setErrorMessage(fillText(format, restoreFailureLines(outcome.failed)));
                    }
                    QList<QByteArray> folders;
                    for (const QByteArray& path : outcome.restored)
                        folders.append(path.left(std::max<qsizetype>(path.lastIndexOf('/'), 1)));
                    self->rescanFolders(folders);
                    Q_EMIT self->undoFinished();
                }
                delete relay;
            },
            Qt::QueuedConnection);
    }).detach();
}

} // namespace tw
